#include "scriptFramework/analytics/nxAlgoTickDataCollectionObject.h"

#include <gtest/gtest.h>

#include "tests/support/nxRecordingLog.h"
#include "tests/support/nxRowFile.h"
#include "tests/support/nxScriptJob.h"

namespace {

using Row = std::pair<const char*, const char*>;  // code and what it evaluates to

nxTickData MakeBar(int open, int high, int low, int close, unsigned int volume, long long time = 0)
{
    nxTickData bar;
    bar.SetOpen(nxDecimal(open, 1, 0));
    bar.SetHigh(nxDecimal(high, 1, 0));
    bar.SetLow(nxDecimal(low, 1, 0));
    bar.SetClose(nxDecimal(close, 1, 0));
    bar.SetVolume(volume);
    bar.SetTime(time);
    return bar;
}

// Writes down what it is fed with: the newest bar, and the lengths.
class nxTellingIndicator : public nxTechnicalIndicator
{
public:
    nxTellingIndicator(std::string& calls, std::string name) : _calls(calls), _name(std::move(name)) {}
    ~nxTellingIndicator() override { _calls += _name + " gone;"; }

    std::vector<std::string> GetResultNames() const override { return {"result"}; }
    const char* GetTypeName() const override { return "telling"; }
    bool GetNamedResult(unsigned int index, const std::string& name, double& result) const override
    {
        result = 100.0 + index;
        return name == "result";
    }
    bool GetRealTimeResult(const std::string& name, double& result) const override
    {
        result = _realTime;
        return name == "result" && _hasRealTime;
    }
    void CalculateNewResult(const Values& open, const Values& high, const Values& low, const Values& close,
                            const Values& volume, unsigned int count) override
    {
        _Tell("new " + std::to_string(count), open, high, low, close, volume);
    }
    void CalculateRealTime(const Values& open, const Values& high, const Values& low, const Values& close,
                           const Values& volume) override
    {
        _hasRealTime = true;
        _realTime = close.back();
        _Tell("live", open, high, low, close, volume);
    }
    void ClearRealTimeResult() override { _hasRealTime = false; }

private:
    void _Tell(const std::string& what, const Values& open, const Values& high, const Values& low,
               const Values& close, const Values& volume)
    {
        _calls += _name + " " + what + " of " + std::to_string(close.size()) + ":";
        for (const Values* values : {&open, &high, &low, &close, &volume})
            _calls += " " + nxStringHelper::GetAsString(values->back());
        _calls += ";";
    }

    std::string& _calls;
    std::string _name;
    bool _hasRealTime = false;
    double _realTime = 0.0;
};

class nxTestCollection : public nxAlgoTickDataCollectionObject
{
public:
    using nxAlgoTickDataCollectionObject::_AddBar;
    using nxAlgoTickDataCollectionObject::_HaveRealTime;
    using nxAlgoTickDataCollectionObject::nxAlgoTickDataCollectionObject;

    ~nxTestCollection() override
    {
        if (windowsSeen != nullptr) *windowsSeen = static_cast<nxTestProduct*>(_GetProduct())->windowCalls;
    }

    std::string* calls = nullptr;
    std::string* windowsSeen = nullptr;  // takes what the product knew of windows when this one went
    bool accepts = true;

protected:
    nxAlgoIndicatorObject* _createIndicator(const std::string& type,
                                            const std::map<std::string, std::string>& parameters,
                                            std::string& error) override
    {
        error = "no " + type;
        for (const auto& [key, value] : parameters)
            error += " " + key + "=" + value;
        if (type != "telling") return nullptr;
        return new nxAlgoIndicatorObject(GetJob(), new nxTellingIndicator(*calls, parameters.at("name")));
    }
    bool _Subscribe(bool realTime) override
    {
        *calls += realTime ? "subscribe live;" : "subscribe;";
        return accepts;
    }
};

class nxAlgoTickDataCollectionObjectTest : public testing::Test
{
protected:
    nxAlgoTickDataCollectionObjectTest()
    {
        product.makeCollection = [this](const std::string& period, unsigned int ticks,
                                        const nxDateTime& start, const nxDateTime& end) {
            request = period + " " + std::to_string(ticks) + " [" + start.GetAsString() + "] [" +
                      end.GetAsString() + "]";
            nxTickDataPeriodEnum known;
            EXPECT_TRUE(known.SetFromString(period));
            collection = new nxTestCollection(&script.host, &product, period, known, ticks);
            collection->calls = &calls;
            return collection;
        };
        script.host.onTickData = [this](nxAlgoTickDataObject& tick) {
            EXPECT_TRUE(script.job.OnTickData(tick).IsSuccess());
        };
        EXPECT_EQ(script.Evaluate("p = job:getProduct('FDAX')"), "");
    }

    void ExpectRows(std::initializer_list<Row> rows)
    {
        for (const auto& [code, expected] : rows)
            EXPECT_EQ(script.Evaluate(code), expected) << code;
    }
    void Create(const std::string& more = "")
    {
        EXPECT_EQ(script.Evaluate("c = p:createTickDataCollection{period = 'MINUTE', ticks = 9" + more + "}"),
                  "");
    }
    void Tick(int price, unsigned int volume, nxEnumValue side)
    {
        collection->OnTick(nxDecimal(price, 1, 0), volume, 1'704'724'200, side);
    }
    std::string TakeCalls() { return std::exchange(calls, {}); }

    std::string calls;
    std::string request;
    nxTestCollection* collection = nullptr;
    nxScriptJob script;
    nxTestProduct& product = script.AddProduct("FDAX", 12);
};

TEST_F(nxAlgoTickDataCollectionObjectTest, ARequestIsJudgedBeforeTheHostHearsOfIt)
{
    nxExpectRows("scripts/bars.txt", [this](const std::string& code) {
        request.clear();
        const std::string answer = script.Evaluate(code);
        return answer + (request.empty() ? "" : " || " + request);
    });
    nxRecordingLog log;
    Create(", realTime = true");
    EXPECT_EQ(log.TakeLines(),
              "32 [test] Create Tick Data Collection.  Period : MINUTE , Ticks : 9 , Start Date :  , "
              "End Date :  , RealTime : true\n");
    product.makeCollection = nullptr;
    ExpectRows({{"p:createTickDataCollection{period = 'HOUR', ticks = 1}", "nil"}});
}

TEST_F(nxAlgoTickDataCollectionObjectTest, BarsCountFromTheNewest)
{
    Create();
    nxRecordingLog log;
    script.ExpectRows("bars.txt", "empty");
    EXPECT_EQ(log.TakeLines(), "32 [test] tickDataCollection:get invalid index : 0\n");
    // More than a chunk of them, while the script holds on to the first.
    collection->AddTickData(MakeBar(10, 12, 9, 11, 5, 1'704'724'200), true);
    ExpectRows({{"first = c:get()", ""}});
    for (int i = 1; i < 1000; ++i)
        collection->AddTickData(MakeBar(i, i, i, i, 0xFFFFFFFF), false);
    script.ExpectRows("bars.txt");
}

TEST_F(nxAlgoTickDataCollectionObjectTest, TradesBuildABarThatACompletedOneReplaces)
{
    Create(", realTime = true");
    ExpectRows({{"c:createIndicator{name = 'z', type = 'telling'}.type", "'telling'"},
                {"c:createIndicator{name = 'a', type = 'telling', n = 5}.name", "'a'"}});
    collection->AddTickData(MakeBar(1, 4, 1, 2, 3), true);
    EXPECT_EQ(TakeCalls(), "a new 1 of 1: 1 4 1 2 3;z new 1 of 1: 1 4 1 2 3;");

    nxRecordingLog log;
    Tick(10, 2, nxBuySell_Buy);
    EXPECT_EQ(TakeCalls(), "a live of 2: 10 10 10 10 2;z live of 2: 10 10 10 10 2;");
    Tick(12, 3, nxBuySell_Sell);
    Tick(9, 4, nxEnum_Undefined);
    EXPECT_EQ(log.TakeLines(), "");
    ExpectRows({{"it.open, it.high, it.low, it.close, it.volume, it.time", "10 12 9 9 9 nil"},
                {"c.count, c:get().close, c.realTime.close, it.collection.count", "1 2 9 1"},
                {"c:getIndicator('a'):getRealTimeValue('result')", "9"}});
    TakeCalls();

    collection->AddTickData(MakeBar(5, 6, 4, 5, 1), true);  // no longer than the arrays: it replaces
    EXPECT_EQ(TakeCalls(), "a new 2 of 2: 5 6 4 5 1;z new 2 of 2: 5 6 4 5 1;");
    ExpectRows({{"c.count, c.realTime, c:getIndicator('a'):getRealTimeValue('result')", "2 nil nil"}});

    collection->SetRealTimeTickData(MakeBar(7, 9, 6, 8, 2));
    ExpectRows({{"c.realTime.open, c.realTime.high, it.close", "7 9 8"}});  // one view, and no notification
    EXPECT_EQ(TakeCalls(), "a live of 3: 7 9 6 8 2;z live of 3: 7 9 6 8 2;");
    script.host.products.clear();
    EXPECT_EQ(TakeCalls().size(), std::string("a gone;z gone;").size());
}

TEST_F(nxAlgoTickDataCollectionObjectTest, WithoutRealTimeTheBarIsBuiltUnseen)
{
    Create();
    ExpectRows({{"c:createIndicator{name = 'a', type = 'telling'}.name", "'a'"}});
    Tick(10, 2, nxBuySell_Buy);
    EXPECT_FALSE(collection->_HaveRealTime());
    EXPECT_EQ(TakeCalls(), "a live of 1: 10 10 10 10 2;");
    ExpectRows({{"c.realTime, c.count, it.close", "nil 0 10"}});
}

TEST_F(nxAlgoTickDataCollectionObjectTest, IndicatorsAreMadeOnceByName)
{
    Create();
    script.ExpectRows("bars.txt");
}

TEST_F(nxAlgoTickDataCollectionObjectTest, ASubscriptionThatTheHostRefusesIsAnErrorWithoutText)
{
    Create(", realTime = true");
    ExpectRows({{"c:subscribe('ignored')", ""}});
    collection->accepts = false;
    ExpectRows({{"c:subscribe()", "error: "}});
    EXPECT_EQ(TakeCalls(), "subscribe live;subscribe live;");
}

// Whatever room it makes ahead, which is not touched.
TEST_F(nxAlgoTickDataCollectionObjectTest, TheScriptIsChargedForAtMostTwiceItsBars)
{
    constexpr std::size_t bar = 5 * sizeof(double) + sizeof(nxDateTime);
    EXPECT_EQ(script.Evaluate("c = p:createTickDataCollection{period = 'MINUTE', ticks = 9}"), "");
    const std::size_t before = script.job.GetMemory().GetBytesInUse();
    for (std::size_t bars = 1; bars <= 3000; ++bars) {
        collection->_AddBar(MakeBar(1, 2, 0, 1, 5), false);
        const std::size_t charged = script.job.GetMemory().GetBytesInUse() - before;
        ASSERT_GE(charged, bars * bar) << bars;
        ASSERT_LE(charged, std::max<std::size_t>(256, 2 * bars) * bar) << bars;
    }
}

}  // namespace

TEST(nxAlgoProductObject, FreesItsWindowsBeforeItsCollections)
{
    static_assert(std::is_copy_constructible_v<nxAlgoProductObject>);
    std::string seen;
    {
        nxScriptJob script;
        nxTestProduct& product = script.AddProduct("FDAX", 12);
        product.makeCollection = [&](const std::string& period, unsigned int ticks, const nxDateTime&,
                                     const nxDateTime&) {
            auto* const collection =
                new nxTestCollection(&script.host, &product, period, nxTickDataPeriodEnum(), ticks);
            collection->windowsSeen = &seen;
            return collection;
        };
        EXPECT_EQ(script.Evaluate("p = job:getProduct('FDAX')"
                                  " p:createTickDataCollection{period = 'MINUTE', ticks = 9}"
                                  " p:createTradeWindow(60):start()"),
                  "");
    }
    EXPECT_EQ(seen, "+-");
}
