-- Loaded in front of a file of tests: what its functions describe is written down, as JSON, for the program
-- that runs them.

local sheet -- of the test that is being described
local tests, names = {}, {} -- the functions by name, and their names in the order of the file

local function lineOf(test)
  return debug.getinfo(test, "S").linedefined
end

-- Tests are kept out of _G, so that a second one of a name does not take the place of the first without a word.
local function keepTest(globals, name, value)
  if type(name) ~= "string" or not name:match("^Test") then return rawset(globals, name, value) end
  if not name:match("^[%w_]+$") then error("the name of a test is letters, digits and _", 2) end
  local isTest, old = type(value) == "function", tests[name]
  if isTest and type(old) == "function" then
    error(("there is a %s already, in line %d; the second would replace it"):format(name, lineOf(old)), 2)
  end
  if isTest then table.insert(names, name) end
  tests[name] = value
end
setmetatable(_G, { __index = tests, __newindex = keepTest, __metatable = false })

-- The line of the test file that called the function of this file that asks.
local function here()
  local _, place = pcall(error, "", 4)
  return tonumber(tostring(place):match(":(%d+)")) or 0
end

local function need(value, name, form)
  if type(value) ~= "table" then error(name .. " takes a table, as in " .. form, 3) end
  if not sheet then error(name .. " is for a function whose name begins with Test", 3) end
end

-- script "cross.lua" { length = 3 }; the parameters may be left out.
function script(path)
  if type(path) ~= "string" then error('script takes the path of one, as in script "cross.lua"', 2) end
  if not sheet then error("script is for a function whose name begins with Test", 2) end
  sheet.script = { path = path, parameters = {}, line = here() }
  local own = sheet.script
  return function(parameters)
    if type(parameters) ~= "table" then
      error('parameters are a table, as in script "cross.lua" { length = 3 }', 2)
    end
    own.parameters = parameters
  end
end

function market(content)
  need(content, "market", 'market { "09:30:00 100.00 5 x 100.25 5" }')
  table.insert(sheet.markets, { line = here(), content = content })
end

function expect(content)
  need(content, "expect", "expect { position = 1 }")
  table.insert(sheet.expects, { line = here(), content = content })
end

local escapes = { ['"'] = '\\"', ["\\"] = "\\\\" }
local function quote(text)
  text = text:gsub('["\\]', escapes):gsub("%c", function(c) return ("\\u%04x"):format(c:byte()) end)
  return '"' .. text .. '"'
end

-- A table is {"list": [...], "keys": {...}}: one of Lua is both.
local function encode(value, depth)
  local kind = type(value)
  if kind == "string" then return quote(value) end
  if kind == "boolean" then return tostring(value) end
  if kind == "number" then return value - value == 0 and ("%.14g"):format(value) or "null" end
  if kind ~= "table" then error("a " .. kind .. " cannot be told; there may be numbers, texts, booleans and tables", 0) end
  if depth > 10 then error("tables lie too deep in each other", 0) end
  local list, keys = {}, {}
  for i, each in ipairs(value) do list[i] = encode(each, depth + 1) end
  for key, each in pairs(value) do
    if type(key) == "string" then
      table.insert(keys, quote(key) .. ":" .. encode(each, depth + 1))
    elseif type(key) ~= "number" or not list[key] then
      error("a table has a place of its list that cannot be reached, or a key that is no text", 0)
    end
  end
  table.sort(keys)
  return '{"list":[' .. table.concat(list, ",") .. '],"keys":{' .. table.concat(keys, ",") .. "}}"
end

function listTests(exchange)
  exchange.text = table.concat(names, "\n")
end

function describeTest(exchange)
  local test = tests[exchange.text]
  sheet = { markets = {}, expects = {}, line = lineOf(test) }
  test()
  exchange.text = encode(sheet, 0)
end
