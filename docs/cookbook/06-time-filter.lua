-- Buys dips and sells peaks, but opens positions between two times of the day only, and is flat well before the close.
-- Parameters: from, to, flat (UTC, "HH:MM"; from flat on nothing is held), far (standard deviations), size (lots).

local product, bands, from, to, flat, size
local order
local opened, refused = 0, 0

function OnInit()
  product = job:getProduct("SIM")
  from = job:getParameter("from") or "15:30"
  to = job:getParameter("to") or "20:00"
  flat = job:getParameter("flat") or "20:15"
  size = job:getParameter("size") or 1
  local bars = product:createTickDataCollection{period = "MINUTE", ticks = 1}
  bands = bars:createIndicator{name = "bands", type = "BOLLINGER", period = 30, deviations = job:getParameter("far") or 2}
  bars:subscribe()
  product:subscribePrice()
end

local function goTo(wanted)
  local missing = wanted - product.position.localNet
  if missing == 0 then return end
  job:logText(string.format("from %+d to %+d", product.position.localNet, wanted))
  order = product:createOrder{side = missing > 0 and "BUY" or "SELL", type = "MARKET"}
  order:work{volume = math.abs(missing)}
end

local function open(wanted)
  if clock:isInRange(from, to) then
    opened = opened + 1
    goTo(wanted)
  else
    refused = refused + 1
  end
end

-- The times hold on every day. Closing is allowed at any of them.
function OnPrice(price)
  if order then return end
  if clock:isInRange(flat, "23:59:59") then return goTo(0) end
  local upper, middle, lower = bands:getValue("upper"), bands:getValue("middle"), bands:getValue("lower")
  if not price:isLast() or not middle then return end
  local last, held = price.lastPrice, product.position.localNet
  if (held > 0 and last >= middle) or (held < 0 and last <= middle) then goTo(0) end
  if held == 0 and last < lower then open(size) end
  if held == 0 and last > upper then open(-size) end
end

local function forget() order = nil end

OnOrderCompleted, OnOrderCancelled, OnOrderRejected = forget, forget, forget

function OnShutdown()
  job:logText(opened .. " opened, " .. refused .. " refused by the clock, " .. product.position.localNet .. " held")
end
