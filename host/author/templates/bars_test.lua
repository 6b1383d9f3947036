-- `algoserver run --test @NAME@_test.lua` runs the functions Test..., each over the market that it describes.

local function begin()
  script "@NAME@.lua" { length = 3 }
  market { product = "SIM", tickSize = 0.01 }
end

function TestBuysAboveTheMeanAndLeavesBelowIt()
  begin()
  market {
    "09:31:00 bar 10 10 10 10 5",
    "09:32:00 bar 10 10 10 10 5",
    "09:33:00 bar 11 11 11 11 5", -- closes above the mean, and the next bar begins at 12
    "09:34:00 bar 12 12 12 12 5",
    "09:35:00 bar 10 10 10 10 5", -- below it
    "09:36:00 bar 9 9 9 9 5",
  }
  expect {
    fills = { "bought 1 at 12", "sold 1 at 9" },
    position = 0,
    profit = -3,
  }
end

function TestWaitsForTheFirstMean()
  begin()
  market { "09:31:00 bar 10 10 10 10 5", "09:32:00 bar 11 11 11 11 5" }
  expect { orders = 0 }
end
