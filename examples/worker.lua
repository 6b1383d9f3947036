-- Counts the trades of one product and shows others how far it is: the worker of parent.lua. It runs alone, too:
--   algoserver run examples/worker.lua --data examples/data/demo_quotes.csv.gz --param product=SIM

local trades, volume = 0, 0

function OnInit()
  -- Parameters come from --param and --params; one that is not given is nil.
  local product = job:getProduct(job:getParameter("product") or "SIM")
  product:subscribePrice()
  job:setReference("trades of " .. product.name)
  job:sendUserState("INFO", "counting")
end

function OnPrice(price)
  if not price:isLast() then return end
  trades, volume = trades + 1, volume + price.lastVolume
  -- Every tenth trade is news. Who watches this job is told once, after OnPrice has returned.
  if trades % 10 == 0 then
    job:sendUserText1("last trade at " .. price.lastPrice)
    job:setOutputParameter("trades", trades)
    job:setOutputParameter("volume", volume)
  end
end

function OnShutdown()
  job:sendUserState("WARN", "stopped after " .. trades .. " trades")
end
