-- `algoserver run --test @NAME@_test.lua` runs the functions Test..., each over the market that it describes.

local function begin()
  script "@NAME@.lua" { length = 3, edge = 2 }
  market { product = "NEAR", tickSize = 0.01 }
  market { product = "FAR", tickSize = 0.01 }
  market {
    product = "FAR-NEAR",
    tickSize = 0.01,
    legs = { { product = "FAR", side = "BUY" }, { product = "NEAR", side = "SELL" } },
  }
  market {
    "09:30:00 NEAR 10.00 5 x 10.01 5",
    "09:30:00 FAR 10.10 5 x 10.11 5", -- the difference is 0.10
    "09:30:01 FAR 10.11 5 x 10.12 5",
    "09:30:02 FAR 10.10 5 x 10.11 5",
  }
end

function TestBuysWhatIsCheap()
  begin()
  market { "09:30:03 FAR 10.00 5 x 10.01 5" }
  expect { { "09:30:03", "buy 1 FAR-NEAR at 0.01" } }
end

function TestLeavesTheAverageAlone()
  begin()
  market { "09:30:03 FAR 10.11 5 x 10.12 5" }
  expect { orders = 0 }
end
