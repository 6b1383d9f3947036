-- The rules about values: what a function is given, what is calculated and compared.

local rules = checker.rules

-- What a parameter takes, for messages.
local function wanted(type)
  local names = {}
  for i, alternative in ipairs(type.alternatives) do
    local kind = alternative.kind
    names[i] = kind == "constant" and "text" or members.tables[kind] and "table" or checker.kinds[kind] or kind
  end
  return "a " .. names[1]
end

-- Whether Lua's conversions let the library have a value where it wants that type.
local function takes(type, value)
  for _, alternative in ipairs(type.alternatives) do
    local kind = alternative.kind
    if kind == "any" or kind == "function" or value.kind == kind then return true end
    if kind == "number" and checker.isNumeric(value) then return true end
    if (kind == "text" or kind == "constant") and (value.kind == "text" or value.kind == "number") then return true end
    if (members.tables[kind] or checker.kinds[kind] == "table") and value.kind == "table" then return true end
  end
  return false
end

-- The form of a function that takes so many arguments, where only one does.
local function formFor(row, count)
  local found
  for _, form in ipairs(row.forms or {}) do
    if count >= form.least and count <= form.most then
      if found then return nil end
      found = form
    end
  end
  return found
end

-- The arguments of a call begin at the node's `first` child; name: as the author wrote it.
function rules.arguments(job, say, node, first, row, name)
  local form = row and formFor(row, #node - first + 1)
  for i, parameter in ipairs(form and form.parameters or {}) do
    local argument = node[first + i - 1]
    local value = argument and job.types:valueOf(argument)
    if value and value.kind == "nil" and parameter.isOptional then value = nil end
    if value and not takes(parameter.type, value) then
      say(argument, "argument-type", ("argument %d of '%s', %s, is %s, not %s"):format(
        i, name, parameter.name, wanted(parameter.type), checker.describe(value)))
    end
  end
end

local verbs = { concat = "joined" }

local function checkCalculated(job, say, node)
  local isConcat = node[1] == "concat"
  for i = 2, #node do
    local value = job.types:valueOf(node[i])
    local isGood = not value or checker.isNumeric(value) or (isConcat and value.kind == "text")
    if not isGood then
      say(node[i], "operand-type", ("%s cannot be %s"):format(checker.describe(value), verbs[node[1]] or "calculated with"))
    end
  end
end

local ordered = { lt = true, le = true, gt = true, ge = true }

local function checkOrdered(say, node, left, right)
  if left.kind == right.kind and (left.kind == "number" or left.kind == "text") then return end
  say(node, "operand-type", ("%s cannot be compared with %s"):format(checker.describe(left), checker.describe(right)))
end

-- A text that the other side never is.
local function neverIs(value, other)
  return value.constants and other.constant and not value.constants[other.constant]
end

local function listOf(constants)
  local names = {}
  for name in pairs(constants) do
    names[#names + 1] = ('"%s"'):format(name)
  end
  table.sort(names)
  return table.concat(names, ", ")
end

-- Each read of a property, and each call, gives a table of its own.
local function isFresh(node, value)
  return value.kind == "object" and checker.bound[value.class] and (node.tag == "Index" or node.tag == "Invoke")
end

-- a - b is 0 only where they are equal.
local function isPriceLike(node, value)
  return value.unit == "price" or node.tag == "Number" and tonumber(node[1]) ~= 0
end

local function isComputedPrice(value)
  return value.isComputed and value.unit == "price"
end

local function isNegation(node)
  return node.tag == "Op" and node[1] == "not"
end

local function checkEqual(say, node, left, right)
  if left.kind ~= right.kind then
    -- Of a negation luacheck tells.
    if left.kind ~= "nil" and right.kind ~= "nil" and not isNegation(node[2]) then
      say(node, "never-equal", ("%s is never equal to %s"):format(checker.describe(left), checker.describe(right)))
    end
  elseif neverIs(left, right) or neverIs(right, left) then
    local constants = left.constants or right.constants
    say(node, "never-equal", ("this is one of %s, never %s"):format(
      listOf(constants), checker.describe(left.constant and left or right)))
  elseif isFresh(node[2], left) or isFresh(node[3], right) then
    say(node, "never-equal", ("each read gives a new table for %s, so these are never equal: compare by id"):format(
      checker.describe(left)))
  elseif isComputedPrice(left) and isPriceLike(node[3], right) or isComputedPrice(right) and isPriceLike(node[2], left) then
    say(node, "computed-price",
      "a computed price may differ in its last bits: compare the difference with less than a tick")
  end
end

function rules.operator(job, say, node)
  local name = node[1]
  if checker.arithmetic[name] or name == "concat" then return checkCalculated(job, say, node) end
  local left, right = job.types:valueOf(node[2]), node[3] and job.types:valueOf(node[3])
  if not left or not right then return end
  if ordered[name] then checkOrdered(say, node, left, right) end
  if name == "eq" or name == "ne" then checkEqual(say, node, left, right) end
end
