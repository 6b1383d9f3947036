-- Buys a large volume at one price and shows but a part of it; or all of it, for comparison.
-- Parameters: volume, peak (lots shown at a time), shown (true: all of it).

local product, volume, peak, shown
local order
local fills, turn, lastFill = 0, 0, "never"

function OnInit()
  product = job:getProduct("SIM")
  volume = job:getParameter("volume") or 1000
  peak = job:getParameter("peak") or 5
  shown = job:getParameter("shown")
  product:subscribePrice()
end

function OnPrice(price)
  if order or not price.bidPrice then return end
  if shown then
    order = product:createOrder{side = "BUY", type = "LIMIT"}
    order:work{volume = volume, price = price.bidPrice}
  else -- peaks of peak to 2 * peak lots, drawn by lot, so that they are not all alike
    order = product:createOrder{side = "BUY", type = "LIMIT", exec = "ICEBERG"}
    order:work{volume = volume, price = price.bidPrice, icebergMinPeakSize = peak, icebergMaxPeakSize = 2 * peak}
  end
end

function OnOrderFill(update)
  fills = fills + 1
  lastFill = date:getAsDate(clock.totalSeconds)
  local quarter = math.floor(4 * update.executed / update.volume)
  if quarter > turn then
    turn = quarter
    job:logText(string.format("%d of %d are bought", update.executed, update.volume))
  end
end

function OnOrderRejected(update)
  job:logText("refused: " .. update.error)
end

function OnShutdown()
  if not order then return end -- the market never showed a bid
  job:logText(string.format("%d of %d at %.2f in %d fills, the last at %s", order.executed, order.volume, order.price, fills,
    lastFill))
end
