#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <sstream>

#include "host/check/nxDryRun.h"
#include "host/check/nxScriptAnalyzer.h"
#include "tests/support/nxRowFile.h"

namespace {

// "line:column code" of each finding, in order, joined by ", ".
std::string Analyze(const std::vector<nxScriptAnalysis::File>& files)
{
    nxScriptAnalyzer analyzer;
    std::vector<nxScriptFinding> findings;
    std::string error;
    if (!analyzer.Load(error) || !analyzer.Analyze(files, false, findings, error)) return error;
    std::ranges::sort(findings);
    std::ostringstream text;
    for (const nxScriptFinding& finding : findings)
        text << (text.tellp() > 0 ? ", " : "") << finding.line << ':' << finding.column << ' '
             << finding.code;
    return text.str();
}

std::string AnalyzeRow(const std::string& row)
{
    static const std::string front = "PRODUCT ";
    // That it subscribes to nothing, hears of nothing, and sends at once, is not what a row is about.
    const std::string product =
        "local p function OnInit() p = job:getProduct('A') g = p end -- check: ignore 406\n";
    if (!row.starts_with(front)) return Analyze({{"a.lua", row}});
    return Analyze({{"a.lua", product + row.substr(front.size()) + " -- check: ignore 204, 205, 207"}});
}

}  // namespace

TEST(ScriptCheck, FollowsAClassThroughTheScript)
{
    nxExpectRows("host/check.txt", AnalyzeRow);
}

TEST(ScriptCheck, SaysNothingOfWhatIsMeantSo)
{
    nxExpectRows("host/check.txt", AnalyzeRow);
}

TEST(ScriptCheck, TellsWhatTheEngineTakesAndMeansOtherwise)
{
    nxExpectRows("host/check.txt", AnalyzeRow);
}

// One job: what one file defines another may use, and each finding stands in its own file.
TEST(ScriptCheck, TakesTheFilesOfAJobTogether)
{
    EXPECT_EQ(Analyze({{"lib.lua", "function helper() return limit end\n"},
                       {"a.lua", "limit = 1\nfunction OnInit() helper() helpr() end\n"}}),
              "2:28 unknown-global");
}

// Whatever a script may ask of its job and its products in OnInit, it runs through.
TEST(DryRun, AnswersAllThatThisVersionHas)
{
    const std::string path = testing::TempDir() + "nxDryRun.lua";
    std::ofstream(path) << R"(
        function OnInit()
          local p = job:getProduct("ANY")
          assert(p == p and p.name == "ANY" and job:hasContext() and job.selectedSide == "BUY")
          for _, way in ipairs({ "", "Price", "MarketDepth", "Positions", "State", "PriceTradeVolumes" }) do
            p["subscribe" .. way](p)
          end
          local sum = p.price.bidPrice + p.price.lastVolume + p.depth:ask(0) + p.position.totalNet + p.tickSize
          job:setReference("r") job:sendUserLog({ a = 1 }) job:setChartLine("c", "l", sum, 1)
          job:removeChartLine("c", "l") job:setOutputParameter("n", "v") job:startTimer("t", 1) job.tag = "t"
          assert(job:getParameter("n") == nil and job:getDataStore("s") == nil and job:getPandL("USD") == 0)
          local store = job:getDataStore("s", true) store:add("a") assert(job:getDataStore("s").count == 1)
          for i = 0, job:getVorantJobs().count - 1 do job:getVorantJobs():getVorantJob(i).name() end
          job:shutdown()
          print("nothing of this is printed")
        end)";
    nxScriptSource source;
    ASSERT_FALSE(source.Add(path));
    nxDryRun run;
    const auto failure = run.Try(source);
    EXPECT_TRUE(run.HasOnInit());
    EXPECT_FALSE(failure) << failure->message;
}
