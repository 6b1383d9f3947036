// What a text of tests/data/runs cannot say of a run.

#include "host/market/nxProductFile.h"
#include "tests/host/nxHostFixture.h"
#include "tests/support/nxAllocationCount.h"

TEST(nxRun, AScriptWhoseEveryMessageDiffersDoesNotGrowTheSummaryWithoutEnd)
{
    nxHostRun run;
    run.options.continueOnError = true;
    run.SetScript(
        "function OnInit() job:startTimer('t', 1) end\n"
        "function OnTimer() n = (n or 0) + 1 error(n) end");
    run.AddQuotes("@00,A,1,1,,,,,\n@00.5,A,1,1,,,,,\n");
    EXPECT_EQ(run.Run(), nxRunResult::ScriptFailed);
    EXPECT_NE(run.out.find("OnTimer                    500  500 failed"), std::string::npos) << run.out;
    EXPECT_NE(run.out.find("script.lua:2: 100 (in OnTimer"), std::string::npos) << run.out;
    EXPECT_EQ(run.out.find("script.lua:2: 101 (in OnTimer"), std::string::npos) << run.out;
}

// The script writes the file anew; what holds from then on, and what is refused, is told in the log.
TEST(nxRun, AWatchedFileIsTakenOverAsFarAsItMayChange)
{
    const std::string products =
        R"(product = [{ name = "A" }, { name = "B" }, { name = "S", pointValue = 10, legs = [
  { product = "A" }, { product = "B", side = "SELL" }] }])";
    nxHostRun run;
    run.options.productFile = run.Write("products.toml", products);
    nxFeedError error;
    ASSERT_TRUE(nxProductFile::Read(run.options.productFile, run.options.products, error)) << error.GetText();
    run.options.watchProducts = true;
    run.options.watchInterval = {};
    run.SetScript("local open, path, text = io.open, '" + run.options.productFile + "', [==[" + products +
                  R"(]==]
local function write(from, to)
  text = text:gsub(from, to)
  local file = open(path, "w")
  file:write(text)
  file:close()
end
function OnInit() s = job:getProduct("S") s:subscribePrice() end
function OnPrice(p)
  job:logText(tostring(s.priceOffset) .. " " .. p.impliedBidPrice .. " " .. p.impliedBidVolume)
  if p.impliedBidVolume == 4 and not s.priceOffset then write("legs =", "priceOffset = 0.5, legs =") end
  if p.impliedBidVolume == 1 then write("pointValue = 10", "pointValue = 5") end
  if p.impliedBidVolume == 2 then write("SELL", "NEITHER") end
end)");
    run.AddQuotes("@00,B,3,9,3.5,7,,,\n@01,A,10,4,11,5,,,\n@02,A,,1,,,,,\n@03,A,,2,,,,,\n@04,A,,3,,,,,\n");
    EXPECT_EQ(run.RunForLog(), R"(01.000  nil 6.5 4
01.000  products.toml: S: priceOffset is 0.5, was none
01.000  0.5 7 4
02.000  0.5 7 1
02.000  products.toml: pointValue of "S" cannot change during a run; the products stay as they were
03.000  0.5 7 2
03.000  products.toml:2:46: side is neither "BUY" nor "SELL"; the products stay as they were
04.000  0.5 7 3
)");
}

// In the middle of the data there is a name for which there is no room.
TEST(nxRun, ALackOfMemoryOutsideOfTheScriptsEndsTheRunAndNothingIsLost)
{
    constexpr std::size_t size = 250'000;
    nxHostRun run;
    run.options.storeDirectory = run.Write("stores", "") + ".d";
    run.options.recordFile = run.Write("record.jsonl", "");
    run.SetScript(
        "function OnInit() s = job:getDataStore('s', true) job:getProduct('A'):subscribePrice() end\n"
        "function OnShutdown() s:add('bye') end\n");
    std::string rows;
    for (int i = 0; i < 2000; ++i)  // more than are looked at before the run begins
        rows += "@00,A,1,1,,,,,\n";
    run.AddQuotes(rows + "@01," + std::string(size, 'x') + ",1,1,,,,,\n@02,A,1,1,,,,,\n");
    nxAllocationCount::Lack(size);
    EXPECT_EQ(run.Run(), nxRunResult::InputFailed);
    nxAllocationCount::Lack(0);
    EXPECT_EQ(run.GetErrors(), "out of memory\n");
    EXPECT_EQ(run.GetLine("end"), "out of memory");
    EXPECT_EQ(run.GetLine("events"), "2,000 quotes");
    std::ostringstream record;
    record << std::ifstream(run.options.recordFile).rdbuf();
    EXPECT_NE(record.str().find("\"type\":\"jobStopped\""), std::string::npos) << record.str();
    EXPECT_TRUE(record.str().ends_with("}\n"));
    run.options.data.clear();
    run.AddQuotes("@03,A,1,1,,,,,\n");
    run.SetScript("function OnInit() job:logText(job:getDataStore('s').count) end\n");
    EXPECT_EQ(run.RunForLog(), "03.000  1\n");
}
