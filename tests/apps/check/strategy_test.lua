local function begin(length)
  script "strategy.lua" { length = length }
  market { product = "SIM", tickSize = 0.25, tick = 1, legs = 2, feeTierPeriod = "year" }
  market { "09:30:00 99 1 x 100 1", { "09:30:01 trade 100 1" }, 9 }
end
market { "09:30:00 99 1 x 100 1" }

function TestOne()
  begin(vorant.list.new())
  expect { orders = { "buy 1" }, fill = 1, log = 5, profit = "1", position = true, globals = { a = 1 } }
  expect { { "09:30:00", "buy 1", orders = 1 }, "bought 1" }
  expect "orders"
  script()
  quant:mean({ math.flor(1) })
end
function TestOne() expect { orders = 0 } end
function OnPrice() end
script = "other.lua"
