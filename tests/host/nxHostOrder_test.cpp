#include "host/jobs/nxHostOrder.h"

#include "tests/host/nxHostFixture.h"
#include "tests/support/nxRowFile.h"

namespace {

// Tells each order callback in a line of its own, and would tell one inside another.
constexpr const char* Teller = R"(
local inside
local function tell(name, update, text)
  if inside then job:logText(name .. " inside " .. inside) end
  inside = name
  job:logText(name .. " " .. update.id .. " " .. text)
  if after then after(name, update) end
  inside = nil
end
for _, name in ipairs{"Working", "Completed", "Cancelled", "Rejected", "AmendRejected", "CancelRejected"} do
  _G["OnOrder" .. name] = function(update)
    tell(name, update, update.executed .. "/" .. update.volume .. " at " .. tostring(update.price) ..
      (update.error ~= "" and " " .. update.error or ""))
  end
end
function OnOrderFill(update) tell("Fill", update, update.fillVolume .. " at " .. update.fillPrice) end
function OnOrderNew(order) tell("New", order, order.side .. " " .. order.type .. order.exec .. " of " .. order.parent.id .. order.parent.bracketStopLossType) end
function OnPrice(price)
  inside = "OnPrice"
  count = (count or 0) + 1
  if step then step(count) end
  inside = nil
end
function OnInit() product = job:getProduct("A") product:subscribePrice() end
function make(side, kind) return product:createOrder{side = side, type = kind} end
function limit(side, volume, price) local o = make(side, "LIMIT") o:work{volume = volume, price = price} return o end
function try(order, name, ...) local ok, text = pcall(order[name], order, ...) job:logText(ok and "ok" or text:gsub("^.*: ", "")) end
)";

constexpr const char* Quotes =
    "@00,A,99,10,101,10,100,1,BUY\n"
    "@01,A,99,10,101,10,,,\n"
    "@02,A,,,,,99,12,SELL\n"
    "@03,A,99,5,101,10,,,\n";

std::string RunWith(const std::string& script, const std::string& rows = Quotes,
                    const nxExchangeOptions& exchange = {})
{
    nxHostRun run;
    run.options.exchange = exchange;
    run.SetScript(Teller + script);
    run.AddQuotes(rows);
    std::string log = run.RunForLog() + run.GetErrors();
    for (std::size_t at = 0; (at = log.find(".000  ", at)) != std::string::npos;)
        log.replace(at, 6, " ");
    return log;
}

// What is done at the first price and, after THEN, at the second.
std::string RunAtPrices(const std::string& what, const nxExchangeOptions& exchange = {})
{
    const std::size_t then = what.find(" THEN ");
    return RunWith("function step(n) if n == 1 then " + what.substr(0, then) + " elseif n == 2 then " +
                       (then == what.npos ? "" : what.substr(then + 6)) + " end end",
                   Quotes, exchange);
}

TEST(HostOrder, TellsItsLifeInOrderAndOutsideOtherCallbacks)
{
    nxExpectRows("host/orders.txt", [](const std::string& what) { return RunAtPrices(what); });
}

TEST(HostOrder, RefusesAtOnceWithAReason)
{
    nxExpectRows("host/orders.txt", [](const std::string& call) {
        const std::string log = RunAtPrices(call);
        return log.substr(3, log.find('\n') - 3);
    });
}

TEST(HostOrder, AnswersTravelInRecordedTime)
{
    nxExchangeOptions exchange;
    exchange.request = exchange.answer = {250'000'000, 250'000'000};
    nxExpectRows("host/orders.txt", [&](const std::string& what) { return RunAtPrices(what, exchange); });
}

// And its last update told its own last event.
TEST(HostOrder, WhatIsOverAnswersAsItEnded)
{
    nxExpectRows("host/orders.txt", [](const std::string& script) {
        const std::string log = RunWith(script);
        return log.substr(log.find("03 "));
    });
}

}  // namespace
