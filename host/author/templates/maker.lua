-- Quotes both sides of a market and keeps its position small.
--
-- Parameters: product, size (lots of each quote), limit (most lots held, long or short), away (ticks outside of the best
-- price).

---@type algo.product
local product
local size, limit, away
---@type algo.order?, algo.order?
local bid, ask -- the orders that stand in the market, or are on their way

local function parameter(name, default)
  local value = job:getParameter(name)
  if value == nil then return default end
  return value
end

function OnInit()
  product = job:getProduct(parameter("product", "SIM"))
  size = parameter("size", 1)
  limit = parameter("limit", 5)
  away = parameter("away", 0) * product.tickSize
  product:subscribePrice()
end

-- Keeps one order of a side at that price; none for a volume of 0.
local function quote(order, side, price, volume)
  if order and order.state:isPendingCancel() then return order end
  if volume <= 0 then
    if order then order:pull() end
    return order
  end
  if not order then
    order = product:createOrder{ side = side, type = "LIMIT" }
    order:work{ volume = volume, price = price }
  elseif math.abs(order.price - price) > product.tickSize / 2 and order.state:isWorking()
    and not order.state:isPendingAmend() then
    order:work{ price = price }
  end
  return order
end

---@param price algo.price
function OnPrice(price)
  if not price.bidPrice or not price.askPrice then return end -- a side that is empty
  local position = product.position.localNet
  bid = quote(bid, "BUY", price.bidPrice - away, math.min(size, limit - position))
  ask = quote(ask, "SELL", price.askPrice + away, math.min(size, limit + position))
end

-- Whatever ended is replaced with the next price.
---@param update algo.orderUpdate
local function forget(update)
  if bid and bid.id == update.id then bid = nil end
  if ask and ask.id == update.id then ask = nil end
end

OnOrderCompleted = forget
OnOrderCancelled = forget
OnOrderRejected = forget

function OnShutdown()
  local position = product.position
  job:logText(("bought %d, sold %d, profit %.2f"):format(position.localLong, position.localShort, product.totalPandL))
end
