-- The rules about a job as a whole: what it subscribes to and hears of, orders that nothing holds back, and globals that
-- nobody reads.

local habits = {}
checker.habits = habits

-- Of each callback the functions by which a script asks for it, with their classes: { OnPrice = { { class, function } } }.
-- Of each such function the callbacks, and the properties by which a script reads the same without one.
local needs, gives = {}, {}
local read = { OnPrice = "price", OnMarketDepth = "depth", OnProductState = "state", OnPosition = "position",
               OnPriceTradeVolumes = "priceTradeVolumes" }

for _, row in ipairs(members.callbacks.rows) do
  for _, name in ipairs(row.needs and row.names or {}) do
    needs[name] = {}
    for i, need in ipairs(row.needs) do
      local object, method = need:match("^(%a+)%.(%a+)$")
      local class = members.byType[object].name
      needs[name][i] = { class = class, method = method, text = object .. ":" .. method }
      local key = class .. ":" .. method
      gives[key] = gives[key] or {}
      table.insert(gives[key], name)
    end
  end
end

-- The calls object:method() of a job, by method, each with the object's class, if it is known.
function habits.collect(job, file, node)
  if node.tag == "Invoke" then
    local method = node[2][1]
    job.invoked[method] = job.invoked[method] or {}
    table.insert(job.invoked[method], { node = node, file = file })
  elseif node.tag == "Index" and node[2].tag == "String" then
    job.named[node[2][1]] = true
  elseif node.tag == "Call" and node[1].tag == "Index" and node[1][2].tag ~= "String" then
    job.isIndexed = true -- product["subscribe" .. what](product)
  end
end

local function asksFor(job, need)
  for _, call in ipairs(job.invoked[need.method] or {}) do
    local class = job.types:of(call.node[1])
    if class == nil or class == need.class then return true end
  end
  return job.named[need.method]
end

local function tellUnheard(job, name, sets)
  local texts = {}
  for i, need in ipairs(needs[name]) do
    if asksFor(job, need) then return end
    texts[i] = need.text
  end
  for _, set in ipairs(sets) do
    if set.value and set.value.tag ~= "Nil" then
      set.file.say(set.node, "callback-unsubscribed", ("nothing asks for %s: %s does"):format(
        name, table.concat(texts, ", or ")))
    end
  end
end

local function isHeard(job, callbacks)
  for _, name in ipairs(callbacks) do
    if job.sets[name] or job.texts[name] or job.misspelt[name] or (read[name] and job.named[read[name]]) then return true end
  end
  return false
end

-- Orders may need the market that is asked for.
local traded = { ["nxAlgoProductObject:subscribe"] = true, ["nxAlgoProductObject:subscribePrice"] = true,
                 ["nxAlgoProductObject:subscribeMarketDepth"] = true }

-- Where what comes of it can be read elsewhere, too, the script may have asked for that.
local silent = { ["nxAlgoVorantJobObject:subscribe"] = true, ["nxAlgoTickDataCollectionObject:subscribe"] = true,
                 ["nxAlgoEventWindowObject:start"] = true }

local function tellUnused(job)
  for method, calls in pairs(job.invoked) do
    for _, call in ipairs(calls) do
      local key = tostring(job.types:of(call.node[1])) .. ":" .. method
      local isOpen = silent[key] or (job.invoked.createOrder and traded[key])
      if gives[key] and not isOpen and not isHeard(job, gives[key]) then
        call.file.say(call.node[2], "subscription-unused", ("nothing in the script hears of it: there is no %s"):format(
          table.concat(gives[key], ", and no ")))
      end
    end
  end
end

-- A collection in a variable of its own that is never asked to go on.
local function tellCollections(job, file, node)
  for i, target in ipairs(node[1]) do
    local value = node[2] and node[2][i]
    local isCollection = value and value.tag == "Invoke" and value[2][1] == "createTickDataCollection"
    local key = target.tag == "Id" and (target.var or target[1])
    if isCollection and key and not job.subscribed[key] and not job.escaped[key] then
      file.say(value[2], "collection-unsubscribed", ("'%s' is never asked to subscribe, so no bar will come to it"):format(
        target[1]))
    end
  end
end

-- What becomes of variables: `subscribed` of those with a call of subscribe, `escaped` of those that are used as a value.
function habits.collectVariables(job, node, isValue)
  local object = node.tag == "Invoke" and node[1]
  if object and object.tag == "Id" then
    object.isObject = true
    if node[2][1] == "subscribe" then job.subscribed[object.var or object[1]] = true end
  elseif node.tag == "Index" and node[1].tag == "Id" then
    node[1].isObject = true
    if node[2].tag == "String" and node[2][1] == "subscribe" then job.subscribed[node[1].var or node[1][1]] = true end
  elseif node.tag == "Id" and isValue and not node.isObject then
    job.escaped[node.var or node[1]] = true
  end
end

-- The orders that each call of a function makes: those in front of which it neither decides nor returns.
local function findOrder(job, body, depth)
  for _, statement in ipairs(body) do
    local tag = statement.tag
    if tag == "Return" then return habits.orderIn(job, statement, depth) end
    if tag == "If" or tag == "While" or tag == "Fornum" or tag == "Forin" or tag == "Repeat" then return nil end
    if tag == "Do" then
      local order, isEnd = findOrder(job, statement, depth)
      if order or isEnd then return order, isEnd end
    else
      local order = habits.orderIn(job, statement, depth)
      if order then return order end
    end
  end
end

local function bodyOf(job, callee)
  local entry = callee.tag == "Id" and job.uses[callee.var or callee[1]]
  return entry and #entry.functions == 1 and not job.isDynamic and entry.functions[1][2]
end

function habits.orderIn(job, node, depth)
  if node.tag == "Function" then return nil end
  if node.tag == "Op" and (node[1] == "and" or node[1] == "or") then return habits.orderIn(job, node[2], depth) end
  if node.tag == "Invoke" and node[2][1] == "createOrder" then return node end
  local body = node.tag == "Call" and depth < 4 and bodyOf(job, node[1])
  if body then
    local order = findOrder(job, body, depth + 1)
    if order then return node end
  end
  for _, child in ipairs(node) do
    local order = type(child) == "table" and habits.orderIn(job, child, depth)
    if order then return order end
  end
end

local often = { OnPrice = true, OnMarketDepth = true, OnTickData = true }

-- Whether something in a function makes its next call another: an end, another callback, another subscription.
local function isLast(node)
  if node.tag == "Invoke" and (node[2][1] == "shutdown" or node[2][1] == "stop") then return true end
  if node.tag == "Set" then
    for _, target in ipairs(node[1]) do
      if target.tag == "Id" and often[target[1]] then return true end
    end
  end
  for _, child in ipairs(node) do
    if type(child) == "table" and isLast(child) then return true end
  end
  return false
end

local function tellOrders(job, name, sets)
  for _, set in ipairs(sets) do
    local body = set.value and set.value.tag == "Function" and set.value[2]
    local order = body and not isLast(body) and findOrder(job, body, 0)
    if order then
      set.file.say(order, "unguarded-order", ("each call of %s makes an order here; look first whether there is one"):format(name))
    end
  end
end

local function tellUnread(job, name, sets)
  for _, set in ipairs(sets) do
    if set.depth == 0 or not set.value or set.value.tag == "Function" then return end
  end
  for _, set in ipairs(sets) do
    set.file.say(set.node, "unread-global", ("nothing reads the global '%s'"):format(name))
  end
end

-- job.files, after the first round over all of them.
function habits.tell(job, files)
  for name, sets in pairs(job.sets) do
    if needs[name] and not job.isIndexed then tellUnheard(job, name, sets) end
    if often[name] then tellOrders(job, name, sets) end
    local isOther = not checker.callbacks[name] and not job.globals[name] and not environment.removed[name]
    if isOther and not job.reads[name] and not job.texts[name] and not job.isDynamic then tellUnread(job, name, sets) end
  end
  if not job.isIndexed then tellUnused(job) end
  for _, file in ipairs(files) do
    job.walk(file.state.ast, 0, function(node)
      if node.tag == "Set" or node.tag == "Local" then tellCollections(job, file, node) end
    end)
  end
end
