-- What every script finds ready besides the bound objects: a few helper functions and four containers. The
-- containers keep their contents in the field `table` and count them by hand in `mySize`; scripts read both.

function round(num, idp)
  if idp and idp > 0 then
    local scale = 10 ^ idp
    return math.floor(num * scale + 0.5) / scale
  end
  return math.floor(num + 0.5)
end

function sortUp(x, y)
  return x < y
end

function sortDown(x, y)
  return x > y
end

function sort(a, f)
  table.sort(a, f or sortUp)
end

-- One level deep and without the metatable: a container has its own copy.
function copy(source)
  local result = {}
  for key, value in pairs(source) do
    result[key] = value
  end
  return result
end

function mapSize(map)
  local size = 0
  for _ in pairs(map) do
    size = size + 1
  end
  return size
end

vorant = {}

-- The containers keep to their own copy whatever a script makes of the global.
local copyTable = copy

local function newClass()
  local class = {}
  class.__index = class

  local function create(contents, size)
    return setmetatable({ table = contents, mySize = size }, class)
  end

  function class.new()
    return create({}, 0)
  end

  function class:size()
    return self.mySize
  end

  function class:copy()
    return create(copyTable(self.table), self.mySize)
  end

  function class:clear()
    self.mySize = 0
    self.table = {}
  end

  return class
end

local function iterateInOrder(self, iterateFn)
  for _, value in ipairs(self.table) do
    iterateFn(value)
  end
end

-- A sequence with positions from 1.
vorant.list = newClass()
vorant.list.iterate = iterateInOrder

-- With one argument that is the value, and it goes to the end.
function vorant.list:insert(pos, x)
  if x == nil then
    table.insert(self.table, pos)
  else
    if pos < 1 or pos > self.mySize + 1 then
      error("vorant.list.insert position out of range " .. pos)
    end
    table.insert(self.table, pos, x)
  end
  self.mySize = self.mySize + 1
end

function vorant.list:get(index)
  return self.table[index]
end

function vorant.list:remove(index)
  if self.table[index] ~= nil then
    table.remove(self.table, index)
    self.mySize = self.mySize - 1
  end
end

function vorant.list:sort(sortFn)
  table.sort(self.table, sortFn or sortUp)
end

vorant.set = newClass()

function vorant.set:insert(x)
  if self.table[x] == nil then
    self.mySize = self.mySize + 1
  end
  self.table[x] = true
end

function vorant.set:find(x)
  return self.table[x] or false
end

function vorant.set:remove(x)
  if self.table[x] ~= nil then
    self.table[x] = nil
    self.mySize = self.mySize - 1
  end
end

function vorant.set:iterate(iterateFn)
  for member in pairs(self.table) do
    iterateFn(member)
  end
end

-- First in, first out.
vorant.queue = newClass()
vorant.queue.iterate = iterateInOrder

function vorant.queue:push(x)
  table.insert(self.table, x)
  self.mySize = self.mySize + 1
end

function vorant.queue:pop()
  if self.mySize > 0 then
    self.mySize = self.mySize - 1
    return (table.remove(self.table, 1))
  end
  return nil
end

function vorant.queue:head()
  return self.table[1]
end

vorant.map = newClass()

function vorant.map:insert(x, y)
  if self.table[x] == nil then
    self.mySize = self.mySize + 1
  end
  self.table[x] = y
end

function vorant.map:find(x)
  return self.table[x]
end

function vorant.map:remove(x)
  if self.table[x] ~= nil then
    self.table[x] = nil
    self.mySize = self.mySize - 1
  end
end

function vorant.map:iterate(iterateFn)
  for key, value in pairs(self.table) do
    iterateFn(key, value)
  end
end
