-- Which values the parameters of a script's own functions are given, where all calls of the function can be seen:
-- `var.given` of a parameter is a list of expressions then, false among them for what cannot be told.

local uses = {}
checker.uses = uses

-- What is known of a function by the variable that holds it, a local or the name of a global.
local function entryOf(job, key)
  local entry = job.uses[key]
  if not entry then
    entry = { calls = {}, functions = {}, callbacks = {} }
    job.uses[key] = entry
  end
  return entry
end

local function keyOf(node)
  return node.tag == "Id" and (node.var or node[1]) or nil
end

local function collectAssigned(job, targets, values)
  for i, target in ipairs(targets) do
    local key, value = keyOf(target), values and values[i]
    target.isTarget = true
    if key and value and value.tag == "Function" then
      table.insert(entryOf(job, key).functions, value)
    elseif key and value then
      entryOf(job, key).isOpen = true
    end
    -- OnOrderCancelled = forget
    local callback = value and value.tag == "Id" and not target.var and checker.callbacks[target[1]]
    if callback then
      value.isTarget = true
      table.insert(entryOf(job, keyOf(value)).callbacks, callback)
    end
  end
end

local collectFor = {}
function collectFor.Set(job, node) collectAssigned(job, node[1], node[2]) end
function collectFor.Local(job, node) collectAssigned(job, node[1], node[2]) end
function collectFor.Localrec(job, node) collectAssigned(job, node[1], node[2]) end
function collectFor.Call(job, node)
  local key = keyOf(node[1])
  if not key then return end
  node[1].isTarget = true
  table.insert(entryOf(job, key).calls, node)
end
-- Any other use may call it with anything.
function collectFor.Id(job, node)
  if not node.isTarget then entryOf(job, keyOf(node)).isOpen = true end
end

-- Called on each node, from the outside in.
function uses.collect(job, node)
  local collect = collectFor[node.tag]
  if collect then collect(job, node) end
end

local function argumentOf(call, position)
  local argument = call[position + 1]
  if argument == nil then return false end
  local isOpen = position + 1 == #call and (argument.tag == "Call" or argument.tag == "Invoke" or argument.tag == "Dots")
  return not isOpen and argument or argument.tag ~= "Dots" and argument or false
end

-- After all files.
function uses.resolve(job)
  for key, entry in pairs(job.uses) do
    local body = #entry.functions == 1 and entry.functions[1]
    local isCallback = type(key) == "string" and checker.callbacks[key]
    if body and not entry.isOpen and not isCallback and not job.isDynamic then
      for position, parameter in ipairs(body[1]) do
        local given = {}
        for _, call in ipairs(entry.calls) do
          given[#given + 1] = argumentOf(call, position)
        end
        for _, classes in ipairs(entry.callbacks) do
          given[#given + 1] = classes[position] and { tag = "Given", class = classes[position] } or false
        end
        if parameter.var and #given > 0 then parameter.var.given = given end
      end
    end
  end
end
