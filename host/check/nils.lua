-- The rule about properties that are nil while the market has none: calculating with one that nothing has looked at
-- ends the callback. A look is a condition that names the property, one that is there together with it, or a function
-- of the object, as price:isLast().

local rules = checker.rules

-- What is there together: bidPrice and bidVolume; of other objects than prices, all.
local function stemOf(class, member)
  if class ~= "nxAlgoPriceObject" then return "" end
  return member:gsub("Price$", ""):gsub("Volume$", "")
end

-- An expression as a text that is the same where it means the same; nil for what may change with each read.
local function keyOf(node)
  if node.tag == "Id" then return node.var and tostring(node.var) or "global " .. node[1] end
  if node.tag == "Index" and node[2].tag == "String" then
    local object = keyOf(node[1])
    return object and object .. "." .. node[2][1]
  end
  if node.tag == "Paren" then return keyOf(node[1]) end
end

-- The keys that a look at a condition, or at any other expression, tells something of.
local function looksAt(job, node, note)
  if node.tag == "Index" and node[2].tag == "String" then
    local class, object = job.types:of(node[1]), keyOf(node[1])
    if class and object then note(object .. "/" .. stemOf(class, node[2][1])) end
  elseif node.tag == "Invoke" then
    local object = keyOf(node[1])
    if object then note(object .. "/*") end
  end
  local key = keyOf(node)
  if key then note(key) end
  for _, child in ipairs(node.tag ~= "Function" and node or {}) do
    if type(child) == "table" then looksAt(job, child, note) end
  end
end

-- The places in a file where an expression decides what goes on.
local conditionsOf = {}
function conditionsOf.If(node)
  local conditions = {}
  for i = 1, #node - 1, 2 do
    conditions[#conditions + 1] = node[i]
  end
  return conditions
end
function conditionsOf.While(node) return { node[1] } end
function conditionsOf.Repeat(node) return { node[2] } end
function conditionsOf.Op(node)
  local name = node[1]
  if name == "and" or name == "or" then return { node[2] } end
  return {}
end
function conditionsOf.Call(node)
  return node[1].tag == "Id" and node[1][1] == "assert" and { node[2] } or {}
end

local function compares(node)
  return node.tag == "Op" and (node[1] == "lt" or node[1] == "le" or node[1] == "gt" or node[1] == "ge")
end

-- Of a condition that compares, as `price.bidPrice > 5`, the operands are used, and not looked at.
local function collectLooks(job, file, node)
  for _, condition in ipairs(conditionsOf[node.tag] and conditionsOf[node.tag](node) or {}) do
    local function note(key)
      local before = file.looks[key]
      if not before or condition.offset < before then file.looks[key] = condition.offset end
    end
    local function visit(part)
      if compares(part) then
        -- size > 0 tells of the others; price > 5 tells nothing of itself.
        for i = 2, 3 do
          local value = job.types:valueOf(part[i])
          if not (value and value.isNil) then looksAt(job, part[i], note) end
        end
      elseif part.tag == "Op" and (part[1] == "and" or part[1] == "or" or part[1] == "not") then
        for i = 2, #part do
          visit(part[i])
        end
      else
        looksAt(job, part, note)
      end
    end
    visit(condition)
  end
end

function rules.collectLooks(job, file, node)
  file.looks = file.looks or {}
  collectLooks(job, file, node)
end

-- The property that an operand reads, by itself or by a local that is nothing else.
local function propertyOf(job, node)
  if node.tag == "Paren" then return propertyOf(job, node[1]) end
  if node.tag == "Index" and node[2].tag == "String" then return node, { keyOf(node) } end
  if node.tag ~= "Id" or not node.var or not checker.isPlain(node.var) then return nil end
  local values = checker.valuesOf(node.var)
  if #values ~= 1 or not values[1] or values[1].tag ~= "Index" or values[1][2].tag ~= "String" then return nil end
  return values[1], { keyOf(node), keyOf(values[1]) }
end

local function rootOf(node)
  return node.tag == "Index" and rootOf(node[1]) or node
end

-- What lives longer than a call may be looked at by whoever calls; what a function is given by those that call it.
local function isLookedAt(job, file, index, keys, offset)
  local object, class = keyOf(index[1]), job.types:of(index[1])
  local var = rootOf(index).var
  if not object or (var and var.type == "arg" and not var.class) then return true end
  if not (var and var.line.parent) then offset = math.huge end
  keys[#keys + 1] = object .. "/*"
  keys[#keys + 1] = object .. "/" .. stemOf(class, index[2][1])
  for _, key in ipairs(keys) do
    local at = file.looks[key]
    if at and at <= offset then return true end
  end
  return false
end

local used = { lt = true, le = true, gt = true, ge = true, concat = true }

-- Beside a look in the same expression the use comes after it: `price.bidPrice and price.bidPrice + 1`.
function rules.nilOperands(job, file, node)
  if not checker.arithmetic[node[1]] and not used[node[1]] then return end
  for i = 2, #node do
    local value = job.types:valueOf(node[i])
    local index, keys = propertyOf(job, node[i])
    if value and value.isNil and index and not isLookedAt(job, file, index, keys, node[i].offset) then
      local class = checker.classes[job.types:of(index[1])]
      file.say(node[i], "nil-value", ("'%s' of %s is nil while there is none, and this fails then"):format(
        index[2][1], class.label))
    end
  end
end
