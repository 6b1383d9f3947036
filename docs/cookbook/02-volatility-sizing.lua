-- Follows breakouts of 20 days, and holds so many lots that a usual day moves the position by the same money.
-- Parameters: risk (money that a day of average range may move the position), days.

local product, days, range, channel, risk
local order -- the one that is under way

function OnInit()
  product = job:getProduct("SIM")
  risk = job:getParameter("risk") or 50
  days = product:createTickDataCollection{period = "SESSION", ticks = 1}
  range = days:createIndicator{name = "range", type = "ATR", period = 14}
  channel = days:createIndicator{name = "channel", type = "DONCHIAN", period = job:getParameter("days") or 20}
  days:subscribe()
  product:subscribePrice()
end

local function trade(direction)
  local money = range:getValue("value") * (product.pointValue or 1) -- what a usual day is worth in one lot
  local lots = money > 0 and math.floor(risk / money) or 0
  local missing = direction * lots - product.position.localNet
  if missing == 0 then return end
  job:logText(string.format("range %.2f, so %d lots %s", range:getValue("value"), lots, direction > 0 and "long" or "short"))
  order = product:createOrder{side = missing > 0 and "BUY" or "SELL", type = "MARKET"}
  order:work{volume = math.abs(missing)}
end

-- A breakout leaves the channel of the days before, so that one has the index 1. The lots stay as they are until
-- the position turns: resizing each day would pay the spread each day.
function OnPrice()
  local upper, lower = channel:getValue("upper", 1), channel:getValue("lower", 1)
  if not upper or not range:getValue("value") or order then return end
  local close, held = days:get().close, product.position.localNet
  if close > upper and held <= 0 then
    trade(1)
  elseif close < lower and held >= 0 then
    trade(-1)
  end
end

local function forget()
  order = nil
end

OnOrderCompleted = forget
OnOrderCancelled = forget
OnOrderRejected = forget
