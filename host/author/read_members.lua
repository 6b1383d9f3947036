-- Reads members.txt, whose head tells its form, into the table `members`:
--   list       the sections in their order: { kind, name, label, heading, object, text, groups = { { title, rows } }, rows }
--   classes    those of bound classes by class name, and by the name that types use (byType)
--   tables     those of tables by name; callbacks, prelude, tests and containers are sections by themselves
-- A row: { names, forms or type, text, errors = { { text, remark } }, needs, beside }; a form is
-- { parameters = { { name, type, isOptional } }, most, rest, results }. A type: { alternatives = { { kind, unit or value } }, isNil, isMany },
-- isNil being "now" or "host".

members = { list = {}, classes = {}, byType = {}, tables = {} }

local function fail(number, what)
  error(("members.txt:%d: %s"):format(number, what), 0)
end

local function split(text, separator)
  local parts = {}
  for part in (text .. separator):gmatch("%s*(.-)%s*" .. (separator:gsub("%p", "%%%0"))) do
    parts[#parts + 1] = part
  end
  return parts
end

local function parseAlternative(text, number)
  local literal = text:match('^"(.*)"$')
  if literal then return { kind = "constant", value = literal } end
  local kind, unit = text:match("^(%a+)%((.-)%)$")
  kind = kind or text:match("^(%a+)$")
  if not kind then fail(number, "no type: " .. text) end
  if (kind == "number") ~= (unit ~= nil) then fail(number, "a number, and nothing else, has a unit: " .. text) end
  return { kind = kind, unit = unit }
end

local function parseType(text, number)
  local type = { alternatives = {} }
  if text:match("%.%.%.$") then type.isMany, text = true, text:sub(1, -4) end
  if text:match("%?%?$") then type.isNil, text = "host", text:sub(1, -3) end
  if text:match("%?$") then type.isNil, text = "now", text:sub(1, -2) end
  for i, part in ipairs(split(text, "|")) do
    type.alternatives[i] = parseAlternative(part, number)
  end
  return type
end

local function parseForm(parameters, results, number)
  local form = { parameters = {}, results = {} }
  for _, part in ipairs(parameters == "" and {} or split(parameters, ",")) do
    local count, rest = part:match("^%.%.%.(%d+): (.+)$")
    if part == "..." then
      form.most = math.huge
    elseif count then
      form.most, form.rest = #form.parameters + tonumber(count), parseType(rest, number)
    else
      local name, optional, type = part:match("^(%a+)(%??): (.+)$")
      if not name then fail(number, "no parameter: " .. part) end
      table.insert(form.parameters, { name = name, isOptional = optional ~= "", type = parseType(type, number) })
    end
  end
  form.most = form.most or #form.parameters
  form.least = 0
  for _, parameter in ipairs(form.parameters) do
    form.least = form.least + (parameter.isOptional and 0 or 1)
  end
  for i, part in ipairs(results and split(results, ",") or {}) do
    form.results[i] = parseType(part, number)
  end
  return form
end

local function parseNames(text, row)
  for i, name in ipairs(split(text, ",")) do
    row.names[i] = name:gsub("!$", "")
    row.isRequired = row.isRequired or name:match("!$") ~= nil
  end
end

local function parseMember(line, row, number)
  local member, needs = line:match("^(.-) <%- (.+)$")
  row.needs, line = needs and split(needs, " "), member or line
  local kept, beside = line:match("^(.-) %-(%a+)$")
  row.beside, line = beside, kept or line
  local names, parameters, results = line:match("^([%a%d, ]+)(%b())(.*)$")
  if names then
    parseNames(names, row)
    row.forms = row.forms or {}
    table.insert(row.forms, parseForm(parameters:sub(2, -2), results:match("^: (.+)$"), number))
  else
    local listed, type = line:match("^([%a%d,!*. ]+): (.+)$")
    if not listed then fail(number, "no member: " .. line) end
    parseNames(listed, row)
    row.type = parseType(type, number)
  end
end

local function newSection(line)
  local kind, rest = line:match("^(%a+) ?(.*)$")
  local name, titles = rest:match("^([%w.]+): (.+)$")
  if rest == "" then rest = kind end
  local label, heading, object = unpack(split(titles or rest, ","))
  local section = { kind = kind, name = name or rest, label = label, heading = heading, object = object or label,
    groups = {}, rows = {}, errors = {} }
  table.insert(members.list, section)
  if kind == "class" then
    members.classes[section.name], members.byType[section.label] = section, section
  elseif kind == "table" then
    members.tables[section.name] = section
  else
    members[kind] = section
  end
  return section
end

local function newGroup(section, title)
  local group = { title = title, rows = {} }
  table.insert(section.groups, group)
  return group
end

local reader = {}

local function readIndented(line, number)
  local target = reader.row or reader.section
  local text = line:sub(3)
  if text:sub(1, 2) ~= "! " then
    if target.text then fail(number, "a second sentence") end
    target.text = text
  else
    local what, remark = text:sub(3):match("^(.-) ?{(.*)}$")
    table.insert(target.errors, { text = what or text:sub(3), remark = remark })
  end
end

local function readLine(line, number)
  local isSection = line:match("^class ") or line:match("^table ") or line:match("^%a+$")
  if line == "" or line:match("^#[^#]") or line == "#" then
    reader.row = nil
  elseif isSection then
    reader.section, reader.group, reader.row = newSection(line), nil, nil
  elseif line:sub(1, 3) == "## " then
    reader.group, reader.row = newGroup(reader.section, line:sub(4)), nil
  elseif line:sub(1, 2) == "  " then
    readIndented(line, number)
  else
    if not reader.row or reader.row.text then
      reader.row = { names = {}, errors = {} }
      reader.group = reader.group or newGroup(reader.section, "")
      table.insert(reader.group.rows, reader.row)
      table.insert(reader.section.rows, reader.row)
    end
    parseMember(line, reader.row, number)
  end
end

local number = 0
for line in membersText:gmatch("([^\n]*)\n") do
  number = number + 1
  readLine(line, number)
end
membersText = nil
