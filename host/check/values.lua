-- What an expression gives, as far as its text tells: { kind, class, unit, constant, constants, isNil, isComputed }. kind is
-- "text", "number", "boolean", "table", "function", "nil" or "object", which has a class. A text has the constants that it may
-- be, where they are known. isNil: it is nil while the market has none. isComputed: an arithmetic result.

local Types = checker.Types
local NUMBER, TEXT, BOOLEAN = { kind = "number" }, { kind = "text" }, { kind = "boolean" }

-- By class and member its row, see read_members.lua.
local rows = {}
for name, section in pairs(members.classes) do
  rows[name] = {}
  for _, row in ipairs(checker.bound[name] and section.rows or {}) do
    for _, member in ipairs(row.names) do
      rows[name][member] = row
    end
  end
end

function checker.rowOf(class, member)
  return rows[class] and rows[class][member]
end

local kinds = { number = "number", text = "text", constant = "text", boolean = "boolean" }
for _, kind in ipairs({ "rows", "texts", "list", "values" }) do
  kinds[kind] = "table"
end
checker.kinds = kinds

local function ofType(type)
  if type == nil or type.isMany then return nil end
  local value
  for _, alternative in ipairs(type.alternatives) do
    local class = members.byType[alternative.kind]
    local kind = class and "object" or kinds[alternative.kind]
    if kind == nil or (value and value.kind ~= kind) then return nil end
    value = value or { kind = kind, class = class and class.name, unit = alternative.unit, isNil = type.isNil == "now" }
    if alternative.kind == "constant" then
      value.constants = value.constants or {}
      value.constants[alternative.value] = true
    end
  end
  return value
end

-- The one kind of several expressions, nil ones aside.
local function ofAll(self, expressions)
  local result
  for _, expression in ipairs(expressions) do
    if expression == false then return nil end
    if expression.tag ~= "Nil" then
      local value = self:valueOf(expression)
      if not value or (result and (result.kind ~= value.kind or result.class ~= value.class)) then return nil end
      if result then
        result = { kind = value.kind, class = value.class, unit = result.unit == value.unit and value.unit or nil }
      else
        result = value
      end
    end
  end
  if not result then return nil end
  -- A nil beside the others: who reads it may know which it is.
  return #expressions > 1 and { kind = result.kind, class = result.class, unit = result.unit } or result
end

-- The expressions that a function returns, nil unless each way out of it returns one.
local function returnsOf(body)
  local values = {}
  local function collect(node)
    if node.tag == "Return" then
      if #node ~= 1 then return false end
      values[#values + 1] = node[1]
    end
    for _, child in ipairs(node) do
      if type(child) == "table" and child.tag ~= "Function" and collect(child) == false then return false end
    end
  end
  local isWhole = collect(body) ~= false and #body > 0 and body[#body].tag == "Return"
  return isWhole and values or nil
end

local valueFor = {}

function valueFor.String(_, node)
  return { kind = "text", constant = node[1] }
end
function valueFor.Number() return NUMBER end
function valueFor.True() return BOOLEAN end
function valueFor.False() return BOOLEAN end
function valueFor.Nil() return { kind = "nil" } end
function valueFor.Table() return { kind = "table" } end
function valueFor.Function() return { kind = "function" } end
function valueFor.Paren(self, node) return self:valueOf(node[1]) end

local function ofClass(class)
  return class and { kind = "object", class = class }
end

-- What a function was given: who calls it may have looked whether it is nil.
local function ofParameter(self, node)
  local value = not node.var.class and node.var.given and #node.var.values == 1 and ofAll(self, node.var.given)
  return value and { kind = value.kind, class = value.class, unit = value.unit, constant = value.constant }
    or ofClass(self:of(node))
end

function valueFor.Given(_, node) return ofClass(node.class) end

function valueFor.Id(self, node)
  local var = node.var
  if var and var.type == "loopi" then return NUMBER end
  if var and var.type == "arg" then return ofParameter(self, node) end
  if var and not checker.isPlain(var) then return nil end
  if var then return ofAll(self, checker.valuesOf(var)) end
  return self.assigned(node[1]) and ofAll(self, self.assigned(node[1])) or ofClass(self:of(node))
end

function valueFor.Index(self, node)
  local class = node[2].tag == "String" and self:of(node[1])
  local row = class and checker.rowOf(class, node[2][1])
  return row and ofType(row.type) or nil
end

local numeric = { floor = 1, ceil = 1, abs = 1, sqrt = 1, max = 1, min = 1, random = 1, exp = 1, log = 1, huge = 1 }

local function ofLibrary(library, name)
  if library == "math" then return numeric[name] and NUMBER end
  if library == "string" then return (name == "format" or name == "rep" or name == "upper" or name == "lower") and TEXT end
end

function valueFor.Invoke(self, node)
  local row = checker.rowOf(self:of(node[1]), node[2][1])
  if row and row.forms then return ofType(row.forms[1].results[1]) end
  local object = self:valueOf(node[1])
  return object and object.kind == "text" and ofLibrary("string", node[2][1]) or nil
end

function valueFor.Call(self, node)
  local callee = node[1]
  if callee.tag == "Id" and callee.var then
    local values = checker.isPlain(callee.var) and checker.valuesOf(callee.var) or {}
    local body = #values == 1 and values[1] and values[1].tag == "Function" and values[1][2]
    local results = body and returnsOf(body)
    return results and ofAll(self, results) or nil
  elseif callee.tag == "Id" then
    if self.assigned(callee[1]) then return nil end
    return callee[1] == "tostring" and TEXT or callee[1] == "round" and NUMBER or nil
  elseif callee.tag == "Index" and callee[1].tag == "Id" and not callee[1].var and not self.assigned(callee[1][1]) then
    return ofLibrary(callee[1][1], callee[2][1]) or nil
  end
end

local arithmetic = { add = true, sub = true, mul = true, div = true, mod = true, pow = true, unm = true }
checker.arithmetic = arithmetic

local function isPrice(value)
  return value and value.kind == "number" and value.unit == "price"
end

function valueFor.Op(self, node)
  local name = node[1]
  if arithmetic[name] then
    local left, right = self:valueOf(node[2]), node[3] and self:valueOf(node[3])
    local unit = (isPrice(left) or isPrice(right)) and "price" or nil
    return { kind = "number", unit = unit, isComputed = true }
  elseif name == "concat" then
    return TEXT
  elseif name == "len" then
    return NUMBER
  elseif name == "and" or name == "or" then
    local left, right = self:_valueOf(node[2]), self:valueOf(node[3])
    -- What is left of a test, for the or around it.
    if name == "and" then
      return right and { kind = right.kind, class = right.class, unit = right.unit, isAnd = true }
    end
    if left and right and left.kind == right.kind and left.class == right.class then
      return { kind = right.kind, class = right.class, unit = right.unit }
    end
    return nil
  end
  return BOOLEAN
end

function Types:_valueOf(node)
  if node.value_ == nil then
    node.value_ = false -- a value that depends on itself is not known
    node.value_ = valueFor[node.tag] and valueFor[node.tag](self, node) or false
  end
  return node.value_ or nil
end

-- nil where it cannot be told.
function Types:valueOf(node)
  local value = self:_valueOf(node)
  return value and not value.isAnd and value or nil
end

-- For messages.
function checker.describe(value)
  if value.kind == "object" then
    local label = checker.classes[value.class].label
    return (label:match("^[aeiou]") and "an " or "a ") .. label .. " object"
  end
  if value.constant then return ("'%s'"):format(value.constant) end
  return value.kind == "nil" and "nil" or "a " .. value.kind
end

-- Whether Lua, or the library, takes it for a number.
function checker.isNumeric(value)
  return value.kind == "number" or value.kind == "text" and (not value.constant or tonumber(value.constant) ~= nil)
end
