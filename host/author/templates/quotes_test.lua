-- `algoserver run --test @NAME@_test.lua` runs the functions Test..., each over the market that it describes.

local function begin()
  script "@NAME@.lua" { weight = 4, hold = 5 }
  market { product = "SIM", tickSize = 0.01 }
end

function TestGoesWithTheHeavySideForAWhile()
  begin()
  market {
    "09:30:00 9.99 9 x 10.00 2", -- more than four times as much on the bid
    "09:30:01 9.99 5 x 10.00 5",
    "09:30:08 10.01 5 x 10.02 5",
  }
  expect {
    { "09:30:00", "buy 1 market" },
    fills = { "bought 1 at 10", "sold 1" },
    position = 0,
  }
end

function TestLeavesAnEvenMarketAlone()
  begin()
  market { "09:30:00 9.99 8 x 10.00 2", "09:30:01 9.99 2 x 10.00 8" }
  expect { orders = 0 }
end
