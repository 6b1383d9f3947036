-- Holds a fixed volume of a product, long while a fast average of its prices is above a slow one, else short.
--
--     algoserver run examples/moving_average.lua --data examples/data/demo_quotes.csv.gz --latency 5ms --feed-latency 5ms
--
-- Parameters: product, size (lots), fast and slow (trades or bars that each average looks back over).

local fast, slow, count = nil, nil, 0
local order  -- the one that is under way

local function parameter(name, default)
    local value = job:getParameter(name)
    if value == nil then return default end
    return value
end

function OnInit()
    product = job:getProduct(parameter("product", "SIM"))
    size = parameter("size", 1)
    fastLength = parameter("fast", 200)
    slowLength = parameter("slow", 1000)
    product:subscribePrice()
end

local function follow(average, price, length)
    return average and average + (price - average) * 2 / (length + 1) or price
end

function OnPrice(price)
    if not price:isLast() then return end
    local last = price.lastPrice
    fast = follow(fast, last, fastLength)
    slow = follow(slow, last, slowLength)
    count = count + 1
    if count < slowLength or order then return end

    local wanted = fast > slow and size or -size
    local volume = wanted - product.position.localNet
    if volume == 0 then return end
    order = product:createOrder{side = volume > 0 and "BUY" or "SELL", type = "MARKET"}
    order:work{volume = math.abs(volume)}
end

local function forget()
    order = nil
end

OnOrderCompleted = forget
OnOrderCancelled = forget
OnOrderRejected = forget
