-- Holds the same money in each of several products, and trades back to that every half hour.
-- Parameters: products (names with blanks between), money (in each), band (the part of it that is left alone).

local products, money, band = {}, nil, nil
local orders = {} -- by the id of the product

function OnInit()
  for name in (job:getParameter("products") or "A B C"):gmatch("%S+") do
    local product = job:getProduct(name)
    product:subscribePrice()
    products[#products + 1] = product
  end
  money = job:getParameter("money") or 10000
  band = job:getParameter("band") or 0.001
  job:startTimer("balance", 1800000)
end

-- A long position is worth what it can be sold for.
local function balance(product)
  local price = product.price.bidPrice
  if not price or orders[product.id] then return end
  local worth = price * (product.pointValue or 1)
  local held = product.position.localNet
  local missing = round(money / worth) - held
  if missing == 0 or math.abs(money - held * worth) <= band * money then return end
  local order = product:createOrder{side = missing > 0 and "BUY" or "SELL", type = "MARKET"}
  orders[product.id] = order
  order:work{volume = math.abs(missing)}
end

function OnTimer()
  for _, product in ipairs(products) do balance(product) end
end

function OnOrderCompleted(update)
  orders[update.order.product.id] = nil
  job:logText(string.format("%s %s %d at %.4f, %d held", update.order.product.name, update.side, update.executed,
    update.order.averagePrice, update.order.product.position.localNet))
end

local function forget(update) orders[update.order.product.id] = nil end

OnOrderCancelled, OnOrderRejected = forget, forget

function OnShutdown()
  for _, product in ipairs(products) do
    local position = product.position
    job:logText(string.format("%s: %d held, profit %.2f", product.name, position.localNet, product.totalPandL))
  end
end
