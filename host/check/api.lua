-- What the rules ask of the members: how many arguments a function takes, which class an object comes from, and the keys
-- of the functions that take a table.

local function classOf(type)
  local only = #type.alternatives == 1 and members.byType[type.alternatives[1].kind]
  return only and only.name
end

-- The callbacks with the classes of their arguments; false is a text.
checker.callbacks = {}
for _, row in ipairs(members.callbacks.rows) do
  for _, name in ipairs(row.names) do
    local classes = {}
    for i, parameter in ipairs(row.forms[1].parameters) do
      classes[i] = classOf(parameter.type) or false
    end
    checker.callbacks[name] = classes
  end
end

-- By class and function: fewest and most arguments, and the class of the result. Where there is no most, further
-- arguments are ignored by contract. By class and property: the class of the object that it gives.
checker.signatures, checker.objects = {}, {}

local function signatureOf(row)
  local least, most = math.huge, 0
  for _, form in ipairs(row.forms) do
    least, most = math.min(least, form.least), math.max(most, form.most)
  end
  local result = row.forms[1].results[1]
  return { least, most, result and classOf(result) or nil }
end

for name, section in pairs(members.classes) do
  local signatures, objects = {}, {}
  checker.signatures[name], checker.objects[name] = signatures, objects
  for _, row in ipairs(checker.bound[name] and section.rows or {}) do
    for _, member in ipairs(row.names) do
      if row.forms then
        signatures[member] = signatureOf(row)
      else
        objects[member] = classOf(row.type)
      end
    end
  end
end

-- What a file of tests calls, by name its row; a row has no class, as descriptions of other globals may.
checker.tests = {}
for _, row in ipairs(members.tests.rows) do
  checker.tests[row.names[1]] = row
end
checker.signatureOf = signatureOf

-- The functions that take a table. Of each key the kinds of constant that are read: "text", which a number may be
-- too, "number", "boolean", or the texts that are known. required: the keys that must be there. Keys are free where
-- open is set. numeric: texts there have to be numbers. mixed: the type where a
-- table is read as well as other values. item: the type of what has no key. beside: a key with which only those in read are read. positional: the texts of the form without a table.
checker.tables = {}

local function constantsOf(type)
  local texts = {}
  for _, alternative in ipairs(type.alternatives) do
    if alternative.kind == "constant" then texts[#texts + 1] = alternative.value end
    texts.isOpen = texts.isOpen or alternative.kind == "text"
  end
  return #texts > 0 and texts or nil
end

local isTable = { list = true, values = true, texts = true, rows = true }

local function isMixed(type)
  for _, alternative in ipairs(type.alternatives) do
    if isTable[alternative.kind] then return true end
  end
  return false
end

local function kindOf(type)
  local constants = constantsOf(type)
  if constants then return constants end
  for _, alternative in ipairs(type.alternatives) do
    if alternative.kind == "text" then return "text" end
  end
  return type.alternatives[1].kind
end

for name, section in pairs(members.tables) do
  local rule = { keys = {}, required = {}, read = {}, numeric = {}, mixed = {} }
  checker.tables[name] = rule
  for _, row in ipairs(section.rows) do
    rule.beside = rule.beside or row.beside
    for _, key in ipairs(row.names) do
      if key == "*" then
        rule.open = true
      elseif key == "..." then
        rule.item = row.type
      else
        rule.mixed[key] = isMixed(row.type) and row.type or nil
        rule.keys[key] = kindOf(row.type)
        rule.read[key] = not row.beside
        rule.numeric[key] = row.type.alternatives[1].kind == "number"
        if row.isRequired then table.insert(rule.required, key) end
      end
    end
  end
end

for _, section in pairs(members.classes) do
  for _, row in ipairs(section.rows) do
    local rule, short = checker.tables[row.names[1]], row.forms and row.forms[2]
    if rule and short then
      rule.positional = {}
      for _, parameter in ipairs(short.parameters) do
        table.insert(rule.positional, constantsOf(parameter.type))
      end
    end
  end
end
