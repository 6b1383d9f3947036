-- In front of every script of the scenarios.

-- Logs all that it is given, between blanks.
function log(...)
  local texts = {}
  for i = 1, select("#", ...) do texts[i] = tostring((select(i, ...))) end
  job:logText(table.concat(texts, " "))
end

-- Subscribes to the prices of the products of these names, and gives the first product.
function prices(...)
  for _, name in ipairs({ ... }) do job:getProduct(name):subscribePrice() end
  return job:getProduct((...))
end

-- Names the parts of a price that a script sees change, as in "isBid isLast".
function changes(price)
  local names = {}
  for _, name in ipairs({ "isBid", "isAsk", "isLast" }) do
    if price[name](price) then names[#names + 1] = name end
  end
  return table.concat(names, " ")
end

-- Sends an order to the product and gives it: buy(a, 4) at the market, sell(a, 4, 99) with a limit.
local function send(side)
  return function(product, volume, price)
    local order = product:createOrder{ side = side, type = price and "LIMIT" or "MARKET" }
    order:work{ volume = volume, price = price }
    return order
  end
end
buy, sell = send("BUY"), send("SELL")

-- Asks the run to end, as Ctrl-C does, at once or some seconds later. A callback has no os.
local execute = os.execute
function interrupt(seconds)
  execute(seconds and "(sleep " .. seconds .. "; kill -TERM $PPID) &" or "kill -TERM $PPID")
end

-- A collection of the product's bars, subscribed to; one bar as start, open, high, low, close and volume; and all of
-- a collection, the oldest first.
function bars(name, request)
  local collection = job:getProduct(name):createTickDataCollection(request)
  collection:subscribe()
  return collection
end
function bar(b)
  return string.format("%s %g %g %g %g %d", b.time:sub(10, 14), b.open, b.high, b.low, b.close, b.volume)
end
function logBars(collection)
  local texts = {}
  for i = collection.count - 1, 0, -1 do texts[#texts + 1] = bar(collection:get(i)) end
  log(table.concat(texts, "; "))
end
