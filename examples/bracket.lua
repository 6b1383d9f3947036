-- Buys now and then, each time with a target and a stop that take each other away.
--
--     algoserver run examples/bracket.lua --data examples/data/demo_quotes.csv.gz --latency 5ms --feed-latency 5ms
--
-- Parameters: product, size (lots), profit and stop (ticks from the price of the fill), every (seconds).

local function parameter(name, default)
    local value = job:getParameter(name)
    if value == nil then return default end
    return value
end

function OnInit()
    product = job:getProduct(parameter("product", "SIM"))
    size = parameter("size", 1)
    profit = parameter("profit", 10)
    stop = parameter("stop", 5)
    product:subscribePrice()
    job:startTimer("enter", parameter("every", 3600) * 1000)
end

function OnTimer()
    if product.position.localNet ~= 0 then return end
    local order = product:createOrder{side = "BUY", type = "MARKET", exec = "BRACKET"}
    order:work{volume = size, bracketProfit = profit, bracketStopLoss = stop}
end

function OnOrderNew(order)
    order.reference = order.stopPrice and "stop" or "target"
end

function OnOrderFill(update)
    local what = update.reference == "" and "entry" or update.reference
    job:logText(string.format("%s: %s %d at %.2f", what, update.side, update.fillVolume, update.fillPrice))
end

function OnOrderRejected(update)
    job:logText("rejected: " .. update.error)
end
