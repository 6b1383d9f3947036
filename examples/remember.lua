-- Remembers from run to run: how often it has run, and the highest price that it has seen. Row 1 of the store holds
-- the count and the price; behind it comes a row for each run, the newest last.
-- Run it twice with:
--   algoserver run examples/remember.lua --data examples/data/demo_quotes.csv.gz --store memory

local KEPT = 10 -- rows of runs

local store, runs, highest
local high, low

function OnInit()
  store = job:getDataStore("remember", true)
  if store == nil then error("this script needs a store: run it with --store DIR") end
  if store.count == 0 then
    store:add(0, "none")
    job:logText("nothing remembered yet")
  end
  runs, highest = store:get(1)
  runs, highest = tonumber(runs) + 1, tonumber(highest)
  job:logText("run " .. runs .. ", highest price so far " .. (highest or "none"))
  for i = 2, store.count do
    job:logText("  " .. table.concat({ store:get(i) }, " "))
  end
  job:getProduct("SIM"):subscribePrice()
end

function OnPrice(price)
  if not price:isLast() then return end
  high = math.max(high or price.lastPrice, price.lastPrice)
  low = math.min(low or price.lastPrice, price.lastPrice)
end

function OnShutdown()
  if high == nil then return end
  highest = math.max(highest or high, high)
  store:set(1, runs, highest)
  -- A store has no function that removes a row, so the kept ones are put into it anew.
  local kept = {}
  for i = math.max(2, store.count - KEPT + 2), store.count do kept[#kept + 1] = { store:get(i) } end
  kept[#kept + 1] = { "run " .. runs, "of " .. date:getAsDate(clock.totalSeconds), "high " .. high, "low " .. low }
  store:clear()
  store:add(runs, highest)
  for _, row in ipairs(kept) do store:add(unpack(row)) end
  job:logText("remembered: high " .. high .. ", low " .. low)
end
