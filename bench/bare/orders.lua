-- A crossover of two averages that the script adds up itself, with a market order at each crossing, run by
-- tools/measure_road over algoserver and, with a product that only counts, over nothing.

local closes, place, count = {}, 0, 0
local fast, slow = 0, 0
local above
local orders = 0

function OnInit()
    product = job:getProduct("SIM")
    product:subscribePrice()
end

function OnPrice(price)
    local close = price.lastPrice
    fast = fast + close - (closes[(place + 20) % 30] or 0)
    slow = slow + close - (closes[place] or 0)
    closes[place] = close
    place = (place + 1) % 30
    count = count + 1
    if count < 30 then return end
    local now = fast * 3 > slow
    if above ~= nil and now ~= above then
        orders = orders + 1
        product:createOrder{side = now and "BUY" or "SELL", type = "MARKET"}:work{volume = 1}
    end
    above = now
end

function OnShutdown()
    local text = "orders " .. orders
    if job then job:logText(text) end
    return text
end
