-- Remembers the range of each day in a data store, and buys above, or sells below, that of the last day it has seen.
-- Parameters: size (lots). It needs a store: run it with --store.

local product, store, size
local above, below -- the range of the day before
local high, low    -- of this one
local order

function OnInit()
  store = job:getDataStore("ranges", true)
  if not store then error("this script needs --store DIR") end
  product = job:getProduct("SIM")
  size = job:getParameter("size") or 1
  if store.count > 0 then -- a row holds texts: day, high, low
    local day, lastHigh, lastLow = store:get(store.count)
    above, below = tonumber(lastHigh), tonumber(lastLow)
    job:logText(string.format("%s went from %.2f to %.2f", day, below, above))
  else
    job:logText("nothing is remembered, so this day is only watched")
  end
  product:setFlattenOnExit(true) -- what is remembered is the range, not a position
  product:subscribePrice()
end

local function goTo(wanted)
  local missing = wanted - product.position.localNet
  if missing == 0 or order then return end
  order = product:createOrder{side = missing > 0 and "BUY" or "SELL", type = "MARKET"}
  order:work{volume = math.abs(missing)}
end

function OnPrice(price)
  if not price:isLast() then return end
  high = math.max(high or price.lastPrice, price.lastPrice)
  low = math.min(low or price.lastPrice, price.lastPrice)
  if not above then return end
  if price.lastPrice > above then goTo(size) end
  if price.lastPrice < below then goTo(-size) end
end

function OnOrderFill(update)
  job:logText(string.format("%s %d at %.2f", update.side, update.fillVolume, update.fillPrice))
end

local function forget() order = nil end

OnOrderCompleted, OnOrderCancelled, OnOrderRejected = forget, forget, forget

-- The stores are saved after this.
function OnShutdown()
  if high then store:add(date:getAsDate(clock.totalSeconds):sub(1, 8), high, low) end
end
