-- Joins the opening in the direction in which the price moved before it, and is out again some minutes later.
-- Parameters: size (lots), reach (ticks beyond the last price that it pays at most), minutes (until it is out).

local product, size, reach, minutes
local first -- price of the data
local order, left

function OnInit()
  product = job:getProduct("NEAR")
  size = job:getParameter("size") or 20
  reach = job:getParameter("reach") or 2
  minutes = job:getParameter("minutes") or 10
  product:subscribePrice()
  product:subscribeState()
end

-- Before the opening the exchange takes OPEN and PREOPEN orders only.
function OnPrice(price)
  if not price:isLast() then return end
  first = first or price.lastPrice
  local moved = price.lastPrice - first
  if order or moved == 0 or product.state:isOpen() or not clock:isInRange("14:29:30", "14:29:59") then return end
  order = product:createOrder{side = moved > 0 and "BUY" or "SELL", type = "LIMIT", time = "OPEN"}
  local sign = moved > 0 and 1 or -1
  order:work{volume = size, price = price.lastPrice + sign * reach * product.tickSize}
  job:logText(string.format("moved by %+.2f: %s %d at %.2f", moved, order.side, size, order.price))
end

function OnProductState(state)
  job:logText(state:isOpen() and "the market is open" or "the market is closed")
  if state:isOpen() and order then job:startTimer("out", minutes * 60000) end
end

function OnTimer(name)
  job:stopTimer(name)
  local held = product.position.localNet
  if held == 0 then return end
  left = product:createOrder{side = held > 0 and "SELL" or "BUY", type = "MARKET"}
  left:work{volume = math.abs(held)}
end

function OnOrderFill(update)
  job:logText(string.format("%s %d at %.2f", update.side, update.fillVolume, update.fillPrice))
end

function OnOrderCancelled(update)
  job:logText(update.executed .. " of " .. update.volume .. " got into the opening")
end

function OnOrderRejected(update)
  job:logText("refused: " .. update.error)
end
