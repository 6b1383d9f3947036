function OnInit()
  if job:hasContext() then
    job:logText("a"
  end
end
