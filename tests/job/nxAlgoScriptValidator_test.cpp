#include "scriptFramework/job/nxAlgoScriptValidator.h"

#include <gtest/gtest.h>

#include <memory>

#include "scriptFramework/job/nxAlgoJobObject.h"
#include "scriptFramework/job/nxQuietAnswers.h"
#include "tests/support/nxRecordingLog.h"

namespace {

class Validator : public nxQuietAnswers<nxAlgoScriptValidator>
{
public:
    ~Validator() override { _DeleteJob(); }
    std::string GetErrorText() { return _GetJob()->GetErrorText(); }
};

TEST(nxAlgoScriptValidator, TellsWhetherAScriptLoadsAndStarts)
{
    // logged: how it ends
    const std::tuple<const char*, bool, bool, const char*> rows[] = {
        {"function OnInit() x = 1 end", true, true, ""},
        {"function OnInit( end", false, false, "32 BASEFailed to load text\n32 BASEOnInit does not exist\n"},
        {"function OnInit() os.time() end", true, false, "global 'os' (a nil value)\n"},
        {"function OnInit() job:getProduct('FDAX') end", true, false,
         "getProduct could not find product FDAX\n"},
        {"function OnInit() assert(job:getParameter('p') == nil) job:logText('x') job:startTimer('t', 1) "
         "job:sendUserState('WARN', 'x') kept = newproxy(true) "
         "getmetatable(kept).__gc = function() job:setReference('x') end end",
         true, true, ""},
    };
    for (const auto& [script, loads, runs, logged] : rows) {
        SCOPED_TRACE(script);
        Validator validator;
        nxRecordingLog log;
        EXPECT_EQ(validator.CheckScript(script), loads);
        EXPECT_EQ(validator.Run(), runs);
        EXPECT_TRUE(log.TakeLines().ends_with(logged));
        EXPECT_EQ(validator.GetError(), "");
    }
}

TEST(nxAlgoScriptValidator, CopiesShareTheJobUntilOneIsDestroyed)
{
    Validator validator;
    auto copy = std::make_unique<Validator>(validator);
    EXPECT_TRUE(copy->CheckScript("function OnInit() error('boom', 0) end"));
    EXPECT_FALSE(validator.Run());
    EXPECT_EQ(copy->GetErrorText(), "boom");
    copy.reset();
    EXPECT_FALSE(validator.CheckScript("function OnInit() end"));
    EXPECT_FALSE(validator.Run());
}

}  // namespace
