function OnInit()
  local n = 0
  while true do
    pcall(function() n = n + 1 end)
  end
end
