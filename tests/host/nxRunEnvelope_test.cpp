#include "host/run/nxRunEnvelope.h"

#include "tests/host/nxHostFixture.h"

namespace {

// Sets the flag once a run has shown its summary.
class Interrupter : public std::stringbuf
{
public:
    std::atomic<bool> interrupted = false;

private:
    int sync() override
    {
        interrupted = str().find("--- summary") != std::string::npos;
        return 0;
    }
};

class RunEnvelope : public testing::Test
{
protected:
    RunEnvelope()
    {
        run.SetScript(
            "function OnInit() p = job:getProduct('A') p:subscribePrice() end\n"
            "function OnPrice() if o then return end o = p:createOrder{side='BUY', type='LIMIT'} "
            "o:work{volume=5, price=99} end\n"
            "function OnOrderFill(u) job:logText(u.fillVolume) if u.fillVolume > 4 then error('much') end "
            "end\n");
        run.AddQuotes("@00,A,99,2,101,10,,,\n@01,A,,,,,99,4,SELL\n@02,A,99,2,101,10,,,\n");
    }
    nxHostRun run;
    std::ostringstream err;
};

TEST_F(RunEnvelope, ShowsTheRunItselfAndWhatEachModelComesTo)
{
    ASSERT_EQ(run.Run(), nxRunResult::Done);
    const std::string alone = run.out;
    run.options.recordFile = run.Write("record.jsonl", "");
    std::ostringstream out;
    EXPECT_EQ(nxRunEnvelope::Run(run.options, out, err), nxRunResult::ScriptFailed);
    EXPECT_EQ(run.Hide(out.str()),
              alone +
                  "--- envelope\n"
                  "model       orders  fills  volume  fees  realised  open  profit  drawdown\n"
                  "touch            1      1       5     0         0     0       0         0\n"
                  "queue            1      1       2     0         0     0       0         0\n"
                  "cross            1      0       0     0         0     0       0         0\n"
                  "failure     touch: script.lua:3: much\n");
    std::ifstream record(run.options.recordFile);
    const std::string lines{std::istreambuf_iterator<char>(record), {}};
    EXPECT_NE(lines.find("\"fillVolume\":2"), std::string::npos);
    EXPECT_NE(lines.find("\"executed\":0,\"ahead\":2"), std::string::npos) << lines;
    EXPECT_EQ(lines.find("\"fillVolume\":5"), std::string::npos);
}

// Each model finds the stores of before, and only the run itself leaves its own behind.
TEST_F(RunEnvelope, TheStoresAreThoseOfTheRunItself)
{
    run.SetScript(
        "function OnInit() s = job:getDataStore('s', true) p = job:getProduct('A') p:subscribePrice() "
        "if s.count ~= n then error('found ' .. s.count) end n = s.count end\n"
        "function OnPrice() if o then return end o = p:createOrder{side='BUY', type='LIMIT'} "
        "o:work{volume=5, price=99} end\n"
        "function OnOrderFill(u) s:add(u.fillVolume) end\n");
    run.options.storeDirectory = run.Write("x", "") + "-stores";
    for (const int before : {0, 1}) {
        run.AddModule("n.lua", "n = " + std::to_string(before));
        std::ostringstream out;
        EXPECT_EQ(nxRunEnvelope::Run(run.options, out, err), nxRunResult::Done) << out.str() << err.str();
        run.options.modules.clear();
    }
    const std::filesystem::directory_iterator left(run.options.storeDirectory);
    EXPECT_EQ(std::distance(begin(left), end(left)), 1);
}

TEST_F(RunEnvelope, AnInterruptionLeavesTheSummary)
{
    Interrupter buffer;
    std::ostream stream(&buffer);
    run.options.interrupted = &buffer.interrupted;
    EXPECT_EQ(nxRunEnvelope::Run(run.options, stream, err), nxRunResult::Done);
    const std::string out = buffer.str();
    EXPECT_NE(out.find("\norders      1 order, 1 fill, volume 2"), std::string::npos) << out;
    EXPECT_TRUE(out.ends_with("\nnot run     touch and cross: interrupted\n")) << out;
}

TEST_F(RunEnvelope, WhatCanBeReadOnlyOnceIsRefused)
{
    EXPECT_EQ(nxRunEnvelope::FindObstacle(run.options), "");
    run.options.modules = {"/dev/null"};
    EXPECT_EQ(nxRunEnvelope::FindObstacle(run.options),
              "--envelope reads everything three times, and /dev/null can be read only once");
    run.options.data.push_back("-");
    EXPECT_NE(nxRunEnvelope::FindObstacle(run.options).find("and - can"), std::string::npos);
}

}  // namespace
