-- The smallest algorithm: ask for a product, subscribe to its prices, say what comes.
-- Run it with:
--   algoserver run examples/hello.lua --data examples/data/demo_quotes.csv.gz

function OnInit()
  local product = job:getProduct("SIM")
  product:subscribePrice()
  job:logText("watching " .. product.name .. ", tick size " .. product.tickSize)
end

function OnPrice(price)
  if price:isLast() then
    job:logText("first trade: " .. price.lastVolume .. " at " .. price.lastPrice)
    job:shutdown()
  end
end
