-- Trades the difference of two futures as one product, on the prices that its legs imply: buys the spread when it is
-- cheap against its own slow average, sells it when it is dear, and is flat again at the average.
--
--     algoserver run examples/spread.lua --data examples/data/calendar_quotes.csv.gz --products examples/products.toml \
--         --latency 5ms --feed-latency 5ms
--
-- Parameters: product, size (lots), edge (how far from the average, in ticks) and length (prices in the average).

local average, count = nil, 0
local order  -- the one that is under way

local function parameter(name, default)
    local value = job:getParameter(name)
    if value == nil then return default end
    return value
end

function OnInit()
    spread = job:getProduct(parameter("product", "FAR-NEAR"))
    size = parameter("size", 2)
    edge = parameter("edge", 3) * spread.tickSize
    length = parameter("length", 500)
    for i = 1, spread.noLegs do
        job:logText(string.format("leg %d: %s %s, %g lots", i, spread:getLegSide(i), spread:getLeg(i).name,
                                  spread:getLegTradeRatio(i)))
    end
    spread:subscribePrice()
end

-- Takes what the legs show now, and no more.
local function trade(side, volume, price)
    order = spread:createOrder{side = side, type = "LIMIT", exec = "IOC", spreadSpec = "implied"}
    order:work{volume = volume, price = price}
end

function OnPrice(price)
    local bid, ask = price.impliedBidPrice, price.impliedAskPrice
    if bid == nil or ask == nil then return end
    local middle = (bid + ask) / 2
    average = average and average + (middle - average) * 2 / (length + 1) or middle
    count = count + 1
    if count < length or order then return end

    local position = spread.position.localNet
    if position == 0 and ask <= average - edge then
        trade("BUY", size, ask)
    elseif position == 0 and bid >= average + edge then
        trade("SELL", size, bid)
    elseif position > 0 and bid >= average then
        trade("SELL", position, bid)
    elseif position < 0 and ask <= average then
        trade("BUY", -position, ask)
    end
end

function OnOrderFill(update)
    job:logText(string.format("%s %d at %.2f, average %.2f", order.side, update.fillVolume, update.fillPrice, average))
end

local function forget()
    order = nil
end

OnOrderCompleted = forget
OnOrderCancelled = forget
OnOrderRejected = forget

function OnShutdown()
    job:logText(string.format("profit %.2f", spread.totalPandL))
end
