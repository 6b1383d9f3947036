-- Keeps a bid some ticks below the best one, and amends it only where the price that it wants has moved far enough.
-- Parameters: away (ticks below the best bid), step (ticks that are worth a request), size (lots).

local product, away, step, size
local order
local prices, requests = 0, 0

function OnInit()
  product = job:getProduct("SIM")
  away = job:getParameter("away") or 4
  step = job:getParameter("step") or 2
  size = job:getParameter("size") or 2
  product:subscribePrice()
end

local function send(request)
  requests = requests + 1
  order:work(request)
end

-- Prices are compared in ticks: two doubles of one price may differ in their last digit.
local function distance(a, b)
  return math.abs(round((a - b) / product.tickSize))
end

function OnPrice(price)
  prices = prices + 1
  if not price.bidPrice then return end
  local wanted = price.bidPrice - away * product.tickSize
  if not order then
    order = product:createOrder{side = "BUY", type = "LIMIT"}
    send{volume = size, price = wanted}
  elseif not order.state:isPending() and not order.state:isPendingAmend() and distance(order.price, wanted) >= step then
    send{price = wanted}
  end
end

function OnOrderFill(update)
  job:logText(string.format("bought %d at %.2f", update.fillVolume, update.fillPrice))
end

local function forget()
  order = nil
end

OnOrderCompleted = forget
OnOrderCancelled = forget
OnOrderRejected = forget

function OnShutdown()
  job:logText(prices .. " prices, " .. requests .. " requests, " .. product.position.localNet .. " held")
end
