// Runs the scenarios of tests/data/exchange: small markets, a few orders and the events that must come of
// them.
//
//   == TITLE                   a new exchange with one product, SIM, whose market is open
//   with KEY=VALUE ...         right below; fills=touch|cross|queue, queuemodel=even|back|power[:N], tick=1,
//                              selftrade=meet, beyond=wait, late=0 (milliseconds),
//                              barfills=open|mean|worst, through (with bars), hours=09:00-17:00,
//                              request=5000 (milliseconds; 5000-7000: drawn), answer=2, participation=50,
//                              bars[=SECONDS] (60), queue (tell each move)
//   [N/]HH:MM:SS ACTION        N days after Tuesday, 2 January 2024; without a time: at that of the line
//   before
//
// Actions:
//   quote BID VOLUME ASK VOLUME       "." leaves a cell out; may follow a trade on its line, as in one row
//   trade PRICE VOLUME [BUY|SELL]
//   depth bid|ask PRICE VOLUME ...    one change of the book
//   bar OPEN HIGH LOW CLOSE [VOLUME]
//   open, close, wait
//   new BUY|SELL MARKET|LIMIT VOLUME[@PRICE] [EXEC] [TIME] [KEY=VALUE] ...     numbered from 1, children too
//   amend ID KEY=VALUE ...            volume, price, stop, peak=MIN[-MAX], threshold, profit, stoploss,
//                                     stoplimit, expiry; for new also: stoptype=LIMIT, trailing, protected,
//                                     owner
//   cancel ID
//   check ID KEY=VALUE ...            status, executed, working, ahead, stop as the exchange has them
//   -> EVENT                          all that was told since the line before, in order, each on its line
#include <fmt/format.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <sstream>

#include "tests/host/nxExchangeFixture.h"

namespace {

constexpr long long Second = 1'000'000'000;
constexpr long long FirstDay = 1'704'153'600 * Second;

const std::map<std::string, nxOrderExecution> Executions = {
    {"IOC", nxOrderExecution::ImmediateOrCancel},
    {"FOK", nxOrderExecution::FillOrKill},
    {"STOP", nxOrderExecution::Stop},
    {"ICEBERG", nxOrderExecution::Iceberg},
    {"BRACKET", nxOrderExecution::Bracket},
    {"TRAILING_STOP", nxOrderExecution::TrailingStop}};
const std::map<std::string, nxOrderDuration> Durations = {{"GFD", nxOrderDuration::Day},
                                                          {"GTD", nxOrderDuration::Date},
                                                          {"GTC", nxOrderDuration::Cancelled},
                                                          {"OPEN", nxOrderDuration::Open},
                                                          {"PREOPEN", nxOrderDuration::PreOpen}};
const char* const Causes[] = {"took", "touched", "through", "queue", "crossed", "bar", "own", "assumed"};
const char* const Statuses[] = {"pending", "working", "partial", "held", "deleted", "filled", "rejected"};

std::string GetStatus(const nxOrderStatusEnum& status)
{
    return Statuses[status.GetEnumValue() - nxOrderStatus_Pending];
}

std::string Describe(const nxExchangeEvent& event, const nxSimulatedExchange& exchange)
{
    using enum nxExchangeEvent::Kind;
    const auto terms = [&] {
        return fmt::format("{}{}{}", event.volume,
                           event.price.IsValid() ? "@" + event.price.GetAsString() : "",
                           event.stopPrice.IsValid() ? " stop " + event.stopPrice.GetAsString() : "");
    };
    const auto because = [&](const char* what) {
        return fmt::format("{} {}{}{}", what, event.order, event.reason.empty() ? "" : ": ", event.reason);
    };
    switch (event.kind) {
        case Accepted:
            return fmt::format("accepted {} {}", event.order, GetStatus(event.status));
        case ChildCreated:
            return fmt::format("child {} of {} {} {}", event.order, exchange.GetOrder(event.order).parent,
                               nxGetText(exchange.GetOrder(event.order).kind.side), terms());
        case Triggered:
            return fmt::format("triggered {}", event.order);
        case Filled:
            return fmt::format("filled {} {}@{} {} {} {}/{}", event.order, event.fillVolume,
                               event.fillPrice.GetAsString(), event.isMaker ? "maker" : "taker",
                               Causes[static_cast<int>(event.cause)], event.executed, event.volume);
        case Amended:
            return fmt::format("amended {} {}{}", event.order, terms(),
                               event.ahead.IsValid() ? " ahead " + event.ahead.GetAsLogString() : "");
        case Cancelled:
            return because("cancelled");
        case Rejected:
            return because("rejected");
        case AmendRejected:
            return because("amend-rejected");
        case CancelRejected:
            return because("cancel-rejected");
        case QueueMoved:
            return fmt::format("queue {} {}", event.order, event.ahead.GetAsLogString());
    }
    return {};
}

nxVolume ToVolume(const std::string& text)
{
    nxVolume volume;
    EXPECT_TRUE(volume.SetFromString(text).IsSuccess()) << text;
    return volume;
}

class Runner
{
public:
    explicit Runner(const std::filesystem::path& file) : _file(file.string()) {}

    void Run()
    {
        std::ifstream stream(_file);
        for (std::string line; std::getline(stream, line);) {
            ++_line;
            std::istringstream words(line);
            std::string word;
            if (!(words >> word) || word.starts_with('#')) continue;
            if (word == "->") {
                std::string text;
                std::getline(words >> std::ws, text);
                _expected.push_back(text);
                continue;
            }
            Compare();
            if (word == "==") {
                Begin();
            } else if (word == "with") {
                while (words >> word)
                    Configure(word);
            } else {
                if (!_market) Open();
                if (word.find(':') != std::string::npos) {
                    MoveTo(word);
                    words >> word;
                    Collect(word == "bar");
                }
                Act(word, words);
                Collect();
            }
            _lineOfAction = _line;
        }
        Compare();
        EXPECT_GT(_count, 0u) << _file;
    }

private:
    void Begin()
    {
        ++_count;
        _market.reset();
        _options = MakePlainOptions();
        _tick = Dec("1");
        _hours = {};
        _barPeriod = 0;
        _time = FirstDay;
    }

    void Configure(const std::string& word)
    {
        const std::string key = word.substr(0, word.find('='));
        const std::string value = key == word ? "" : word.substr(key.size() + 1);
        if (key == "fills") {
            _options.fills = nxFillModel::Find(value);
            ASSERT_NE(_options.fills, nullptr) << value;
        } else if (key == "queuemodel") {
            EXPECT_TRUE(_options.queue.SetFromText(value)) << value;
        } else if (key == "selftrade") {
            ASSERT_NE(nxSelfTradeRule::Find(value), nullptr) << value;
            _options.selfTrade = nxSelfTradeRule::Find(value)->rule;
        } else if (key == "beyond") {
            _options.walksBeyond = value == "walk";
        } else if (key == "late") {
            _options.lateTrades = std::stoll(value) * nxTime::NanosecondsPerMillisecond;
        } else if (key == "tick") {
            _tick = value == "." ? nxDecimal() : Dec(value);
        } else if (key == "hours") {
            EXPECT_EQ(nxTradingHours::SetFromText(value, _hours), nullptr);
        } else if (key == "request") {
            EXPECT_TRUE(_options.request.SetFromText(value)) << value;
        } else if (key == "answer") {
            EXPECT_TRUE(_options.answer.SetFromText(value)) << value;
        } else if (key == "barfills") {
            _options.bars.model = nxBarModel::Find(value);
            ASSERT_NE(_options.bars.model, nullptr) << value;
        } else if (key == "through") {
            _options.bars.isThrough = true;
        } else if (key == "participation") {
            _options.participation = ToVolume(value).GetValue();
        } else if (key == "bars") {
            _barPeriod = (value.empty() ? 60 : std::stoll(value)) * Second;
        } else if (key == "queue") {
            _options.reportQueue = true;
        } else {
            Fail("unknown setting " + key);
        }
    }

    void Open()
    {
        _market = std::make_unique<nxExchangeFixture>(_options, _tick, _hours, _barPeriod);
        _market->exchange.OnOpen(0, _time);
    }

    void MoveTo(const std::string& word)
    {
        int day = 0, hour = 0, minute = 0, second = 0;
        const char* clock = word.c_str();
        if (const std::size_t slash = word.find('/'); slash != std::string::npos) {
            day = std::stoi(word);
            clock += slash + 1;
        }
        if (std::sscanf(clock, "%d:%d:%d", &hour, &minute, &second) != 3) Fail("a bad time");
        const long long time = FirstDay + (((day * 24LL + hour) * 60 + minute) * 60 + second) * Second;
        if (time < _time) Fail("time runs backwards");
        _time = time;
    }

    void SetTerm(const std::string& word, nxOrderKind& kind, nxOrderTerms& terms)
    {
        const std::string key = word.substr(0, word.find('='));
        const std::string value = key == word ? "" : word.substr(key.size() + 1);
        const std::map<std::string, nxVolume*> volumes = {{"volume", &terms.volume},
                                                          {"threshold", &terms.icebergThreshold},
                                                          {"profit", &terms.bracketProfit},
                                                          {"stoploss", &terms.bracketStopLoss},
                                                          {"stoplimit", &terms.bracketStopLimit}};
        if (const auto volume = volumes.find(key); volume != volumes.end()) {
            *volume->second = ToVolume(value);
        } else if (key == "price") {
            terms.price = Dec(value);
        } else if (key == "stop") {
            terms.stopPrice = Dec(value);
        } else if (key == "peak") {
            const std::size_t dash = value.find('-');
            terms.icebergMinPeak = ToVolume(value.substr(0, dash));
            if (dash != std::string::npos) terms.icebergMaxPeak = ToVolume(value.substr(dash + 1));
        } else if (key == "expiry") {
            EXPECT_TRUE(nxDateTime::SetFromString(value, terms.expiry).IsSuccess());
        } else if (word == "stoptype=LIMIT") {
            terms.bracketStopIsLimit = true;
        } else if (word == "trailing") {
            terms.bracketStopTrails = true;
        } else if (word == "protected") {
            kind.crossProtected = true;
        } else if (key == "owner") {
            kind.owner = ToVolume(value).GetValue();
        } else if (Executions.contains(word)) {
            kind.execution = Executions.at(word);
        } else if (Durations.contains(word)) {
            kind.duration = Durations.at(word);
        } else {
            Fail("unknown term " + word);
        }
    }

    void Act(const std::string& action, std::istringstream& words)
    {
        std::string word;
        nxFeedQuote quote = MakeNoQuote();
        const auto price = [&](nxDecimal& cell) {
            if (words >> word && word != ".") cell = Dec(word);
        };
        const auto volume = [&](nxVolume& cell) {
            if (words >> word && word != ".") cell = ToVolume(word);
        };
        const auto best = [&] {
            price(quote.bid), volume(quote.bidVolume), price(quote.ask), volume(quote.askVolume);
        };
        nxSimulatedExchange& exchange = _market->exchange;
        if (action == "quote") {
            best();
            _market->Quote(quote, _time);
        } else if (action == "trade") {
            price(quote.last), volume(quote.lastVolume);
            quote.side = nxEnum_Undefined;
            if (words >> word && word != "quote") {
                quote.side = word == "BUY" ? nxBuySell_Buy : nxBuySell_Sell;
                words >> word;
            }
            if (word == "quote") best();
            _market->Quote(quote, _time);
        } else if (action == "depth") {
            std::vector<nxFeedLevel> levels;
            while (words >> word) {
                nxFeedLevel& level = levels.emplace_back();
                level.side = word == "bid" ? nxSide::Buy : nxSide::Sell;
                price(level.price), volume(level.volume);
            }
            _market->Depth(levels, _time);
        } else if (action == "bar") {
            nxFeedBar bar;
            price(bar.open), price(bar.high), price(bar.low), price(bar.close), volume(bar.volume);
            _market->Bar(bar, _time);
        } else if (action == "open") {
            exchange.OnOpen(0, _time);
        } else if (action == "close") {
            exchange.OnClose(0, _time);
        } else if (action == "new") {
            nxOrderKind kind;
            nxOrderTerms terms;
            words >> word;
            kind.side = word == "BUY" ? nxSide::Buy : nxSide::Sell;
            words >> word;
            kind.isMarket = word == "MARKET";
            words >> word;
            const std::size_t at = word.find('@');
            if (word != ".") terms.volume = ToVolume(word.substr(0, at));
            if (at != std::string::npos) terms.price = Dec(word.substr(at + 1));
            while (words >> word)
                SetTerm(word, kind, terms);
            exchange.Submit(kind, terms, _time);
        } else if (action == "amend" || action == "cancel" || action == "check") {
            words >> word;
            const unsigned int order = ToVolume(word).GetValue();
            nxOrderKind ignored;
            nxOrderTerms changes = nxOrderTerms::MakeNoChange();
            while (words >> word) {
                if (action == "check") {
                    Check(word, exchange.GetOrder(order));
                } else {
                    SetTerm(word, ignored, changes);
                }
            }
            if (action == "amend") exchange.Amend(order, changes, _time);
            if (action == "cancel") exchange.Cancel(order, _time);
        } else if (action != "wait") {
            Fail("unknown action " + action);
        }
    }

    void Check(const std::string& word, const nxExchangeOrder& order)
    {
        const std::string key = word.substr(0, word.find('='));
        const std::string actual = key == "status"     ? GetStatus(order.status)
                                   : key == "executed" ? std::to_string(order.executed)
                                   : key == "working"  ? std::to_string(order.GetRemaining())
                                   : key == "ahead"    ? order.ahead.GetAsLogString()
                                   : key == "stop"     ? order.terms.stopPrice.GetAsString()
                                                       : "?";
        if (word != key + "=" + actual) Fail(word + " is not so: " + actual);
    }

    // Lets all happen that is due by now; in front of a bar, what ends now waits.
    void Collect(bool beforeBar = false)
    {
        nxSimulatedExchange& exchange = _market->exchange;
        beforeBar ? exchange.AdvanceAmongBars(_time) : exchange.Advance(_time);
        for (nxExchangeEvent event; exchange.PopEvent(event, _time);)
            _told.push_back(Describe(event, exchange));
    }

    void Compare()
    {
        if (_told != _expected)
            ADD_FAILURE_AT(_file.c_str(), _lineOfAction)
                << fmt::format("told:\n  -> {}\nexpected:\n  -> {}\n", fmt::join(_told, "\n  -> "),
                               fmt::join(_expected, "\n  -> "));
        _told.clear();
        _expected.clear();
    }

    void Fail(const std::string& text) { ADD_FAILURE_AT(_file.c_str(), _line) << text; }

    std::string _file;
    int _line = 0;
    int _lineOfAction = 0;
    unsigned int _count = 0;
    nxExchangeOptions _options;
    nxDecimal _tick;
    nxTradingHours _hours;
    long long _barPeriod = 0;
    std::unique_ptr<nxExchangeFixture> _market;
    long long _time = FirstDay;
    std::vector<std::string> _told, _expected;
};

TEST(nxLatency, IsADurationUpToAnHourOrARangeOfThem)
{
    const struct
    {
        const char* text;
        long long least, most;  // nanoseconds; below 0: refused, and left alone
    } rows[] = {
        {"0", 0, 0},
        {"0.000001", 1, 1},
        {"0.5-20", 500'000, 20'000'000},
        {"1.5000000", 1'500'000, 1'500'000},
        {"7-7", 7'000'000, 7'000'000},
        {"250us", 250'000, 250'000},
        {"1.5..2s", 1'500'000'000, 2'000'000'000},
        {"9ns-0.1", -1, -1},
        {"0.5ns", -1, -1},
        {"3601s", -1, -1},
        {"5m", -1, -1},
        {"3600000", 3600 * Second, 3600 * Second},
        {"0.0000001", -1, -1},
        {"3600000.000001", -1, -1},
        {"-1", -1, -1},
        {"+1", -1, -1},
        {"2-1", -1, -1},
        {"1-x", -1, -1},
        {"1-", -1, -1},
        {"", -1, -1},
    };
    for (const auto& row : rows) {
        nxLatency latency{-1, -1};
        EXPECT_EQ(latency.SetFromText(row.text), row.least >= 0) << row.text;
        EXPECT_EQ(latency.least, row.least) << row.text;
        EXPECT_EQ(latency.most, row.most) << row.text;
    }
}

TEST(nxExchangeScenarios, EachFileIsToldAsItExpects)
{
    unsigned int files = 0;
    for (const auto& entry : std::filesystem::directory_iterator(NX_TEST_DIR "/data/exchange")) {
        if (entry.path().extension() != ".txt") continue;
        ++files;
        Runner(entry.path()).Run();
    }
    EXPECT_GT(files, 0u);
}

}  // namespace
