-- Is long while the bars close above their mean, else flat: one order a bar at most.
--
-- Parameters: product, size (lots), length (bars of the mean).

---@type algo.product, algo.tickDataCollection, algo.indicator
local product, bars, mean
local size
local seen = 0 -- bars so far
local order -- the one that is under way

local function parameter(name, default)
  local value = job:getParameter(name)
  if value == nil then return default end
  return value
end

function OnInit()
  product = job:getProduct(parameter("product", "SIM"))
  size = parameter("size", 1)
  local length = parameter("length", 10)
  bars = product:createTickDataCollection{ period = "MINUTE", ticks = length }
  mean = bars:createIndicator{ name = "mean", type = "SMA", period = length }
  bars:subscribe()
  product:subscribePrice()
end

function OnPrice()
  if bars.count == seen or order then return end
  seen = bars.count
  local average = mean:getValue("value")
  if average == nil then return end -- too few bars so far
  local wanted = bars:get().close > average and size or 0
  local volume = wanted - product.position.localNet
  if volume == 0 then return end
  order = product:createOrder{ side = volume > 0 and "BUY" or "SELL", type = "MARKET" }
  order:work{ volume = math.abs(volume) }
end

---@param update algo.orderUpdate
function OnOrderFill(update)
  job:logText(("%s %d at %.2f"):format(update.side, update.fillVolume, update.fillPrice))
end

local function forget()
  order = nil
end

OnOrderCompleted = forget
OnOrderCancelled = forget
OnOrderRejected = forget
