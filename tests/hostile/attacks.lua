-- Scripts that mean harm, and what each comes to. After a line "--- what it tries" stand its outcome in each profile and its
-- limits, if it needs any ("-- limits: memory=BYTES instructions=COUNT", by their names), and then the script. An outcome is what the script told, then the
-- entries of the host that failed and why, or "skip" and the reason not to run it: base promises nothing against it.
-- What `tell` and `why` do is told by the helper of nxHostile_test.cpp. Each runs through a job's life: two of each event,
-- whose objects are freed after it, then OnTimer, OnParameter (which tells) and OnShutdown.

--- takes a library back by require
-- base: function, table
-- strict: no, no
function OnInit()
  tell(function() return type(require("io").open) end)
  tell(function() return type(require("package").loaded) end)
end

--- keeps the libraries of the main chunk
-- base: function, function, function, function, function
-- strict: nil, no, no, nil, nil
local keep = {}
for _, get in ipairs({ function() return os.execute end, function() return io.open end, function() return package.loadlib end,
                       function() return dofile end, function() return coroutine and coroutine.create end }) do
  keep[#keep + 1] = get
  tell(function() return type(get()) == "function" and "function" or nil end)
end
function OnInit() end

--- starts a program
-- base: 768
-- strict: no
local execute = os.execute
function OnInit() tell(function() return execute("exit 3") end) end

--- ends the process
-- base: skip, it does
-- strict: no
local exit = os.exit
function OnInit() tell(exit, 0) end

--- runs a binary chunk, which could break the engine
-- base: 42
-- strict: no, no
local load = loadstring
function OnInit()
  if not load then tell(function() return string.dump(print) end) end
  tell(function() return load(string.dump(function() return 42 end))() end)
end

--- loads code, and changes what functions see as globals
-- base: 1, mine, table, function
-- strict: no, no, no, no
local load = loadstring
function OnInit()
  tell(function() return load("return 1")() end)
  tell(function() local f = setfenv(function() return x end, { x = "mine" }) return f() end)
  tell(function() return type(getfenv(0)) end)
  tell(function() return type(module) == "function" and "function" or error() end)
end

--- reaches into what is not its own by debug
-- base: table, table, table, done, 1
-- strict: no, no, no, no, no
function OnInit()
  tell(function() return type(debug.getregistry()) end)
  tell(function() return type(debug.getmetatable(job)) end)
  tell(function() return type(debug.getfenv(tell)) end)
  tell(function() debug.sethook() return "done" end)
  local x = 1
  tell(function() return select(2, debug.getupvalue(function() return x end, 1)) end)
end

--- changes the locals of a native function
-- base: skip, it may crash
-- strict: no
function OnInit()
  tell(function() pcall(string.gsub, "x", "x", function() debug.setlocal(2, 1, nil) end) return debug.setlocal(1, 1, nil) end)
end

--- asks debug.getinfo for what is not on the stack
-- base: skip, it crashes
-- strict: no, no, nil, nil
function OnInit()
  tell(function() return debug.getinfo(1, ">S") end)
  tell(function() return debug.getinfo(1, "f").func end)
  tell(function() return debug.getinfo(1).func end)
  tell(function() return debug.getinfo(tell, "S").func end)
end

--- has debug.traceback begin two thousand million levels below the stack
-- base: skip, it fills the memory
-- strict: no, no
function OnInit()
  tell(function() return debug.traceback("x", -2 ^ 31) end)
  tell(function() return debug.traceback("x", 2 ^ 31) end)
end

--- changes what all texts do
-- base: done, mine
-- strict: no, x
function OnInit()
  tell(function() getmetatable("").__index = function() return function() return "mine" end end return "done" end)
  tell(function() return ("X"):lower() end)
end

--- changes what bound objects do
-- base: done, done, mine
-- strict: no, no, nil
function OnInit()
  tell(function() setmetatable(date, { __index = function() return "mine" end }) return "done" end)
  tell(function() getmetatable(clock).year = 1e6 return "done" end)
  tell(function() return date.anything end)
end

--- passes one object off as another
-- both: bad argument, bad argument, bad argument, nil, bad argument
function OnInit()
  local function fails(f, ...)
    local succeeded, message = pcall(f, ...)
    told[#told + 1] = succeeded and tostring(message) or (message:match("bad argument") or message:match("bad self") and "bad argument")
  end
  rawset(date, 0, clock[0])
  fails(function() return date:getAsDate(0) end)
  fails(clock.isInRange, { [0] = job[0] }, "09:00", "10:00")
  fails(clock.isInRange, job, "09:00", "10:00")
  rawset(date, 0, nil)
  fails(date.getAsDate, date, 0)
  fails(function() return clock.isInRange(clock[0], "09:00", "10:00") end)
end

--- keeps the objects of events
-- both: 99.5, 1, 15, nil, nil, nil, nil, nil, nil, nil, nil, nil, 1, the event of this nxAlgoPriceObject is over, the event of this nxAlgoMarketDepthObject is over, the event of this nxAlgoOrderUpdateObject is over, the event of this nxAlgoStateObject is over, the event of this nxAlgoPriceTradeVolumesObject is over, the event of this nxAlgoClockObject is over, the event of this nxAlgoPriceObject is over, nil, mine
local kept = {}
function OnInit() end
function OnPrice(price)
  if kept.price then return end
  kept.price, kept.handle, kept.isBid = price, price[0], price.isBid
  tell(function() return price.bidPrice end)
end
function OnMarketDepth(depth) kept.depth = kept.depth or depth if depth ~= kept.depth then return end tell(function() return depth.bidCount end) end
function OnOrderFill(update)
  if kept.update then return end
  kept.update, kept.time, kept.order = update, update.vorantUpdateTime, update.order
  tell(function() return kept.time.second end)
end
function OnProductState(state) kept.state = kept.state or state end
function OnPosition(position) kept.position = kept.position or position end
function OnPriceTradeVolumes(volumes) kept.volumes = kept.volumes or volumes end
function OnTimer()
  for _, read in ipairs({ { "price", "bidPrice" }, { "depth", "bidCount" }, { "update", "id" }, { "update", "order" },
                          { "state", "id" }, { "position", "totalNet" }, { "volumes", "count" }, { "time", "second" },
                          { "update", "vorantUpdateTime" }, { "order", "id" } }) do
    tell(function() return kept[read[1]][read[2]] end)
  end
  why(kept.price.isLast, kept.price)
  why(kept.depth.bid, kept.depth, 0)
  why(kept.update.isSpreadUnbalanced, kept.update)
  why(kept.state.isOpen, kept.state)
  why(kept.volumes.getVolumeAtPrice, kept.volumes, 1)
  why(kept.time.isInRange, kept.time, "09:00", "10:00")
  why(kept.isBid, { [0] = kept.handle })
  kept.price.bidPrice = 5
  tell(function() return kept.price.bidPrice end)
  kept.price.mine = "mine"
  tell(function() return kept.price.mine end)
end

--- puts a kept object into the event of another
-- both: nil, true
local kept
function OnInit() end
function OnPrice(price)
  kept = kept or price
  if price == kept then return end
  tell(function() return kept.bidPrice end)
  rawset(price, 0, kept[0])
  tell(function() return price.bidPrice == nil and not pcall(price.isBid, price) end)
end

--- has finalizers that use its objects as the job ends
-- base: , ended 1970
-- strict: no
function OnInit()
  if not newproxy then return tell(newproxy) end
  kept = newproxy(true)
  getmetatable(kept).__gc = function() job:logText(", ended " .. date:getAsDate(5):sub(1, 4)) end
end

--- leaves a callback in the middle by a coroutine
-- base: no, suspended
-- strict: no, no
local c = coroutine
function OnInit()
  tell(function() return c.yield(1) end)
  tell(function()
    local t = c.create(function() local x = "x" c.yield() return x end)
    c.resume(t)
    return c.status(t)
  end)
end

--- stops the collector of garbage
-- base: 0
-- strict: no
local collect = collectgarbage
function OnInit() tell(function() return collect("stop") end) end

--- changes the process's locale
-- base: C, nil
-- strict: no, no
local set = os.setlocale
function OnInit()
  tell(function() return set(nil) end)
  tell(function() return set("") end)
end

--- writes beside the host's own record
-- base: skip, it writes to the process's standard output
-- strict: {"type":"fill"}	1 true
function OnInit() end
function OnTimer() print('{"type":"fill"}', 1) tell(function() return true end) end

--- compiles machine code
-- strict: nil, nil, no
-- base: skip, of LuaJIT alone
function OnInit()
  tell(function() return jit end)
  tell(function() return ffi end)
  tell(function() return require("ffi") end)
end

--- raises objects that run code when they are told
-- both: OnTimer: error object is a table value; told
function OnInit() end
function OnTimer() error(setmetatable({}, { __tostring = function() while true do end end })) end
function OnShutdown() job:logText("told") end

--- recurses without an end
-- both: true, true, true, true, true
function OnInit()
  local function down() return 1 + down() end
  tell(function() return not pcall(down) end)
  local function protected() local _, e = pcall(protected) return e end
  tell(function() protected() return true end)
  local chain = setmetatable({}, { __index = function(t, k) return t[k .. "x"] end })
  tell(function() return not pcall(function() return chain.x end) end)
  local ring = {}
  setmetatable(ring, { __index = ring })
  tell(function() return not pcall(function() return ring.x end) end)
  tell(function() return not xpcall(error, function() error("again") end) end)
end

--- re-enters the pattern functions and the sort
-- both: true, true
function OnInit()
  local function again(s) return (s:gsub(".", again)) end
  tell(function() return not pcall(again, "x") end)
  local list = {}
  for i = 1, 100 do list[i] = i % 7 end
  tell(function() pcall(table.sort, list, function() table.remove(list) return true end) return true end)
end

--- asks for more values than there is room for
-- both: no, no, no, no
function OnInit()
  tell(function() return select("#", unpack({}, -2 ^ 31)) end)
  tell(function() return select("#", unpack({}, 1, 1e8)) end)
  tell(function() return select("#", unpack({}, -2 ^ 31, 2 ^ 31 - 1)) end)
  tell(function() return select("#", ("x"):rep(1e7):byte(1, -1)) end)
end

--- fills the memory by texts, and goes on
-- limits: memory=16777216
-- both: OnPrice: limit of 16777216 bytes of memory exceeded: not enough memory; OnPrice: limit of 16777216 bytes of memory exceeded: not enough memory; no, 3
function OnInit() end
function OnPrice() local text = ("x"):rep(1e6) while true do text = text .. text end end
function OnTimer()
  tell(function() return ("x"):rep(1e9) end)
  tell(function() return #("xyz") end)
end

--- fills the memory by tables
-- limits: memory=16777216
-- both: OnPrice: limit of 16777216 bytes of memory exceeded: not enough memory; OnPrice: limit of 16777216 bytes of memory exceeded: not enough memory; alive
function OnInit() end
function OnPrice() local list = {} while true do list = { list } end end
function OnShutdown() job:logText("alive") end

--- makes its globals refuse the host's look-ups
-- both: start: boo;
function OnInit() end
setmetatable(_G, { __newindex = function() error("boo", 0) end })

--- spoils what the library has put among its globals
-- both: OnShutdown: 8: lost;
function OnInit()
  for name in pairs(vorant) do vorant[name] = nil end
  round, sort, copy, string.format, table.insert = nil, nil, nil, nil, nil
  job, clock = nil, { year = 1 }
end
function OnPrice() tell(function() return clock.year end) end
function OnParameter() end
function OnShutdown() error("lost") end

--- never comes out of its main chunk
-- limits: instructions=1000000
-- both: load: 1: limit of 1000000 instructions a callback exceeded;
while true do pcall(function() while true do end end) end

--- never comes out of a callback, whatever is raised
-- limits: instructions=1000000
-- both: OnPrice: 2: limit of 1000000 instructions a callback exceeded; OnPrice: 2: limit of 1000000 instructions a callback exceeded; alive
function OnInit() end
local function forever() while true do end end
function OnPrice() while true do xpcall(forever, forever) end end
function OnShutdown() job:logText("alive") end

--- fills the memory by series, which Lua does not see
-- limits: memory=16777216 instructions=100000000
-- both: OnPrice: 2: limit of 16777216 bytes of memory exceeded: not enough memory; OnPrice: 2: limit of 16777216 bytes of memory exceeded: not enough memory; alive
function OnInit() series = job:createDataSeries() end
function OnPrice() for i = 1, 1e7 do series:add(i, i) end end
function OnShutdown() job:logText("alive") end

--- matches a pattern that never ends, over a text of megabytes
-- limits: pattern=1000 subject=100000
-- both: limit of 1000 bytes of a pattern exceeded, limit of 100000 bytes of a text to match exceeded
function OnInit()
  why(string.find, "a", ("a?"):rep(1000))
  why(string.find, ("a"):rep(1e6), ("a-"):rep(100) .. "b")
end

--- logs without an end
-- limits: logLine=1000 log=3
-- both: OnParameter: 12: limit of 3 bytes of log exceeded; x x x
function OnInit()
  why(function() job:logText(("x"):rep(1e6)) end)
  why(function() while true do job:logText("x") end end)
end
