-- Quotes both sides around a price that leans against the position, so that what is held is sold sooner than added to.
-- Parameters: size (lots of a quote), limit (most lots held), half (ticks from the middle), lean (ticks for each lot held).

local product, size, limit, half, lean
local quotes = {} -- the orders in the market or on their way, by side

function OnInit()
  product = job:getProduct("SIM")
  size = job:getParameter("size") or 2
  limit = job:getParameter("limit") or 10
  half = job:getParameter("half") or 2
  lean = job:getParameter("lean") or 0.5
  product:setFlattenOnExit(true) -- where another job stops this one
  product:subscribePrice()
end

-- Keeps one order of a side at that price. An own quote never takes: a price that would cross stays at the best one.
local function quote(side, price, volume)
  local order = quotes[side]
  if not order then
    if volume <= 0 then return end
    quotes[side] = product:createOrder{side = side, type = "LIMIT"}
    quotes[side]:work{price = price, volume = volume}
  elseif order.state:isPending() or order.state:isPendingAmend() or order.state:isPendingCancel() then
    return -- the answer comes first
  elseif order.working > volume then
    order:pull()
  elseif math.abs(order.price - price) > product.tickSize / 2 then
    order:work{price = price} -- in ticks: doubles of one price may differ in their last digit
  end
end

function OnPrice(price)
  local bid, ask, tick, held = price.bidPrice, price.askPrice, product.tickSize, product.position.localNet
  if not bid or not ask then return end
  local fair = (bid + ask) / 2 - held * lean * tick
  local buy, sell = math.floor(fair / tick - half + 0.5) * tick, math.ceil(fair / tick + half - 0.5) * tick
  quote("BUY", math.min(buy, bid), math.min(size, limit - held))
  quote("SELL", math.max(sell, ask), math.min(size, limit + held))
end

function OnOrderFill()
  job:setOutputParameter("profit", product.totalPandL) -- for a job that watches this one
end

local function forget(update)
  if quotes[update.side] and quotes[update.side].id == update.id then quotes[update.side] = nil end
end

OnOrderCompleted, OnOrderCancelled, OnOrderRejected = forget, forget, forget

function OnShutdown()
  local position = product.position
  job:logText(string.format("bought %d, sold %d, profit %.2f", position.localLong, position.localShort, product.totalPandL))
end
