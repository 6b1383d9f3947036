-- Reads the bid and the ask of each price, run by tools/measure_road over algoserver and over nothing.

local read = 0

function OnInit()
    job:getProduct("SIM"):subscribePrice()
end

function OnPrice(price)
    local bid, ask = price.bidPrice, price.askPrice
    if bid and ask then read = read + 1 end
end

function OnShutdown()
    local text = "quotes " .. read
    if job then job:logText(text) end
    return text
end
