-- refresh(page) gives a Markdown page with its tables of members made anew. A table stands between the lines
-- `<!-- members: NAME -->`, or `<!-- members: NAME, GROUP -->`, and `<!-- end -->`.

local words = { rows = "matrix", texts = "table of texts and numbers", list = "list", values = "table" }

local function linked(section)
  if not section.heading then return section.label end
  return ("[%s](#%s)"):format(section.heading, section.heading:lower():gsub(" ", "-"))
end

local function typeText(type, withUnit)
  local parts = {}
  for i, alternative in ipairs(type.alternatives) do
    local kind = alternative.kind
    local class = members.byType[kind]
    parts[i] = kind == "constant" and ('`"%s"`'):format(alternative.value) or class and linked(class)
      or members.tables[kind] and "table" or words[kind] or kind
    if withUnit and alternative.unit and alternative.unit ~= "any" then
      parts[i] = ("%s (%s)"):format(parts[i], alternative.unit)
    end
  end
  if type.isNil then parts[#parts + 1] = "nil" end
  local last = table.remove(parts)
  return (#parts > 0 and table.concat(parts, ", ") .. " or " .. last or last) .. (type.isMany and ", any number" or "")
end

local function unitText(type)
  local unit = type.alternatives[1].unit
  return unit and unit ~= "any" and unit or ""
end

local function errorsText(row)
  local parts = {}
  for i, failure in ipairs(row.errors) do
    local text = failure.text:gsub("FUNCTION", row.names[1])
    parts[i] = text == "" and failure.remark or "`" .. text .. "`" .. (failure.remark and " (" .. failure.remark .. ")" or "")
    if text ~= failure.text and #row.names > 1 then parts[i] = parts[i] .. ", and so on" end
  end
  return table.concat(parts, "<br>")
end

-- Without the columns that are empty in each row.
local function makeTable(headings, rows)
  local kept = {}
  for column = 1, #headings do
    for _, row in ipairs(rows) do
      kept[column] = kept[column] or row[column] ~= ""
    end
  end
  local lines = {}
  local function put(cells)
    local line = "|"
    for column = 1, #headings do
      if kept[column] then line = line .. (cells[column] == "" and " |" or " " .. cells[column] .. " |") end
    end
    lines[#lines + 1] = line
  end
  put(headings)
  lines[2] = lines[1]:gsub("[^|]+", "---")
  for _, row in ipairs(rows) do
    put(row)
  end
  return table.concat(lines, "\n") .. "\n"
end

local function formText(form, name)
  local names = {}
  for i, parameter in ipairs(form.parameters) do
    local kind = parameter.type.alternatives[1].kind
    if members.tables[kind] or kind == "texts" then return name .. "{...}" end
    names[i] = parameter.name
  end
  if form.rest then names[#names + 1] = "..." end
  return ("%s(%s)"):format(name, table.concat(names, ", "))
end

local function argumentsText(form)
  local parts = {}
  for i, parameter in ipairs(form.parameters) do
    parts[i] = typeText(parameter.type, true) .. (parameter.isOptional and ", may be left out" or "")
  end
  if form.rest then
    parts[#parts + 1] = ("up to %d %stexts"):format(form.most - #form.parameters, #parts > 0 and "more " or "")
  elseif form.most == math.huge then
    parts[#parts + 1] = #parts > 0 and "further ones are ignored" or "any, ignored"
  end
  return table.concat(parts, "; ")
end

local function resultsText(form)
  local parts = {}
  for i, type in ipairs(form.results) do
    parts[i] = typeText(type, true)
  end
  return #parts == 0 and "nothing" or table.concat(parts, ", ")
end

local function each(row, show)
  local cells = {}
  for i, name in ipairs(row.names) do
    cells[i] = "`" .. show(name, i) .. "`"
  end
  return table.concat(cells, ", ")
end

local make = {}

function make.property(rows, section)
  local access, table = checker.bound[section.name], {}
  for i, row in ipairs(rows) do
    local errors = errorsText(row)
    local isWritten = access and access.properties[row.names[1]] == "rw"
    table[i] = { each(row, function(name) return name end):gsub("^`%.%.%.`$", "without a key"), typeText(row.type), unitText(row.type),
      row.text .. (row.isRequired and " Required." or "") .. (isWritten and " It can be written." or "") .. (errors ~= "" and " Error: " .. errors or "") }
  end
  return makeTable({ section.kind == "table" and "Key" or "Property", "Type", "Unit", "Meaning" }, table)
end

make["function"] = function(rows, section)
  local table = {}
  for _, row in ipairs(rows) do
    for number, form in ipairs(row.forms) do
      local cell = each(row, function(name, i)
        return formText(form, i == 1 and section.kind == "class" and section.object .. ":" .. name or name)
      end)
      table[#table + 1] = { cell, argumentsText(form), resultsText(form), number == 1 and row.text or "the same",
        number == 1 and errorsText(row) or "" }
    end
  end
  return makeTable({ "Function", "Arguments", "Gives", "Meaning", "Errors" }, table)
end

function make.callback(rows)
  local table = {}
  for i, row in ipairs(rows) do
    local names = {}
    for j, parameter in ipairs(row.forms[1].parameters) do
      names[j] = parameter.name
    end
    local shown = each(row, function(name) return ("%s(%s)"):format(name, _G.table.concat(names, ", ")) end)
    table[i] = { shown, argumentsText(row.forms[1]), row.text }
  end
  return makeTable({ "Callback", "Argument", "Called when" }, table)
end

-- Properties and keys first, functions after them.
local function tablesOf(section, title)
  local rows = { property = {}, ["function"] = {}, callback = {} }
  for _, group in ipairs(section.groups) do
    for _, row in ipairs(group.title == title and group.rows or {}) do
      table.insert(rows[section.kind == "callbacks" and "callback" or row.type and "property" or "function"], row)
    end
  end
  local parts = {}
  for _, kind in ipairs({ "callback", "property", "function" }) do
    if #rows[kind] > 0 then parts[#parts + 1] = make[kind](rows[kind], section) end
  end
  return table.concat(parts, "\n")
end

local function find(name)
  for _, section in ipairs(members.list) do
    if (section.kind == "table" and "table " or "") .. section.label == name then return section end
  end
end

function refresh(page)
  return (page:gsub("(<!%-%- members: ([^\n]-) %-%->\n).-(<!%-%- end %-%->)", function(head, what, foot)
    local name, title = what:match("^(.-), (.+)$")
    local section = find(name or what)
    local text = section and tablesOf(section, title or "") or ""
    if text == "" then error("there are no members of " .. what, 0) end
    return head .. "\n" .. text .. "\n" .. foot
  end))
end
