local product, trades = nil, 0

function OnInit()
  product = job:getProduct("A")
  product:subscribePrices()
  product.tick = product.ticksize
  job.tag = "x"
  product.tickSiz = 1
  product.name = "B"
end

function OnPrice(price)
  if price.isLast then trades = trades + 1 end
  job:logText(price.bid .. " " .. price:askPrice() .. " " .. product.price.bidprice .. product.tick)
  job.logText("x")
  local depth = product.depth
  job:logText(depth:bidqty(0) .. depth.bidQty(depth, 0) .. depth.bidCount)
end
