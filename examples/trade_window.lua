-- Tells when trades stray far from the volume-weighted average of the last minutes, and every hour how these were.
--
--     algoserver run examples/trade_window.lua --data examples/data/demo_quotes.csv.gz
--
-- Parameters: product, seconds (that the windows look back over), far (standard deviations).

local strays, isFar = 0, false

function OnInit()
    local product = job:getProduct(job:getParameter("product") or "SIM")
    local seconds = job:getParameter("seconds") or 300
    far = job:getParameter("far") or 4
    window = product:createTradeWindow(seconds)        -- an event for each trade
    hourly = product:createTradeWindow(seconds, 3600)  -- an event each hour
    hourly:enableRegression()
    window:start()
    hourly:start()
end

function OnTradeWindowEvent(w)
    if w.id == hourly.id then
        job:logText(("%d trades of %d lots, vwap %.3f, range %.2f, trend %+.2f an hour"):format(
            w.size, w.totaltraded, w.vwap or 0, w.range or 0, (w.slope or 0) * 3600))
        return
    end
    local distance, wasFar = w.last - w.vwap, isFar
    isFar = w.size >= 30 and math.abs(distance) > far * w.stddev
    if not isFar or wasFar then return end
    strays = strays + 1
    job:logText(("%.2f is %+.2f from the vwap of %d trades"):format(w.last, distance, w.size))
end

function OnShutdown()
    job:logText(strays .. " times far from the average")
end
