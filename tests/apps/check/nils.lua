-- What the market need not have.
local product
local function spread(price) -- whoever calls may have looked
  return price.askPrice - price.bidPrice
end

function OnInit()
  product = job:getProduct("A")
  product:subscribePrice()
  product:subscribePositions()
  away = 2 * product.tickSize -- known from the start, or never
end

function OnPrice(price)
  local last, volume = price.lastPrice, price.bidVolume
  if price.askPrice > 100 then away = last + away end
  job:logText("bid " .. price.bidPrice)
  if volume and price.bidPrice * volume > 0 then job:logText(tostring(last)) end
  if not price:isLast() then return end
  job:logText(price.lastPrice + last + spread(price))
end

function OnPosition(position)
  local bought = position.localAverageBuyPrice + 1
  if position.localNet > 0 then bought = bought + position.openAveragePrice end
  -- check: ignore 312 the run begins with a price
  job:logText(bought + product.price.lastPrice)
  job:logText(product.price.high + 1) -- check: ignore 311
  assert(product.price.low)
  job:logText(product.price.low + 1)
end
