local count, last = 0, nil

function OnInit()
  local first, second = 1
  local text
  local unset
  job:logText(text)
  text = "late"
  job:logText(text .. first .. tostring(second) .. tostring(unset))
  local map = { a = 1, b = 2, a = 3 }
  for i = #map, 1 do job:logText(map[i]) end
  if not count == 0 then return end
  count, last = 5
end

function OnPrice(price)
  local count = count + 1
  last = price.lastPrice
  do
    return last
  end
  job:logText("never")
end
