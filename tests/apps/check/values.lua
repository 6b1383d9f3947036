-- What is given, calculated and compared: through locals, functions of the script, and properties.
local function middle(price)
  return (price.bidPrice + price.askPrice) / 2
end
local function send(product, limit)
  product:createOrder{ side = "BUY", type = "LIMIT" }:work{ volume = 1, price = limit }
end

function OnInit()
  local product, limit, wait = job:getProduct("A"), "abc", true
  product:subscribePrice()
  job:startTimer("look", wait)
  job:startTimer(product, "5s")
  product:setFlattenOnExit("yes")
  job:logText({ 1 })
  job:setReference(nil)
  send(product, limit)
  product:createTradeWindow("300", "60"):start() -- texts of numbers will do
end

function OnPrice(price)
  if not price.bidPrice or not price.askPrice then return end
  local product = job:getProduct("A")
  job:logText("at " .. price .. (price:isLast() .. ""))
  local held = product.position
  if held > 0 or price.bidPrice > "100" then return end
  local limit = middle(price)
  if limit == price.bidPrice or price.bidPrice ~= price.askPrice - product.tickSize then return end
  if price.askPrice - price.bidPrice == 0 or limit == round(limit, 2) then return end
  product:createOrder("BUY", "LIMIT"):work{ volume = product, price = limit }
end

function OnTimer(name)
  if name == 5 or job:getProduct("A").price.lastBuySell == "Buy" then job:shutdown() end
end

function OnOrderFill(update)
  if update.order == order or update.order.id == order.id then order = update.order end
end
