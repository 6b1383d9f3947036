-- A script that calls whatever there is with whatever comes to hand. The bytes of `input` choose; when they are
-- used up it does nothing more, so a shorter input does less. What there is it knows from `checker` and
-- `environment`, which are made of the tables of the bound classes, and from the objects themselves: a new member
-- needs no word here. Beside them it finds `callbacks`, `indicators` and `words`.

local byte, char, sort, concat = string.byte, string.char, table.sort, table.concat
local pcall, type, rawget, pairs, ipairs, unpack = pcall, type, rawget, pairs, ipairs, unpack

-- Each byte is good for several choices, which follow from it and the next one.
local place, left, state = 0, 0, 1

-- 1 to n.
local function draw(n)
  if left == 0 then
    place, left = place + 1, 8
    state = (byte(input, place) or 0) * 256 + (byte(input, place + 1) or 0) + 1
  end
  left = left - 1
  state = state * 16807 % 2147483647
  return state % n + 1
end
local function pick(list)
  return list[draw(#list)]
end
local function isOver()
  return place >= #input
end
local function isLate()
  return place > #input * 3 / 4
end

local function namesOf(map)
  local names = {}
  for name in pairs(map) do
    if type(name) == "string" then names[#names + 1] = name end
  end
  sort(names)
  return names
end

-- Classes with the same functions are one kind, with the properties of all.
local kinds = {}
local everyName = {}
for _, class in ipairs(namesOf(checker.bound)) do
  local bound = checker.bound[class]
  local key = concat(namesOf(bound.functions), " ")
  local kind = kinds[key] or { functions = namesOf(bound.functions), properties = {}, objects = {}, class = class }
  for _, name in ipairs(namesOf(bound.properties)) do
    kind.properties[#kind.properties + 1] = name
    everyName[#everyName + 1] = name
  end
  for _, name in ipairs(kind.functions) do
    everyName[#everyName + 1] = name
  end
  kinds[key] = kind
end
local kindNames = namesOf(kinds)

local function kindOf(object)
  local functions = {}
  for name, value in pairs(object) do
    if type(name) == "string" and type(value) == "function" then functions[name] = true end
  end
  return kinds[concat(namesOf(functions), " ")]
end

-- Objects stay here for later callbacks, and so does what else came out of calls.
kept = {}
local MOST = 12 -- of a kind

local function keep(value)
  if type(value) == "table" and type(rawget(value, 0)) == "userdata" then
    local kind = kindOf(value)
    if kind == nil then return end
    local objects = kind.objects
    objects[#objects < MOST and #objects + 1 or draw(MOST)] = value
  elseif value ~= nil then
    kept[#kept < MOST and #kept + 1 or draw(MOST)] = value
  end
end
local function keepAll(succeeded, ...)
  for i = 1, succeeded and select("#", ...) or 0 do
    keep((select(i, ...)))
  end
  return succeeded, ...
end

local function someKind()
  local first = draw(#kindNames)
  for i = 0, #kindNames - 1 do
    local kind = kinds[kindNames[(first + i - 1) % #kindNames + 1]]
    if #kind.objects ~= 0 then return kind end
  end
end

-- The object of the callback that runs is good only now, so it is taken more often.
local event
local function someObject()
  local kind = event and kindOf(event)
  if kind and draw(3) == 1 then return event, kind end
  kind = someKind()
  if kind then return pick(kind.objects), kind end
end

local act

local numbers = {
  0, 1, 2, 3, 5, 10, 100, 99.75, 100.25, 100.5, 101, -1, 0.5, 0.1, 1e-9, 64, 1000, 65536,
  2 ^ 31 - 1, 2 ^ 31, -2 ^ 31, 2 ^ 32, 2 ^ 53, 2 ^ 63, -2 ^ 63, 1e15, 1e300, -1e300, 1 / 0, -1 / 0, 0 / 0, -0.0,
}
local sensible = 18 -- of these

local function number()
  return numbers[draw(draw(4) == 1 and #numbers or sensible)]
end
local function text()
  local choice = draw(8)
  if choice <= 5 then return pick(words) end
  if choice == 6 then return tostring(number()) end
  if choice == 7 then return pick(everyName) end
  local bytes = {}
  for i = 1, draw(12) do
    bytes[i] = char(draw(256) - 1)
  end
  return concat(bytes)
end

-- Rows of numbers, mostly a matrix.
local function rows()
  local made, width = {}, draw(3)
  for i = 1, draw(3) do
    made[i] = {}
    for j = 1, draw(8) == 1 and draw(4) or width do
      made[i][j] = number()
    end
  end
  return made
end

local value
local makers = {
  function() return nil end,
  function() return draw(2) == 1 end,
  number, number, number, number,
  text, text, text,
  function() return (someObject()) end,
  function() return pick(kept) end,
  function() return {} end,
  rows,
  function()
    local map = {}
    for _ = 1, draw(3) do
      map[text()] = value()
    end
    return map
  end,
  function() return function(...) keepAll(true, ...) act() return value() end end,
  function() -- a table that acts when it is looked at
    local function meddle() act() return value() end
    local map = setmetatable({}, { __index = meddle, __newindex = meddle, __tostring = meddle, __call = meddle,
      __len = meddle, __eq = meddle, __lt = meddle, __concat = meddle, __unm = meddle })
    return map
  end,
}
local depth = 0
function value()
  if isOver() or depth > 3 then return nil end
  depth = depth + 1
  local made = pick(makers)()
  depth = depth - 1
  return made
end

-- The table that a function takes: mostly of keys and values that it knows.
local function tableFor(known)
  local map = {}
  local function put(key)
    local kind = known.keys[key]
    if draw(16) == 1 then
      map[key] = value()
    elseif type(kind) == "table" then
      map[key] = pick(kind)
    elseif kind == "boolean" then
      map[key] = draw(2) == 1
    else
      map[key] = draw(3) == 1 and text() or number()
    end
  end
  for _, key in ipairs(known.required) do
    if draw(16) ~= 1 then put(key) end
  end
  local keys = namesOf(known.keys)
  for _ = 1, draw(4) do
    put(pick(keys))
  end
  return map
end

-- The arguments that no list of words would hit upon.
local special = {
  getDataStore = function() return { pick(words), draw(4) ~= 1 } end,
  createIndicator = function()
    local indicator = pick(indicators)
    local map = { name = draw(64), type = indicator.type }
    for _, parameter in ipairs(indicator) do
      if draw(2) == 1 then map[parameter] = draw(20) end
    end
    return { map }
  end,
  createTickDataCollection = function()
    local map = { period = pick(checker.tables.createTickDataCollection.keys.period), realTime = draw(2) == 1 }
    if draw(2) == 1 then map.ticks = draw(100) else map.startDate = "20240108:14:00" end
    return { map }
  end,
  createOrder = function()
    local keys = checker.tables.createOrder.keys
    local map = { side = pick(keys.side), type = draw(4) == 1 and "MARKET" or "LIMIT" }
    if draw(2) == 1 then map.exec = pick(keys.exec) end
    if draw(2) == 1 then map.time = pick(keys.time) end
    return { map }
  end,
  work = function()
    local map = { volume = draw(10) }
    if draw(6) ~= 1 then map.price = 98 + draw(16) / 4 end
    if draw(4) == 1 then map.stopPrice = 98 + draw(16) / 4 end
    if draw(4) == 1 then map[pick(namesOf(checker.tables.work.keys))] = draw(4) end
    return { map }
  end,
}

local function arguments(kind, name)
  if draw(6) == 1 then
    local count = draw(5) - 1
    local list = {}
    for i = 1, count do
      list[i] = value()
    end
    return list, count
  end
  if draw(4) ~= 1 and special[name] then
    local list = special[name]()
    return list, #list
  end
  if checker.tables[name] then return { tableFor(checker.tables[name]) }, 1 end
  local signature = (checker.signatures[kind.class] or {})[name] or { 0, 2 }
  local ofMatrix = kind.class == "nxAlgoMatrixObject"
  local count = signature[1] + (signature[2] > signature[1] and draw(3) - 1 or 0)
  local list = {}
  for i = 1, count do
    list[i] = ofMatrix and draw(4) ~= 1 and rows() or draw(2) == 1 and number() or draw(2) == 1 and text() or value()
  end
  return list, count
end

-- What ends the job comes late.
local ending = { shutdown = true, stop = true }

-- Puts in what the error asks for. False: it asks for nothing.
local function mend(list, message)
  local index, wanted = tostring(message):match("bad argument #(%d+) .-%((%w+) expected")
  if index == nil then return false end
  local wants = { number = number, string = text, boolean = function() return draw(2) == 1 end }
  list[tonumber(index) - 1] = (wants[wanted] or value)()
  return true
end

local function callMember(object, kind, name)
  local self = draw(12) == 1 and value() or object
  local list, count = arguments(kind, name)
  for _ = 1, 4 do
    local succeeded, message = keepAll(pcall(rawget(object, name), self, unpack(list, 1, count)))
    if succeeded or isOver() or draw(4) == 1 or not mend(list, message) then return end
  end
end
local function call()
  local object, kind = someObject()
  if object == nil or #kind.functions == 0 then return end
  local name = pick(kind.functions)
  if not ending[name] or isLate() then callMember(object, kind, name) end
end

-- What gives objects of further classes.
local function callGivers(object)
  local kind = kindOf(object)
  for _, name in ipairs(kind.functions) do
    local signature = (checker.signatures[kind.class] or {})[name]
    if signature and signature[3] then callMember(object, kind, name) end
  end
end

local function read()
  local object, kind = someObject()
  if object == nil then return end
  local name = draw(8) ~= 1 and pick(kind.properties) or pick(everyName)
  keepAll(pcall(function() return object[name] end))
end
local function write()
  local object, kind = someObject()
  if object == nil then return end
  local name, new = draw(8) ~= 1 and pick(kind.properties) or pick(everyName), value()
  pcall(function() object[name] = new end)
end

-- The library's functions in Lua, which come after the main chunk, and Lua's own, over objects as over all else.
local isStrict = debug.getregistry == nil
local plain
local function findPlain()
  plain = { round, sortUp, sort, copy, mapSize, tostring, tonumber, rawget, rawset, getmetatable, setmetatable, unpack,
    next, pairs, select, string.format, string.find, string.gsub, string.rep, string.sub, table.concat, table.insert,
    table.sort }
  if isStrict then
    for _, f in ipairs { os.time, os.date, os.clock, os.difftime, print } do
      plain[#plain + 1] = f
    end
  end
  for _, name in ipairs(namesOf(vorant)) do
    for _, member in ipairs(namesOf(vorant[name])) do
      if type(vorant[name][member]) == "function" then plain[#plain + 1] = vorant[name][member] end
    end
  end
end
local function callPlain()
  local f = pick(plain)
  local list = {}
  for i = 1, draw(4) do
    list[i] = value()
  end
  keepAll(pcall(f, unpack(list, 1, 4)))
end

-- What no script should do to an object.
local tampers = {
  function(a, b) a[0] = b[0] end,
  function(a, b) local name = pick(namesOf(b)) a[name] = b[name] end,
  function(a, b) setmetatable(a, getmetatable(b)) end,
  function(a) setmetatable(a, { __index = a }) end,
  function(a) getmetatable(a)[text()] = value() end,
  function(a) local class = getmetatable(a) class[pick(namesOf(class))] = value() end,
  function(a) a[0] = value() end,
  function(a) a[pick(everyName)] = value() end,
  function(a) getmetatable(a).__gc(a[0]) end,
}
local function tamper()
  if not isLate() then return end
  local a, b = someObject(), someObject()
  if a and b then pcall(pick(tampers), a, b) end
end

local function forget()
  local kind = someKind()
  if kind then kind.objects[#kind.objects] = nil end
  if collectgarbage then collectgarbage() end
end

-- Orders that go to work make events of many kinds.
local function trade()
  for _, kind in pairs(kinds) do
    if kind.class == "nxAlgoOrderObject" and #kind.objects ~= 0 then
      callMember(pick(kind.objects), kind, draw(4) ~= 1 and "work" or "pull")
    end
  end
end

local acts = { call, call, call, call, call, call, trade, read, read, read, write, callPlain, tamper, forget }
local actDepth = 0
function act()
  if isOver() or actDepth > 4 then return end
  actDepth = actDepth + 1
  pick(acts)()
  actDepth = actDepth - 1
end

for _, name in ipairs(callbacks) do
  _G[name] = function(...)
    keepAll(true, ...)
    local first, before = ..., event
    event = type(first) == "table" and first or nil
    for _ = 1, isOver() and 0 or draw(6) do
      act()
    end
    event = before
  end
end

local onInit = OnInit
function OnInit()
  findPlain()
  for _, name in ipairs(namesOf(environment.bound)) do
    keep(_G[name])
  end
  for _, name in ipairs { "A", "B", "F" } do
    local product = job:getProduct(name)
    keep(product)
    for _, member in ipairs(namesOf(product)) do
      if member:find("^subscribe") and draw(4) ~= 1 then pcall(product[member], product) end
    end
    callGivers(product)
  end
  callGivers(job)
  local others = job:getVorantJobs()
  keep(others)
  for i = 1, 2 do
    local _, other = keepAll(pcall(others.getVorantJob, others, i))
    if type(other) == "table" and draw(4) ~= 1 then other:subscribe() end
  end
  onInit()
end

-- However soon the bytes are used up, some are left for the end.
local onShutdown = OnShutdown
function OnShutdown()
  place = math.min(place, #input - 30)
  onShutdown()
end
