-- What is asked for and not heard of, and the other way round.
local bars, others, third
function OnInit()
  local product = job:getProduct("A")
  bars = product:createTickDataCollection{ period = "MINUTE", ticks = 10 }
  others = product:createTickDataCollection{ period = "HOUR", ticks = 10 }
  others:subscribe()
  third = product:createTickDataCollection{ period = "HOUR", ticks = 10 }
  keep(third)
  product:subscribeState()
  job:startTimer("t", 100)
  product:subscribePrice()
  started = clock.totalSeconds
end

function keep(collection)
  collection:subscribe()
end

function OnMarketDepth(depth)
  job:logText(depth.bidCount .. bars.count .. others.count .. third.count)
end

function OnPosition() end

local function buy()
  return job:getProduct("A"):createOrder("BUY", "MARKET")
end

function OnPrice()
  job:logText("buys")
  local order = buy()
  order:work{ volume = 1 }
end

OnTickData = function(bar)
  if bar.close > 100 then buy():work{ volume = 1 } end
end
