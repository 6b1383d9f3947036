local order

function OnInit()
  local product = job:getProduct("A")
  order = product:createOrder{ sid = "BUY", type = "LIMIT" }
  product:createOrder{ side = "buy", type = "STOP", show = 1 }
  product:createOrder("BUY", "MARKT")
  order:work{ prize = 100, volume = 1 }
  order:work{ expiryDate = "20240105", volume = 1, minVolume = 2 }
  order:work{ bracketStopLossTrailing = true, 5 }
  product:createTickDataCollection{ period = "5MINUTE", ticks = 10 }
end

function OnOrderWorking(update)
  update.order:work{ volum = update.workin }
end
