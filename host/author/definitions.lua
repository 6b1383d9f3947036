-- definitions() gives a Lua text by which the Lua Language Server knows what a script finds.

local lines

local function put(format, ...)
  lines[#lines + 1] = select("#", ...) == 0 and format or format:format(...)
end

-- Links of the documentation as plain text.
local function plain(text)
  return (text:gsub("%[(.-)%]%(.-%)", "%1"))
end

local words = {
  text = "string", rows = "number[][]", texts = "table<string, string|number>", list = "any[]", values = "table<string, any>",
}

-- isGiven: what a script gives, which may be a number in place of a text.
local function nameOf(alternative, isGiven, section)
  local kind = alternative.kind
  if kind == "constant" then return ("%q"):format(alternative.value) end
  if kind == "text" and isGiven then return "string|number" end
  if kind == "container" then return section.name end
  if members.byType[kind] then
    local class = members.byType[kind].name
    return class:match("^vorant%.") and class or "algo." .. kind
  end
  if members.tables[kind] then return "algo." .. kind .. ".table" end
  return words[kind] or kind
end

local function typeText(type, isGiven, section)
  local names, seen = {}, {}
  for _, alternative in ipairs(type.alternatives) do
    local name = nameOf(alternative, isGiven, section)
    if not (name == "string|number" and seen.number) and not seen[name] then names[#names + 1] = name end
    if name == "string|number" and seen.number then names[#names + 1] = "string" end
    seen[name] = true
  end
  local text = table.concat(names, "|")
  if not type.isNil then return text end
  return #names > 1 and text .. "|nil" or text .. "?"
end

local function unitOf(type)
  for _, alternative in ipairs(type.alternatives) do
    if alternative.unit and alternative.unit ~= "any" then return alternative.unit end
  end
end

local function withUnit(type, text)
  local unit = unitOf(type)
  return unit and ("(%s) %s"):format(unit, text) or text
end

local function putErrors(row, name)
  for _, failure in ipairs(row.errors) do
    local text = failure.text:gsub("FUNCTION", name)
    local remark = failure.remark and plain(failure.remark)
    put("--- * Error: %s", text == "" and remark or "`" .. text .. "`" .. (remark and " (" .. remark .. ")" or ""))
  end
end

local function putParameters(form)
  for _, parameter in ipairs(form.parameters) do
    local unit = unitOf(parameter.type)
    put("---@param %s%s %s%s", parameter.name, parameter.isOptional and "?" or "", typeText(parameter.type, true),
      unit and " " .. unit or "")
  end
  if form.rest or form.most == math.huge then put("---@param ... %s", form.rest and typeText(form.rest, true) or "any") end
end

local function putResults(form, section)
  for _, type in ipairs(form.results) do
    local unit = unitOf(type)
    put("---@return %s%s%s", typeText(type, false, section), type.isMany and " ..." or "", unit and " # " .. unit or "")
  end
end

local function putOverload(form, section)
  local parts = { "self: " .. nameOf({ kind = section.label }) }
  for _, parameter in ipairs(form.parameters) do
    parts[#parts + 1] = parameter.name .. (parameter.isOptional and "?" or "") .. ": " .. typeText(parameter.type, true)
  end
  local results = {}
  for i, type in ipairs(form.results) do
    results[i] = typeText(type, false, section)
  end
  put("---@overload fun(%s)%s", table.concat(parts, ", "), #results > 0 and ": " .. table.concat(results, ", ") or "")
end

-- owner: what stands in front of the name, with its colon or point.
local function putFunctions(row, owner, section)
  for _, name in ipairs(row.names) do
    put("")
    put("---%s", plain(row.text))
    putErrors(row, name)
    for i = 2, #row.forms do
      putOverload(row.forms[i], section)
    end
    local form, parameters = row.forms[1], {}
    putParameters(form)
    putResults(form, section)
    for i, parameter in ipairs(form.parameters) do
      parameters[i] = parameter.name
    end
    if form.rest or form.most == math.huge then parameters[#parameters + 1] = "..." end
    put("function %s%s(%s) end", owner, name, table.concat(parameters, ", "))
  end
end

local function putFields(row, access, isGiven)
  for _, name in ipairs(row.names) do
    local how = access and (access[name] == "rw" and "Can be written. " or "Read-only. ") or ""
    if name == "*" or name == "..." then
      put("---@field [%s] %s %s", name == "*" and "string" or "integer", typeText(row.type, isGiven), plain(row.text))
    else
      put("---@field %s%s %s %s", name, isGiven and not row.isRequired and "?" or "", typeText(row.type, isGiven),
        withUnit(row.type, how .. plain(row.text)))
    end
  end
end

local put_ = {}

local function putMembers(section, owner)
  for _, row in ipairs(section.rows) do
    if row.forms then putFunctions(row, owner, section) end
  end
end

function put_.class(section)
  local isContainer = section.name:match("^vorant%.")
  put("")
  put("---%s", plain(section.text))
  put("---@class %s", isContainer and section.name or "algo." .. section.label)
  local bound = checker.bound[section.name]
  for _, source in ipairs(isContainer and { section, members.containers } or { section }) do
    for _, row in ipairs(source.rows) do
      if row.type then putFields(row, bound and bound.properties) end
    end
  end
  put("%s = {}", isContainer and section.name or "local " .. section.label)
  putMembers(section, (isContainer and section.name or section.label) .. ":")
  if not isContainer then return end
  for _, row in ipairs(members.containers.rows) do
    if row.forms then putFunctions(row, section.name .. (row.names[1] == "new" and "." or ":"), section) end
  end
end

function put_.table(section)
  put("")
  put("---The values that `%s` takes.%s", section.label, section.text and " " .. plain(section.text) or "")
  put("---@class algo.%s.table", section.name)
  for _, row in ipairs(section.rows) do
    putFields(row, nil, true)
  end
end

function put_.callbacks(section)
  for _, row in ipairs(section.rows) do
    for _, name in ipairs(row.names) do
      local parts = {}
      for i, parameter in ipairs(row.forms[1].parameters) do
        parts[i] = parameter.name .. ": " .. typeText(parameter.type)
      end
      put("")
      put("---%s", plain(row.text))
      put("---@type fun(%s)?", table.concat(parts, ", "))
      put("%s = nil", name)
    end
  end
end

function put_.prelude(section)
  putMembers(section, "")
  put("")
  put("---Containers of the prelude.")
  put("vorant = {}")
end

function put_.tests(section)
  putMembers(section, "")
end

local function putGlobals()
  local names = {}
  for name, description in pairs(environment.bound) do
    if description.class then names[#names + 1] = name end
  end
  table.sort(names)
  for _, name in ipairs(names) do
    put("")
    put("---From `OnInit` on.")
    put("---@type algo.%s", members.classes[environment.bound[name].class].label)
    put("%s = nil", name)
  end
end

function definitions()
  lines = {}
  put("---@meta")
  put("-- What a script finds in algoserver, for editors: made by `algoserver types`, so change nothing here.")
  putGlobals() -- before the classes, whose local names are theirs
  for _, section in ipairs(members.list) do
    if put_[section.kind] then put_[section.kind](section) end
  end
  return table.concat(lines, "\n") .. "\n"
end
