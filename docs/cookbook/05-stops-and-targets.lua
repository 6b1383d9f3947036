-- Buys where the price leaves the range of the last half hour, with a target and a stop that take each other away.
-- Parameters: size (lots), target and stop (ticks from the price of the fill), trailing (whether the stop follows the price).

local product, bars, channel, size, target, stop, trailing
local entry              -- the bracket, until it is over
local known = 0          -- bars that were looked at
local won, lost = 0, 0   -- lots

function OnInit()
  product = job:getProduct("SIM")
  size = job:getParameter("size") or 2
  target = job:getParameter("target") or 8
  stop = job:getParameter("stop") or 8
  trailing = tostring(job:getParameter("trailing") or false) -- the key takes a text
  bars = product:createTickDataCollection{period = "5_MINUTE", ticks = 1}
  channel = bars:createIndicator{name = "channel", type = "DONCHIAN", period = 6}
  bars:subscribe()
  product:subscribePrice()
end

function OnPrice()
  if bars.count == known then return end
  known = bars.count
  local upper = channel:getValue("upper", 1)
  if not upper or entry or product.position.localNet ~= 0 or bars:get().close <= upper then return end
  entry = product:createOrder{side = "BUY", type = "MARKET", exec = "BRACKET"}
  entry:work{volume = size, bracketProfit = target, bracketStopLoss = stop, bracketStopLossTrailing = trailing}
end

-- Each fill of the entry makes a stop and a target of its volume.
function OnOrderNew(order)
  order.reference = order.stopPrice and "stop" or "target"
end

function OnOrderFill(update)
  if update.reference == "target" then won = won + update.fillVolume end
  if update.reference == "stop" then lost = lost + update.fillVolume end
  local what = update.reference == "" and "entry" or update.reference
  job:logText(string.format("%s: %s %d at %.2f", what, update.side, update.fillVolume, update.fillPrice))
end

-- The other child of a bracket is cancelled, too: that is no news of the entry.
local function forget(update)
  if entry and update.id == entry.id then entry = nil end
end

OnOrderCompleted = forget
OnOrderCancelled = forget
OnOrderRejected = forget

function OnShutdown()
  job:logText(won .. " lots reached the target, " .. lost .. " the stop")
end
