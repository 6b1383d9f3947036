local settings = {}

function OnInit()
  local product = job:getProduct("A")
  job:logText(product.name .. settings.limit)
end
