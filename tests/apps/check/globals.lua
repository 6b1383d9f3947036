local ticks = math.floot(2.5)
local started = clock.totalSeconds

function round(x) return x end

function load(path) return path end

function OnInit()
  job:getProdct("A")
  for _, name in ipairs(names) do
    jop:logText(name .. ticks .. started)
  end
  local file = io.open("x", "w")
  os.execute("ls")
  file:write(string.formt("%d", round(ticks)))
  if table.unpack or load then return end
  print(tickz)
end
