-- round, sort and copy of plain tables.

local function equal(actual, expected)
  assert(actual == expected, tostring(actual) .. " instead of " .. tostring(expected))
end

function OnInit()
  local rounded = {
    { 2.5, nil, 3 }, { 2.4999, nil, 2 }, { -2.5, nil, -2 }, { -2.6, nil, -3 }, { 0, nil, 0 },
    { 1.25, 1, 1.3 }, { -1.25, 1, -1.2 }, { 1.005, 2, 1 }, { 123.456, 2, 123.46 }, { 123.456, 0, 123 },
    { 155, -1, 155 }, { 155.5, -1, 156 }, { 2.5, 0, 3 },
  }
  for _, row in ipairs(rounded) do
    equal(round(row[1], row[2]), row[3])
  end

  equal(sortUp(1, 2), true)
  equal(sortUp(2, 2), false)
  equal(sortDown(2, 1), true)
  equal(sortDown(2, 2), false)

  local numbers = { 3, 1, 2 }
  equal(select("#", sort(numbers)), 0)
  equal(table.concat(numbers, ","), "1,2,3")
  sort(numbers, sortDown)
  equal(table.concat(numbers, ","), "3,2,1")

  local inner = {}
  local source = setmetatable({ 1, nil, 3, key = inner }, { __index = { hidden = 1 } })
  local copied = copy(source)
  assert(copied ~= source)
  equal(copied[1], 1)
  equal(copied[3], 3)
  equal(copied.key, inner)
  equal(copied.hidden, nil)
  equal(getmetatable(copied), nil)

  equal(mapSize({}), 0)
  equal(mapSize({ 1, nil, 3, key = false }), 3)
  equal(mapSize(source), 3)
end
