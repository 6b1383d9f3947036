-- Watches the spread of one product over a day: tells when it is unusually wide, and reports each half hour on a
-- timer, which follows the recorded time.
--
--     algoserver run examples/spread_watch.lua --data examples/data/demo_quotes.csv.gz

local WIDE = 8            -- in ticks
local HALF_HOUR = 1800000 -- timers count in milliseconds

local ticks, wide, trades, volume = 0, false, 0, 0
local prices, sum = 0, 0

function OnInit()
  product = job:getProduct("SIM")
  product:subscribePrice()
  job:startTimer("report", HALF_HOUR)
end

function OnPrice(price)
  if price:isLast() then
    trades = trades + 1
    volume = volume + price.lastVolume
  end
  if price.bidPrice == nil or price.askPrice == nil then return end

  ticks = round((price.askPrice - price.bidPrice) / product.tickSize)
  prices, sum = prices + 1, sum + ticks
  if ticks >= WIDE and not wide then
    job:logText("spread of " .. ticks .. " ticks: " .. price.bidPrice .. " / " .. price.askPrice)
  end
  wide = ticks >= WIDE
end

function OnTimer(name)
  job:logText(string.format("average spread %.2f ticks, %d trades, volume %d, last %s",
                            sum / prices, trades, volume, tostring(product.price.lastPrice)))
end

function OnShutdown()
  job:logText("day done after " .. prices .. " prices")
end
