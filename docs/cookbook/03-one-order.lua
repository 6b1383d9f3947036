-- Buys 40 lots at the bid, with one order in the market at a time: the next one is sent when the last one is over.
-- Parameters: target (lots), clip (lots of an order), patience (seconds before an order is pulled and joins a better bid).

local product, target, clip, patience
local order -- the one that is under way: from createOrder until an update says that it is over

function OnInit()
  product = job:getProduct("SIM")
  target = job:getParameter("target") or 40
  clip = job:getParameter("clip") or 10
  patience = job:getParameter("patience") or 60
  product:subscribePrice()
end

function OnPrice(price)
  local missing = target - product.position.localNet
  if order or missing <= 0 or not price.bidPrice then return end
  order = product:createOrder{side = "BUY", type = "LIMIT"}
  order:work{volume = math.min(clip, missing), price = price.bidPrice}
  job:startTimer("patience", patience * 1000)
end

-- It may be filled while the pull is on its way: only the answer tells, so the order is not forgotten here.
function OnTimer()
  if order and order.state:isWorking() and not order.state:isPendingCancel() then order:pull() end
end

local function over(update, how)
  local at = order.averagePrice and " at " .. order.averagePrice or "" -- nil of an order that got nothing
  job:logText(string.format("order %d is %s: %d of %d%s, %d held", update.id, how, update.executed, update.volume, at,
    product.position.localNet))
  job:stopTimer("patience")
  order = nil
  if product.position.localNet >= target then job:shutdown() end
end

function OnOrderCompleted(update) over(update, "filled") end
function OnOrderCancelled(update) over(update, "pulled") end
function OnOrderRejected(update) over(update, "refused, " .. update.error) end
