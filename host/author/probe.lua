-- Run as a job of the real engine, to find out what a script meets there. Each line that it logs is a Lua
-- statement over the table `environment`: which globals are there when a script is loaded, which of them are gone
-- by OnInit, which are there only then and of which class they are.

local loaded = {}
for name, value in pairs(_G) do
  loaded[name] = value
end

local function isName(key)
  return type(key) == "string" and key:match("^[%a_][%w_]*$")
end

local function fieldsOf(value, depth)
  local fields = {}
  for key, field in pairs(value) do
    if isName(key) and key ~= "__index" then
      local nested = type(field) == "table" and depth > 0 and fieldsOf(field, depth - 1) or "{}"
      fields[#fields + 1] = key .. "=" .. nested
    end
  end
  return "{" .. table.concat(fields, ",") .. "}"
end

local function describe(value, classes)
  local class = type(value) == "table" and classes[getmetatable(value)]
  if class then return ("{class=%q}"):format(class) end
  if type(value) == "table" and value ~= _G then return "{fields=" .. fieldsOf(value, 1) .. "}" end
  return "{}"
end

function OnInit()
  local classes = {}
  for name, value in pairs(debug.getregistry()) do
    if type(name) == "string" and name:match("^nxAlgo") then
      classes[value] = name
      job:logText(("environment.registered[%q] = true"):format(name))
    end
  end
  for name, value in pairs(loaded) do
    local list = _G[name] == nil and "removed" or "standard"
    job:logText(("environment.%s[%q] = %s"):format(list, name, describe(value, classes)))
  end
  for name, value in pairs(_G) do
    if loaded[name] == nil and name ~= "OnInit" then
      job:logText(("environment.bound[%q] = %s"):format(name, describe(value, classes)))
    end
  end
end
