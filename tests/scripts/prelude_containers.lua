-- vorant.set, vorant.queue and vorant.map.

local function equal(actual, expected)
  assert(actual == expected, tostring(actual) .. " instead of " .. tostring(expected))
end

local function testSet()
  local set = vorant.set:new()
  set:insert("a")
  set:insert("a")
  set:insert(2)
  equal(set:size(), 2)
  equal(set:find("a"), true)
  equal(set:find("b"), false)
  local members = {}
  set:iterate(function(member) members[member] = (members[member] or 0) + 1 end)
  equal(members.a, 1)
  equal(members[2], 1)
  equal(mapSize(members), 2)
  local copied = set:copy()
  equal(getmetatable(copied), vorant.set)
  copied:remove("a")
  copied:remove("a")
  equal(copied:size(), 1)
  equal(set:find("a"), true)
  copied:clear()
  equal(copied:size(), 0)
  equal(copied:find(2), false)
  -- The size goes up before Lua refuses the key.
  local succeeded, message = pcall(set.insert, set, nil)
  assert(not succeeded and string.find(message, "index is nil", 1, true), message)
  equal(set:size(), 3)
end

local function testQueue()
  local queue = vorant.queue:new()
  equal(queue:pop(), nil)
  equal(queue:head(), nil)
  equal(queue:size(), 0)
  queue:push("a")
  queue:push(false)
  queue:push("c")
  equal(queue:size(), 3)
  equal(queue:head(), "a")
  local seen = {}
  queue:iterate(function(value) seen[#seen + 1] = tostring(value) end)
  equal(table.concat(seen, ","), "a,false,c")
  local copied = queue:copy()
  equal(queue:pop(), "a")
  equal(queue:pop(), false)
  equal(queue:pop(), "c")
  equal(queue:pop(), nil)
  equal(queue:size(), 0)
  equal(copied:size(), 3)
  equal(copied:head(), "a")
  copied:clear()
  equal(copied:pop(), nil)
  queue:push(nil) -- counts, and stores nothing
  equal(queue:size(), 1)
  equal(queue:pop(), nil)
  equal(queue:size(), 0)
end

local function testMap()
  local map = vorant.map:new()
  map:insert("a", 1)
  map:insert("a", 2)
  map:insert("b", false)
  equal(map:size(), 2)
  equal(map:find("a"), 2)
  equal(map:find("b"), false)
  equal(map:find("c"), nil)
  local pairsSeen = {}
  map:iterate(function(key, value) pairsSeen[key] = value end)
  equal(pairsSeen.a, 2)
  equal(pairsSeen.b, false)
  local copied = map:copy()
  equal(getmetatable(copied), vorant.map)
  copied:remove("c")
  copied:remove("b")
  equal(copied:size(), 1)
  equal(map:size(), 2)
  copied:clear()
  equal(copied:find("a"), nil)
  map:insert("none", nil) -- counts each time, and stores nothing
  map:insert("none", nil)
  equal(map:size(), 4)
  equal(mapSize(map.table), 2)
  assert(not pcall(map.insert, map, nil, 1))
end

function OnInit()
  testSet()
  testQueue()
  testMap()
  -- A container copies by itself, whatever a script makes of the global.
  copy = nil
  equal(vorant.queue:new():copy():size(), 0)
end
