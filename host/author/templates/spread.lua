-- Trades the difference of two products as one, on the prices that its legs imply: buys it when it is cheap against its own
-- slow average, sells it when it is dear, and is flat again at the average. products.toml says which legs it has.
--
-- Parameters: product, size (lots), edge (ticks from the average), length (prices in the average).

---@type algo.product
local spread
local size, edge, length
local average, count = nil, 0
local order -- the one that is under way

local function parameter(name, default)
  local value = job:getParameter(name)
  if value == nil then return default end
  return value
end

function OnInit()
  spread = job:getProduct(parameter("product", "FAR-NEAR"))
  size = parameter("size", 1)
  edge = parameter("edge", 3) * spread.tickSize
  length = parameter("length", 200)
  spread:subscribePrice()
end

-- Takes what the legs show now, and no more.
local function trade(side, volume, price)
  order = spread:createOrder{ side = side, type = "LIMIT", exec = "IOC" }
  order:work{ volume = volume, price = price }
end

---@param price algo.price
function OnPrice(price)
  local bid, ask = price.impliedBidPrice, price.impliedAskPrice
  if not bid or not ask then return end -- a leg without a quote
  local middle = (bid + ask) / 2
  average = average and average + (middle - average) * 2 / (length + 1) or middle
  count = count + 1
  if count < length or order then return end

  local position = spread.position.localNet
  if position == 0 and ask <= average - edge then
    trade("BUY", size, ask)
  elseif position == 0 and bid >= average + edge then
    trade("SELL", size, bid)
  elseif position > 0 and bid >= average then
    trade("SELL", position, bid)
  elseif position < 0 and ask <= average then
    trade("BUY", -position, ask)
  end
end

---@param update algo.orderUpdate
function OnOrderFill(update)
  job:logText(("%s %d at %.2f"):format(update.side, update.fillVolume, update.fillPrice))
end

local function forget()
  order = nil
end

OnOrderCompleted = forget
OnOrderCancelled = forget
OnOrderRejected = forget
