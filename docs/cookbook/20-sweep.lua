-- Long after days in which the price rose, short after days in which it fell; not while it has hardly moved.
-- Parameters: days (that it looks back over), dead (percent of change that is left alone), size (lots).

local product, change, dead, size
local order

function OnInit()
  product = job:getProduct("SIM")
  dead = job:getParameter("dead") or 1
  size = job:getParameter("size") or 1
  local days = product:createTickDataCollection{period = "SESSION", ticks = 1}
  change = days:createIndicator{name = "change", type = "ROC", period = job:getParameter("days") or 20}
  days:subscribe()
  product:subscribePrice()
end

function OnPrice()
  local percent = change:getValue("value")
  if not percent or order or math.abs(percent) <= dead then return end
  local missing = (percent > 0 and size or -size) - product.position.localNet
  if missing == 0 then return end
  order = product:createOrder{side = missing > 0 and "BUY" or "SELL", type = "MARKET"}
  order:work{volume = math.abs(missing)}
end

local function forget() order = nil end

OnOrderCompleted, OnOrderCancelled, OnOrderRejected = forget, forget, forget
