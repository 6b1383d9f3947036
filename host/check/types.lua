-- The classes that a script meets, and which of them an expression gives, as far as its text tells.

local classes = {}
checker.classes = classes

local function addClass(name, label, functions, properties)
  local class = classes[name] or { label = label, functions = {}, properties = {}, members = {} }
  classes[name] = class
  for member in pairs(functions) do
    class.functions[member] = (checker.signatures[name] or {})[member] or { 0, math.huge }
    class.members[member] = true
  end
  for member, access in pairs(properties) do
    class.properties[member] = access
    class.members[member] = true
  end
end

-- nxAlgoMarketDepthObject is marketDepth in messages.
local function labelOf(className)
  local label = className:match("^nxAlgo(.*)Object$") or className
  return label:sub(1, 1):lower() .. label:sub(2)
end

for name, class in pairs(checker.bound) do
  addClass(name, labelOf(name), class.functions, class.properties)
end

-- The prelude's containers are classes too: an instance has their functions and two fields.
for name, class in pairs(environment.bound.vorant.fields) do
  addClass("vorant." .. name, "vorant." .. name, class, { table = "rw", mySize = "rw" })
end

local function merge(one, other)
  local all = {}
  for _, source in ipairs({ one, other }) do
    for name, description in pairs(source) do
      all[name] = description
    end
  end
  return all
end

-- What a script finds from OnInit on, by name, and what a file of tests does.
checker.globals = merge(environment.standard, environment.bound)
checker.testGlobals = merge(environment.standard, checker.tests)

-- The types of one job: assigned(name) gives the expressions that its files assign to a global, false among them
-- where the value cannot be told; globals: what the files find.
local Types = {}
Types.__index = Types
checker.Types = Types

function Types.new(assigned, globals)
  return setmetatable({ assigned = assigned, globals = globals }, Types)
end

-- The one class of several expressions, nil ones aside.
function Types:_ofAll(expressions)
  local result
  for _, expression in ipairs(expressions) do
    if expression == false then return nil end
    if expression.tag ~= "Nil" then
      local class = self:of(expression)
      if class == nil or (result ~= nil and class ~= result) then return nil end
      result = class
    end
  end
  return result
end

-- The expressions that are assigned to a local.
local function valuesOf(var)
  local values = {}
  for _, value in ipairs(var.values) do
    if not value.empty then
      local expression = false
      for i, target in ipairs(value.item.lhs) do
        if target == value.var_node then expression = value.item.rhs and value.item.rhs[i] or false end
      end
      values[#values + 1] = expression
    end
  end
  return values
end

checker.valuesOf = valuesOf

-- A local that is nothing but assigned to.
function checker.isPlain(var)
  return var.type == "var" or var.type == "func"
end

local infer = {}

function infer.Id(self, node)
  local var, name = node.var, node[1]
  if var and var.type == "arg" then
    if #var.values ~= 1 then return nil end
    return var.class or var.given and self:_ofAll(var.given) or nil
  end
  if var then return self:_ofAll(valuesOf(var)) end
  local assigned = self.assigned(name)
  if assigned then return self:_ofAll(assigned) end
  return self.globals[name] and self.globals[name].class
end

function infer.Paren(self, node)
  return self:of(node[1])
end

function infer.Index(self, node)
  return (checker.objects[self:of(node[1])] or {})[node[2][1]]
end

local function resultOf(self, object, key)
  local class = self:of(object)
  local signature = class and classes[class].functions[key[1]]
  if signature then return signature[3] end
  -- vorant.NAME.new() gives an instance; vorant.NAME itself is none.
  local isContainer = object.tag == "Index" and object[1].tag == "Id" and object[1][1] == "vorant" and key[1] == "new"
  local container = isContainer and "vorant." .. tostring(object[2][1])
  return container and classes[container] and container
end

function infer.Invoke(self, node)
  return resultOf(self, node[1], node[2])
end

function infer.Call(self, node)
  local callee = node[1]
  return callee.tag == "Index" and resultOf(self, callee[1], callee[2]) or nil
end

-- The name of the class that an expression gives, or nil.
function Types:of(node)
  if node.class == nil then
    node.class = false  -- a value that depends on itself has no class
    node.class = infer[node.tag] and infer[node.tag](self, node) or false
  end
  return node.class or nil
end
