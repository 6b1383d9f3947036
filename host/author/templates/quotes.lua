-- Goes with the heavier side of the best quote: buys when the bid holds far more than the ask, sells when it holds far
-- less, and is flat again after a while.
--
-- Parameters: product, size (lots), weight (how many times the other side), hold (seconds).

---@type algo.product
local product
local size, weight, hold
local order -- the one that is under way

local function parameter(name, default)
  local value = job:getParameter(name)
  if value == nil then return default end
  return value
end

function OnInit()
  product = job:getProduct(parameter("product", "SIM"))
  size = parameter("size", 1)
  weight = parameter("weight", 6)
  hold = parameter("hold", 30)
  product:subscribePrice()
end

local function trade(side, volume)
  order = product:createOrder{ side = side, type = "MARKET" }
  order:work{ volume = volume }
end

---@param price algo.price
function OnPrice(price)
  local bid, ask = price.bidVolume, price.askVolume
  if not bid or not ask then return end -- a side that is empty
  if order or product.position.localNet ~= 0 then return end
  if bid > ask * weight then
    trade("BUY", size)
  elseif ask > bid * weight then
    trade("SELL", size)
  end
end

function OnTimer()
  job:stopTimer("leave")
  local position = product.position.localNet
  if position ~= 0 and not order then trade(position > 0 and "SELL" or "BUY", math.abs(position)) end
end

---@param update algo.orderUpdate
function OnOrderFill(update)
  job:logText(("%s %d at %.2f"):format(update.side, update.fillVolume, update.fillPrice))
  if product.position.localNet ~= 0 then job:startTimer("leave", hold * 1000) end
end

local function forget()
  order = nil
end

OnOrderCompleted = forget
OnOrderCancelled = forget
OnOrderRejected = forget
