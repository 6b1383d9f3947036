function Oninit()
  job:logText("never")
end
