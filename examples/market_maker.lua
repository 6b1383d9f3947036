-- Quotes both sides of a market and keeps its position small.
--
--     algoserver run examples/market_maker.lua --data examples/data/demo_quotes.csv.gz --latency 5ms --feed-latency 5ms
--
-- Parameters: product, size (lots of each quote), limit (most lots held, long or short), away (ticks behind
-- the best price).

local bid, ask  -- the orders that stand in the market, or are on their way

local function parameter(name, default)
    local value = job:getParameter(name)
    if value == nil then return default end
    return value
end

function OnInit()
    product = job:getProduct(parameter("product", "SIM"))
    size = parameter("size", 2)
    limit = parameter("limit", 10)
    away = parameter("away", 0) * product.tickSize
    product:subscribePrice()
end

-- Keeps one order of a side at that price; none for a volume of 0.
local function quote(order, side, price, volume)
    if order and order.state:isPendingCancel() then return order end
    if volume <= 0 or not price then
        if order then order:pull() end
        return order
    end
    if not order then
        order = product:createOrder{side = side, type = "LIMIT"}
        order:work{volume = volume, price = price}
    elseif order.price ~= price and not order.state:isPendingAmend() and not order.state:isPending() then
        order:work{price = price}
    end
    return order
end

local function requote(price)
    if not price.bidPrice or not price.askPrice then return end
    local position = product.position.localNet
    bid = quote(bid, "BUY", price.bidPrice - away, math.min(size, limit - position))
    ask = quote(ask, "SELL", price.askPrice + away, math.min(size, limit + position))
end

function OnPrice(price)
    requote(price)
end

-- Whatever ended is replaced with the next price.
local function forget(update)
    if bid and bid.id == update.id then bid = nil end
    if ask and ask.id == update.id then ask = nil end
end

OnOrderCompleted = forget
OnOrderCancelled = forget
OnOrderRejected = forget

function OnShutdown()
    local position = product.position
    job:logText(string.format("bought %d, sold %d, profit %.2f", position.localLong, position.localShort,
        product.totalPandL))
end
