-- Buys after three falling trades in a row, and writes down why, so that the record can be read afterwards.
-- Parameters: size (lots), hold (seconds).

local product, size, hold
local last, falls = nil, 0
local order

function OnInit()
  product = job:getProduct("SIM")
  size = job:getParameter("size") or 2
  hold = job:getParameter("hold") or 120
  product:subscribePrice()
end

local function send(side, volume, type, price, why)
  order = product:createOrder{side = side, type = type}
  order.reference = why
  order:work{volume = volume, price = price}
  job:sendUserLog{order = order.id, why = why, falls = falls, position = product.position.localNet}
end

function OnPrice(price)
  if not price:isLast() then return end
  falls = last and price.lastPrice < last and falls + 1 or 0
  last = price.lastPrice
  if falls >= 3 and not order and product.position.localNet == 0 and price.bidPrice then
    send("BUY", size, "LIMIT", price.bidPrice, "three falls")
    job:startTimer("hold", hold * 1000)
  end
end

-- What was not bought by then is pulled; what was, is sold once the order is over.
function OnTimer()
  if order and order.side == "BUY" then
    if order.state:isWorking() and not order.state:isPendingCancel() then order:pull() end
  elseif not order and product.position.localNet > 0 then
    send("SELL", product.position.localNet, "MARKET", nil, "time is up")
  end
end

local function over(update)
  order = nil
  if update.side == "SELL" or update.executed == 0 then job:stopTimer("hold") end
end

OnOrderCompleted, OnOrderCancelled, OnOrderRejected = over, over, over

-- The script's own view of what it did; the record has that of the exchange.
function OnShutdown()
  local orders, counts = job:getJobOrders(), {}
  for i = 1, orders.count do
    local one = orders:getOrder(i)
    local how = one.reference .. ": " .. (one.executed == one.volume and "filled" or one.executed > 0 and "in part" or "not filled")
    counts[how] = (counts[how] or 0) + 1
  end
  for _, how in ipairs{"three falls: filled", "three falls: in part", "three falls: not filled", "time is up: filled"} do
    job:logText(how .. " " .. (counts[how] or 0) .. " times")
  end
end
