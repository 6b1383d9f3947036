-- `algoserver run --test @NAME@_test.lua` runs the functions Test..., each over the market that it describes.

local function begin(limit)
  script "@NAME@.lua" { limit = limit }
  market { product = "SIM", tickSize = 0.01 }
end

function TestQuotesBothSidesAndFollowsThem()
  begin(5)
  market { "09:30:00 9.99 5 x 10.01 5", "09:30:01 10.00 5 x 10.01 5" }
  expect {
    orders = { "buy 1 at 9.99", "sell 1 at 10.01" }, -- the bid is moved, and not sent again
    fills = 0,
  }
end

function TestHoldsNoMoreThanTheLimit()
  begin(1)
  market {
    "09:30:00 9.99 5 x 10.01 5",
    "09:30:01 trade 9.98 1 sell", -- through its bid
    "09:30:02 9.98 5 x 10.01 5",
    "09:30:03 trade 9.97 1 sell",
  }
  expect { fills = { "bought 1 at 9.99" }, position = 1 }
end
