-- Loaded in front of a script that is only tried: it shall print nothing, change nothing and come to an end.

local INSTRUCTIONS = 50 -- millions, for loading and OnInit together

local function refuse()
  return nil, "not done in a dry run"
end

-- Takes every method and gives itself.
local mute = setmetatable({}, { __index = function() return function(self) return self end end })

print = function() end
io.write = function() return true end
io.stdout, io.stderr = mute, mute
io.output = function(path)
  if path then return refuse() end
  return mute
end
io.popen, os.execute, os.remove, os.rename, os.tmpname = refuse, refuse, refuse, refuse, refuse
os.exit = function() error("os.exit would end the host, not the script", 2) end

local open = io.open
io.open = function(path, mode)
  if mode and mode:match("[wa+]") then return refuse() end
  return open(path, mode)
end

if jit then jit.off() end -- compiled code would not be counted

local slices = 0
local setHook = debug.sethook
local message = "no end after " .. INSTRUCTIONS .. " million instructions; is there an endless loop?"
local function stop()
  error(message, 2)
end
setHook(function()
  slices = slices + 1
  if slices < INSTRUCTIONS then return end
  setHook(stop, "", 1) -- from now on at each step, so that no pcall of the script holds it up
  error(message, 2)
end, "", 1000000)
