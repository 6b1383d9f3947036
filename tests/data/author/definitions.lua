-- Whether `definitions` keep to the grammar of annotations, and tell of all that is bound.

local faults = {}
local function fault(number, what)
  faults[#faults + 1] = ("line %d: %s"):format(number, what)
end

-- Takes a type off the front of a text, and gives the rest; nil where there is none.
local takeType

local function takeFunction(text)
  local parameters, rest = text:match("^fun(%b())(.*)$")
  if not parameters then return nil end
  local inner = parameters:sub(2, -2)
  while inner ~= "" do
    local name, type = inner:match("^([%a]+%??): (.*)$")
    inner = name and takeType(type)
    if not inner then return nil end
    inner = inner:gsub("^, ", "")
  end
  return rest:match("^: ") and takeType(rest:sub(3)) or not rest:match("^: ") and rest or nil
end

local names = { string = 1, number = 1, boolean = 1, any = 1, ["nil"] = 1, ["function"] = 1, ["number[][]"] = 1 }

function takeType(text)
  repeat
    local rest = takeFunction(text)
    if not rest then
      local name = text:match('^"[^"]*"') or text:match("^table<string, string|number>") or text:match("^table<string, any>") or text:match("^any%[%]") or text:match("^[%a.]+%[%]%[%]")
        or text:match("^[%a][%a.]*")
      if not name or not (name:match('^"') or name:match("^table<") or names[name] or definitions:find("---@class " .. name .. "\n", 1, true)) then
        return nil
      end
      rest = text:sub(#name + 1)
    end
    rest = rest:gsub("^%?", "")
    local more = rest:match("^|(.*)$")
    text = more or rest
  until not more
  return text
end

local told, class = {}, nil
local parse = {}
function parse.meta(rest) return rest == "" end
function parse.class(rest)
  class = rest
  told[class] = { access = {} }
  return rest:match("^[%a.]+$")
end
function parse.field(rest)
  local name, type = rest:match("^(%w+)%?? (.*)$")
  if not name then return rest:match("^%[string%] ") or rest:match("^%[integer%] ") end
  local text = takeType(type)
  told[class][name] = "property"
  told[class].access[name] = text and text:find("Can be written", 1, true) and "rw" or "r"
  return text and text:match("^ .+%.$")
end
function parse.param(rest)
  local type = rest:match("^[%a.]+%?? (.*)$")
  return type and takeType(type)
end
parse["return"] = function(rest)
  local text = takeType(rest)
  return text and (text == "" or text == " ..." or text:match("^ # .+$"))
end
function parse.type(rest) return takeType(rest) == "" end
function parse.overload(rest) return takeType(rest) == "" end

local number = 0
for line in definitions:gmatch("([^\n]*)\n") do
  number = number + 1
  local tag, rest = line:match("^%-%-%-@(%a+) ?(.*)$")
  local owner, name = line:match("^function ([%a.]*)[:.](%w+)%(.*%) end$")
  if tag then
    if not parse[tag] or not parse[tag](rest) then fault(number, line) end
  elseif name then
    told[told[owner] and owner or "algo." .. owner][name] = "function"
  elseif not line:match("^%-%-") and line ~= "" and not line:match("^local %a+ = {}$") and not line:match("^function %a+%(.*%) end$")
    and not line:match("^[%a.]+ = {}$") and not line:match("^%a+ = nil$") then
    fault(number, line)
  end
end

for name, bound in pairs(checker.bound) do
  local class = told["algo." .. members.classes[name].label]
  for member in pairs(bound.functions) do
    if class[member] ~= "function" then fault(0, name .. " " .. member) end
  end
  for member, access in pairs(bound.properties) do
    if class[member] ~= "property" or class.access[member] ~= access then fault(0, name .. " " .. member) end
  end
end
for name, description in pairs(environment.bound) do
  local isThere = definitions:find("\n" .. name .. " = ", 1, true) or definitions:find("\nfunction " .. name .. "(", 1, true)
  if not isThere then fault(0, "no global " .. name) end
end
for name in pairs({ script = 1, market = 1, expect = 1 }) do
  if not definitions:find("\nfunction " .. name .. "(", 1, true) then fault(0, "no function " .. name) end
end
if #faults > 0 then error(table.concat(faults, "\n"), 0) end
