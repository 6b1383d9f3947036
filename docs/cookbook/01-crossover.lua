-- Long while the fast average of the daily closes is above the slow one, else short.
-- Parameters: fast and slow (days), size (lots).

local product, fast, slow, size
local order -- the one that is under way

function OnInit()
  product = job:getProduct("SIM")
  size = job:getParameter("size") or 1
  local days = product:createTickDataCollection{period = "SESSION", ticks = 1}
  fast = days:createIndicator{name = "fast", type = "SMA", period = job:getParameter("fast") or 10}
  slow = days:createIndicator{name = "slow", type = "SMA", period = job:getParameter("slow") or 40}
  days:subscribe()
  product:subscribePrice()
end

-- The bar of a day is in the collection before its price is told.
function OnPrice()
  local quick, steady = fast:getValue("value"), slow:getValue("value")
  if not quick or not steady or order then return end -- too few days so far, or an order is under way

  local wanted = quick > steady and size or -size
  local missing = wanted - product.position.localNet
  if missing == 0 then return end
  order = product:createOrder{side = missing > 0 and "BUY" or "SELL", type = "MARKET"}
  order:work{volume = math.abs(missing)}
end

-- However an order ends, the next price looks at what is held, and sends what is missing.
local function forget()
  order = nil
end

OnOrderCompleted = forget
OnOrderCancelled = forget
OnOrderRejected = forget
