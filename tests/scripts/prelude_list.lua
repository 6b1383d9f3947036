-- vorant.list: a sequence from 1 with a size kept by hand.

local function equal(actual, expected)
  assert(actual == expected, tostring(actual) .. " instead of " .. tostring(expected))
end

local function text(list)
  local parts = {}
  list:iterate(function(value) parts[#parts + 1] = tostring(value) end)
  return table.concat(parts, ",") .. ":" .. list:size()
end

local function fails(part, f, ...)
  local succeeded, message = pcall(f, ...)
  assert(not succeeded and string.find(message, part, 1, true), tostring(message))
end

function OnInit()
  local list = vorant.list:new()
  equal(getmetatable(list), vorant.list)
  equal(vorant.list.__index, vorant.list)
  equal(text(list), ":0")
  list:insert(5) -- a value however large, never a position
  equal(text(list), "5:1")
  list:insert(1, "a")
  list:insert(3, "c")
  list:insert(2, false)
  equal(text(list), "a,false,5,c:4")
  list:insert(2, nil) -- the same as one argument
  equal(text(list), "a,false,5,c,2:5")
  fails("vorant.list.insert position out of range 0", list.insert, list, 0, "x")
  fails("vorant.list.insert position out of range 7", list.insert, list, 7, "x")
  fails("vorant.list.insert position out of range 5", vorant.list.insert, vorant.list:new(), 5, "a")
  equal(text(list), "a,false,5,c,2:5")

  equal(list:get(3), 5)
  equal(list:get(0), nil)
  equal(list:get(6), nil)
  list:remove(6)
  list:remove(0)
  equal(list:size(), 5)
  list:remove(2)
  equal(text(list), "a,5,c,2:4")
  list:remove(4)
  equal(text(list), "a,5,c:3")

  local copied = list:copy()
  equal(getmetatable(copied), vorant.list)
  copied:insert("d")
  equal(text(copied), "a,5,c,d:4")
  equal(text(list), "a,5,c:3")
  copied:clear()
  equal(text(copied), ":0")

  local numbers = vorant.list.new()
  for _, number in ipairs({ 3, 1, 2 }) do numbers:insert(number) end
  numbers:sort()
  equal(text(numbers), "1,2,3:3")
  numbers:sort(sortDown)
  equal(text(numbers), "3,2,1:3")
  sortUp = sortDown -- the default is whatever bears the name
  vorant.list.sort(copied)
  numbers:sort()
  equal(text(numbers), "3,2,1:3")

  numbers.table[2] = nil -- iterate ends at a hole, size does not
  equal(text(numbers), "3:3")
  fails("attempt to call", numbers.iterate, numbers, nil)
end
