-- Whether members.txt tells of all that is bound, and of nothing else. Finds `callbacks`, the names of the engine's, and
-- `sources`, all of its text.

local faults = {}
local function require(condition, ...)
  if not condition then faults[#faults + 1] = table.concat({ ... }, " ") end
end

-- Of each member of a section what it is, after checking that it is told.
local function membersOf(section)
  local kinds = {}
  for _, row in ipairs(section.rows) do
    for _, name in ipairs(row.names) do
      require(not kinds[name], section.name, name, "is told twice")
      require(row.text and row.text:match("^[%u`\"%dxvy].*%.$"), section.name, name, "has no sentence")
      kinds[name] = row.forms and "function" or "property"
    end
  end
  return kinds
end

-- sources without quotes that end where the next begins, so that a text over two lines is one.
local literals = sources:gsub('"%s*"', ""):gsub('\\"', '"')

-- What stands for something else in a text, which the sources put together there.
local gaps = { FUNCTION = true, NAME = true, TEXT = true, REASON = true, VALUE = true, PROPERTY = true, POSITION = true }

local function isRaised(text)
  local cut = text:gsub("%u%u+", function(word) return gaps[word] and "\1" end) .. "\1"
  for part in cut:gmatch("(.-)\1") do
    if not literals:find(part, 1, true) then return false end
  end
  return true
end

local function checkErrors(section)
  for _, row in ipairs(section.rows) do
    for _, name in ipairs(row.names) do
      for _, failure in ipairs(row.errors) do
        require(isRaised(failure.text) or isRaised((failure.text:gsub("FUNCTION", name))), section.name, name,
          "no source raises:", failure.text)
      end
    end
  end
end

for name, class in pairs(checker.bound) do
  local section = members.classes[name]
  require(section and section.text, name, "is not described")
  require(environment.registered[name], name, "is described and not registered")
  local kinds = section and membersOf(section) or {}
  for member in pairs(class.functions) do
    require(kinds[member] == "function", name, member, "is a function that members.txt does not tell of")
    kinds[member] = nil
  end
  for member in pairs(class.properties) do
    require(kinds[member] == "property", name, member, "is a property that members.txt does not tell of")
    kinds[member] = nil
  end
  for member in pairs(kinds) do
    require(false, name, member, "is in members.txt only")
  end
end
for name in pairs(environment.registered) do
  require(checker.bound[name], name, "is registered; add it to nxScriptNames.cpp")
end

for _, section in ipairs(members.list) do
  require(section.name:match("^vorant%.") or section.kind ~= "class" or checker.bound[section.name], section.name, "is no class")
  checkErrors(section)
  local function check(type, where)
    for _, alternative in ipairs(type.alternatives) do
      local kind = alternative.kind
      local known = { number = 1, text = 1, boolean = 1, any = 1, ["function"] = 1, constant = 1, rows = 1, texts = 1, container = 1, list = 1, values = 1 }
      require(known[kind] or members.byType[kind] or members.tables[kind], section.name, where, "has the unknown type", kind)
    end
  end
  for _, row in ipairs(section.rows) do
    if row.type then check(row.type, row.names[1]) end
    for _, form in ipairs(row.forms or {}) do
      for _, parameter in ipairs(form.parameters) do
        check(parameter.type, row.names[1])
      end
      for _, type in ipairs(form.results) do
        check(type, row.names[1])
      end
    end
  end
end

local known = membersOf(members.callbacks)
for _, name in ipairs(callbacks) do
  require(known[name], name, "is called and not told")
  known[name] = nil
end
for name in pairs(known) do
  require(false, name, "is no callback")
end

-- The prelude.
local prelude, common = membersOf(members.prelude), membersOf(members.containers)
for name, description in pairs(environment.bound) do
  require(description.class or name == "vorant" or prelude[name], name, "is a global that members.txt does not tell of")
end
for name, functions in pairs(environment.bound.vorant.fields) do
  local kinds = membersOf(members.classes["vorant." .. name])
  for member in pairs(functions) do
    require(kinds[member] or common[member], name, member, "is not told")
  end
  for member in pairs(kinds) do
    require(functions[member], name, member, "is in members.txt only")
  end
end

if #faults > 0 then error(table.concat(faults, "\n"), 0) end
