-- Buys on one of two markets and sells the same on the other where these cross, and mends a leg that was missed.
-- Parameters: one, other (products), edge (ticks that are worth it), size, limit (lots held on either at most).

local one, other, edge, size, limit
local orders, mended = {}, 0 -- orders under way by the id of the product; lots of legs that were mended
local taken = {BUY = {}, SELL = {}} -- the price that was taken last, by side and the id of the product

function OnInit()
  one, other = job:getProduct(job:getParameter("one") or "A"), job:getProduct(job:getParameter("other") or "B")
  edge = (job:getParameter("edge") or 2) * one.tickSize
  size, limit = job:getParameter("size") or 5, job:getParameter("limit") or 20
  one:subscribePrice()
  other:subscribePrice()
end

local function send(product, side, volume, price)
  local order = product:createOrder{side = side, type = price and "LIMIT" or "MARKET", exec = price and "IOC" or nil}
  orders[product.id], taken[side][product.id] = order, price
  order:work{volume = volume, price = price}
end

-- What an order took stays in the recorded rows, so a price is taken once, until the market shows another one.
local function getVolume(product, side, price, volume)
  if price ~= taken[side][product.id] then taken[side][product.id] = nil end
  return price and not taken[side][product.id] and volume or 0
end

local function getLots(cheap, dear)
  local ask, bid = cheap.price, dear.price
  local lots = math.min(getVolume(cheap, "BUY", ask.askPrice, ask.askVolume), getVolume(dear, "SELL", bid.bidPrice, bid.bidVolume))
  if lots == 0 or bid.bidPrice - ask.askPrice < edge - one.tickSize / 2 then return 0 end
  return math.min(lots, size, limit - cheap.position.localNet, limit + dear.position.localNet)
end

function OnPrice()
  if next(orders) then return end
  local net = one.position.localNet + other.position.localNet
  if net ~= 0 then -- one leg got more than the other: the surplus is taken back where more is held
    local product = math.abs(one.position.localNet) > math.abs(other.position.localNet) and one or other
    mended = mended + math.abs(net)
    return send(product, net > 0 and "SELL" or "BUY", math.abs(net))
  end
  for _, pair in ipairs{{one, other}, {other, one}} do
    local lots = getLots(pair[1], pair[2])
    if lots > 0 then
      send(pair[1], "BUY", lots, pair[1].price.askPrice)
      return send(pair[2], "SELL", lots, pair[2].price.bidPrice)
    end
  end
end

local function forget(update) orders[update.order.product.id] = nil end
OnOrderCompleted, OnOrderCancelled, OnOrderRejected = forget, forget, forget

function OnShutdown()
  job:logText(string.format("%s %+d, %s %+d, lots of missed legs that were mended: %d, profit %.2f", one.name, one.position.localNet,
    other.name, other.position.localNet, mended, one.totalPandL + other.totalPandL))
end
