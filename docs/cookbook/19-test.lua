-- Buys when the relative strength falls below a level, and is out when it is back above the middle.
-- Parameters: period (bars), level (of the relative strength), size (lots).

local product, strength, level, size
local order

function OnInit()
  product = job:getProduct("SIM")
  level = job:getParameter("level") or 30
  size = job:getParameter("size") or 1
  local bars = product:createTickDataCollection{period = "MINUTE", ticks = 1}
  strength = bars:createIndicator{name = "strength", type = "RSI", period = job:getParameter("period") or 14}
  bars:subscribe()
  product:subscribePrice()
end

local function goTo(wanted)
  local missing = wanted - product.position.localNet
  if missing == 0 then return end
  order = product:createOrder{side = missing > 0 and "BUY" or "SELL", type = "MARKET"}
  order:work{volume = math.abs(missing)}
end

function OnPrice()
  local value = strength:getValue("value")
  if not value or order then return end
  if value < level then
    goTo(size)
  elseif value > 50 then
    goTo(0)
  end
end

function OnOrderFill(update)
  job:logText(string.format("%s %d at %.2f", update.side, update.fillVolume, update.fillPrice))
end

local function forget() order = nil end

OnOrderCompleted, OnOrderCancelled, OnOrderRejected = forget, forget, forget
