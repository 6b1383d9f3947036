-- A crossover of two averages over a product's bars, run by tools/measure_road over algoserver and, with the
-- averages as globals, over nothing.

local crossings = 0
local above

function OnInit()
    local product = job:getProduct("SIM")
    local bars = product:createTickDataCollection{period = "MINUTE", ticks = 1}
    fast = bars:createIndicator{name = "fast", type = "SMA", period = "10"}
    slow = bars:createIndicator{name = "slow", type = "SMA", period = "30"}
    bars:subscribe()
    product:subscribePrice()
end

function OnPrice()
    local f, s = fast:getValue("value"), slow:getValue("value")
    if f and s then
        local now = f > s
        if above ~= nil and now ~= above then crossings = crossings + 1 end
        above = now
    end
end

function OnShutdown()
    local text = "crossings " .. crossings
    if job then job:logText(text) end
    return text
end
