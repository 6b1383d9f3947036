-- Rests buys below and sells above the first price, a step apart; what is filled is offered again one step back.
-- Parameters: step (ticks), levels (on each side), size (lots of a level).

local product, step, levels, size
local centre
local trips = 0 -- lots that were bought and sold a step apart

function OnInit()
  product = job:getProduct("SIM")
  step = job:getParameter("step") or 5
  levels = job:getParameter("levels") or 6
  size = job:getParameter("size") or 2
  product:setFlattenOnExit(true) -- where another job stops this one
  product:subscribePrice()
end

-- A level is a number of steps from the centre; the order carries it in its reference.
local function rest(side, level, volume, closes)
  local order = product:createOrder{side = side, type = "LIMIT"}
  order.reference = level .. (closes and " closes" or "")
  order:work{volume = volume, price = centre + level * step * product.tickSize}
end

function OnPrice(price)
  if centre or not price.bidPrice or not price.askPrice then return end
  centre = round((price.bidPrice + price.askPrice) / 2 / product.tickSize) * product.tickSize
  for level = 1, levels do
    rest("BUY", -level, size)
    rest("SELL", level, size)
  end
end

-- Each fill, whole or in part, is answered with exactly its volume.
function OnOrderFill(update)
  local level = tonumber(update.reference:match("^%S+"))
  local closes = update.reference:find("closes", 1, true)
  job:setOutputParameter("profit", product.totalPandL) -- for a job that watches this one
  if closes then trips = trips + update.fillVolume end
  if update.side == "BUY" then
    rest("SELL", level + 1, update.fillVolume, not closes)
  else
    rest("BUY", level - 1, update.fillVolume, not closes)
  end
end

function OnOrderCancelled(update)
  job:logText(string.format("%s %d at %.2f ended: %s", update.side, update.volume, update.price, update.error))
end

OnOrderRejected = OnOrderCancelled

function OnShutdown()
  job:logText(string.format("%d lots went to and fro, %+d are held, profit %.2f", trips, product.position.localNet,
    product.totalPandL))
end
