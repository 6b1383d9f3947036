-- Orders of all kinds, drawn by lot around the prices that each product shows, amended and pulled: as many different fills as
-- possible. Parameters: products (their names, between blanks), chance (of doing something at a price), away (ticks from the
-- price, at most).

local chance, away
local alive, products = {}, {}

local function one_of(...) return (select(math.random(select("#", ...)), ...)) end

local function send(product, shown)
    local side = one_of("BUY", "SELL")
    local sign = side == "BUY" and 1 or -1
    local price = shown + math.random(-away, away) * product.tickSize
    local losing = shown + sign * math.random(1, away) * product.tickSize
    local exec = one_of("", "", "", "IOC", "FOK", "STOP", "ICEBERG", "TRAILING_STOP", "BRACKET")
    local kind = exec == "ICEBERG" and "LIMIT" or one_of("MARKET", "LIMIT")
    local work = { volume = math.random(1, 12) }
    if kind == "LIMIT" then work.price = price end
    if exec == "STOP" or exec == "TRAILING_STOP" then
        work.stopPrice = losing
        if kind == "LIMIT" then work.price = losing + sign * math.random(0, 2) * product.tickSize end
    elseif exec == "ICEBERG" then
        work.volume, work.icebergMinPeakSize, work.icebergMaxPeakSize = 9, 2, 4
    elseif exec == "BRACKET" then
        work.bracketProfit, work.bracketStopLoss = math.random(1, away), math.random(1, away)
    end
    local immediate = exec == "IOC" or exec == "FOK"
    local order = product:createOrder{ side = side, type = kind, exec = exec ~= "" and exec or nil,
                                       time = immediate and "GFD" or one_of("GFD", "GTC") }
    order:work(work)
    alive[#alive + 1] = order
end

local function change()
    local place = math.random(#alive)
    local order = alive[place]
    if not order.state:isWorking() or order.state:isPendingCancel() then
        table.remove(alive, place)
    elseif math.random(2) == 1 or order.price == nil then
        order:pull()
    else
        order:work{ price = order.price + math.random(-2, 2) * order.product.tickSize, volume = math.random(4, 15) }
    end
end

function OnInit()
    chance, away = job:getParameter("chance") or 0.05, job:getParameter("away") or 4
    job:setEnableCrossProtection(job:getParameter("protected") == true)
    for name in (job:getParameter("products") or "SIM"):gmatch("%S+") do
        local product = job:getProduct(name)
        products[product.id] = product
        product:subscribe()
        product:setFlattenOnExit(job:getParameter("flatten") == true)
    end
end

function OnPrice(price)
    local shown = price.lastPrice or price.bidPrice or price.askPrice
    if shown == nil then return end
    if math.random() < chance then send(products[price.id], shown) end
    if #alive > 0 and math.random() < chance / 2 then change() end
end
