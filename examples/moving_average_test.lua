-- Tests of moving_average.lua: algoserver run --test examples/moving_average_test.lua

local function begin()
  script "moving_average.lua" { size = 2, fast = 1, slow = 3 }
  market { product = "SIM", tickSize = 0.25, pointValue = 50 }
end

function TestBuysWhenPricesRise()
  begin()
  market {
    "09:30:00 100.00 5 x 100.25 5",
    "09:30:01 trade 100.25 1",
    "09:30:02 100.75 5 x 101.00 5",
    "09:30:02 trade 101.00 1",
    "09:30:03 trade 101.00 1",
    "09:30:04 102.00 5 x 102.25 5",
  }
  expect {
    orders = 1,
    position = 2,
    profit = 100, -- a point of 50 for each of 2 lots, from 101 to the bid of 102
    { "09:30:03", "buy 2 market", "bought 2 at 101", globals = { fastLength = 1, slowLength = 3 } },
  }
end

function TestTurnsWhenPricesFall()
  begin()
  market {
    "09:30:00 100.00 5 x 100.25 5",
    "09:30:01 trade 100.25 1",
    "09:30:02 trade 100.50 1",
    "09:30:03 trade 100.75 1",
    "09:30:04 trade 99.00 1",
  }
  expect { orders = { "buy 2 market", "sell 4 market" }, position = -2 }
end

function TestWaitsForTheSlowAverage()
  begin()
  market { "09:30:00 100.00 5 x 100.25 5", "09:30:01 trade 100.25 1", "09:30:02 trade 100.50 1" }
  expect { orders = 0, position = 0 }
end
