function OnInit()
  job:getProduct("A"):subscribe()
end

function onPrice(price)
  job:logText(price.bidPrice)
end

function OnOrderFilled(update)
  job:logText(update.fillPrice)
end

function OnCandle() end

local function OnTimer(name)
  job:logText(name)
end

function OnPosition(product, position)
  job:logText(product.totalNet)
end

function OnShutdown() job:logText("first") end
function OnShutdown() job:logText("second") end
