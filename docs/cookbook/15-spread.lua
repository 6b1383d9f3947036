-- Trades a spread by its legs: rests in the first leg at the price that makes the spread worth it, and does the others at
-- once when it is filled there. Parameters: spread (a strategy), buy and sell (its prices), size, limit (lots of it held).

local spread, legs, prices, size, limit = nil, {}, nil, nil, nil
local quotes = {} -- orders in the first leg, by side
local Opposite = {BUY = "SELL", SELL = "BUY"}

function OnInit()
  spread = job:getProduct(job:getParameter("spread") or "FAR-NEAR")
  prices = {BUY = job:getParameter("buy") or 1.0, SELL = job:getParameter("sell") or 2.0}
  size, limit = job:getParameter("size") or 2, job:getParameter("limit") or 6
  for i = 1, spread.noLegs do
    legs[i] = {product = spread:getLeg(i), side = spread:getLegSide(i), lots = spread:getLegTradeRatio(i)}
  end
  if #legs == 0 then return job:logText(spread.name .. " has no legs: describe it in the file of --products") end
  spread:subscribePrice()
end

-- All legs but the first cost what the spread's implied price has beside the first leg's own.
local function quote(side, implied, own, room)
  local order, price, volume = quotes[side], prices[side] - (implied - own), math.min(size, room) * legs[1].lots
  if not order then
    if volume <= 0 then return end
    order = legs[1].product:createOrder{side = side, type = "LIMIT"}
    quotes[side] = order
    order:work{volume = volume, price = price}
  elseif order.state:isPending() or order.state:isPendingAmend() or order.state:isPendingCancel() then
    return -- the answer comes first
  elseif order.working > volume then
    order:pull()
  elseif math.abs(order.price - price) > legs[1].product.tickSize / 2 then
    order:work{price = price}
  end
end

function OnPrice(price)
  local leg = legs[1].product.price
  local held = legs[1].product.position.localNet / legs[1].lots
  if price.impliedAskPrice and leg.askPrice then quote("BUY", price.impliedAskPrice, leg.askPrice, limit - held) end
  if price.impliedBidPrice and leg.bidPrice then quote("SELL", price.impliedBidPrice, leg.bidPrice, limit + held) end
end

function OnOrderFill(update)
  local product = update.order.product
  job:logText(string.format("%s %d %s at %.2f", update.side, update.fillVolume, product.name, update.fillPrice))
  if product.id ~= legs[1].product.id then return end
  for i = 2, #legs do
    local side = update.side == legs[1].side and legs[i].side or Opposite[legs[i].side]
    legs[i].product:createOrder{side = side, type = "MARKET"}:work{volume = update.fillVolume * legs[i].lots / legs[1].lots}
  end
end

local function forget(update)
  if quotes[update.side] and quotes[update.side].id == update.id then quotes[update.side] = nil end
end

OnOrderCompleted, OnOrderCancelled, OnOrderRejected = forget, forget, forget
