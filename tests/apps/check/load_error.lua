local limit = tonumber("x") + 1

function OnInit()
  job:logText(limit)
end
