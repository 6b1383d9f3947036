-- Buys below the lower Bollinger band, sells short above the upper one, and is out again at the middle.
--
--     algoserver run examples/bollinger.lua --data examples/data/demo_bars.csv.gz
--
-- Without a latency: one finer than the bars would only move fills from the open of the next bar to its close.
--
-- The bands are those of a tick data collection, which has each bar before its price is told. Over quotes and trades
-- (demo_quotes.csv.gz) the same script builds its bars from the trades.
--
-- Parameters: product, size (lots), bars (that the bands look back over), deviations, period.

local bars, bands, order, known = nil, nil, nil, 0

local function parameter(name, default)
    local value = job:getParameter(name)
    if value == nil then return default end
    return value
end

function OnInit()
    product = job:getProduct(parameter("product", "SIM"))
    size = parameter("size", 1)
    local length = parameter("bars", 20)
    bars = product:createTickDataCollection{period = parameter("period", "MINUTE"), ticks = length}
    bands = bars:createIndicator{name = "bands", type = "BOLLINGER", period = length, deviations = parameter("deviations", 2)}
    bars:subscribe()
    product:subscribePrice()
end

local function goTo(wanted)
    local volume = wanted - product.position.localNet
    if volume == 0 then return end
    order = product:createOrder{side = volume > 0 and "BUY" or "SELL", type = "MARKET"}
    order:work{volume = math.abs(volume)}
end

function OnPrice()
    if bars.count == known or order then return end
    known = bars.count
    local middle = bands:getValue("middle")
    if middle == nil then return end  -- too few bars so far
    local close, held = bars:get().close, product.position.localNet
    if close < bands:getValue("lower") then
        goTo(size)
    elseif close > bands:getValue("upper") then
        goTo(-size)
    elseif (held > 0 and close >= middle) or (held < 0 and close <= middle) then
        goTo(0)
    end
end

local function forget()
    order = nil
end

OnOrderCompleted = forget
OnOrderCancelled = forget
OnOrderRejected = forget
