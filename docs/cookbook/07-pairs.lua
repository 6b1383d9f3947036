-- Sells the dear one of two products and buys the cheap one, when their difference is far from its mean of late.
-- Parameters: length (seconds that the mean looks back over), far (standard deviations), size (lots).

local near, far, size, threshold
local differences
local wanted = 0 -- lots of FAR; of NEAR as many the other way
local orders = {} -- by the id of the product

function OnInit()
  near, far = job:getProduct("NEAR"), job:getProduct("FAR")
  size = job:getParameter("size") or 2
  threshold = job:getParameter("far") or 2
  differences = job:createDataSeries()
  differences.capacity = job:getParameter("length") or 900
  job:startTimer("look", 1000)
end

local function middle(product)
  local price = product.price
  return price.bidPrice and price.askPrice and (price.bidPrice + price.askPrice) / 2
end

-- Each leg goes to its own target by itself, so a leg that was filled in part, or not at all, is mended the next second.
local function go(product, target)
  local missing = target - product.position.localNet
  if missing == 0 or orders[product.id] then return end
  local order = product:createOrder{side = missing > 0 and "BUY" or "SELL", type = "MARKET"}
  orders[product.id] = order
  order:work{volume = math.abs(missing)}
end

function OnTimer()
  local one, other = middle(near), middle(far)
  if not one or not other or not near.state:isOpen() or not far.state:isOpen() then return end
  local difference = other - one
  differences:add(clock.totalSeconds, difference)
  if differences.size < differences.capacity then return end
  local _, mean = differences:average()
  local _, deviation = differences:stddev()
  local score = deviation > 0 and (difference - mean) / deviation or 0
  if score > threshold then wanted = -size
  elseif score < -threshold then wanted = size
  elseif score * wanted >= 0 then wanted = 0 end -- back at the mean
  go(far, wanted)
  go(near, -wanted)
end

local function forget(update) orders[update.order.product.id] = nil end

OnOrderCompleted, OnOrderCancelled, OnOrderRejected = forget, forget, forget

function OnShutdown()
  job:logText(string.format("NEAR %+d, FAR %+d, profit %.2f and %.2f", near.position.localNet, far.position.localNet,
    near.totalPandL, far.totalPandL))
end
