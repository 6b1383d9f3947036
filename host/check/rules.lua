-- The rules about objects: their members, the number of arguments, and the tables that some functions take.
-- `say(node, code, message)` tells a finding; `job` is the analysis of one job, see analyze.lua.

local rules = {}
checker.rules = rules

function rules.isSameName(a, b)
  return a and b and a.tag == "Id" and b.tag == "Id" and a[1] == b[1] and a.var == b.var
end

local function isMultiple(node)
  return node ~= nil and (node.tag == "Call" or node.tag == "Invoke" or node.tag == "Dots")
end

-- As the author wrote it, where that is short.
local function nameOf(node, label)
  if node.tag == "Id" then return node[1] end
  if node.tag == "Index" and node[2].tag == "String" then return nameOf(node[1], label) .. "." .. node[2][1] end
  return label
end

local function plural(count, noun)
  return ("%d %s%s"):format(count, noun, count == 1 and "" or "s")
end

local function countText(least, most)
  if least == most then return plural(least, "argument") end
  if most == math.huge then return "at least " .. plural(least, "argument") end
  return ("%d to %s"):format(least, plural(most, "argument"))
end

local function checkCount(say, node, first, name, signature)
  local least, most = signature[1], signature[2]
  local count = #node - first + 1
  local open = isMultiple(node[#node]) and count > 0
  if count > most + (open and 1 or 0) or (not open and count < least) then
    local given = open and "more" or tostring(count)
    say(node, "argument-count", ("'%s' takes %s, not %s"):format(name, countText(least, most), given))
  end
end

-- What is left of a name when it may be written in any way: 5minutes and 5_MINUTE are one.
local function strip(name)
  return (name:upper():gsub("[^%w]", ""):gsub("S$", ""))
end

-- Of an open list what is no known name written in another way may be one that the checker cannot know.
local function isOneOf(text, texts)
  local isLike = false
  for _, known in ipairs(texts) do
    if known == text then return true end
    isLike = isLike or strip(known) == strip(text)
  end
  return texts.isOpen and not isLike
end

-- A key whose value may be a table or another kind.
local function checkMixed(say, node, key, value, type)
  local names = {}
  for i, alternative in ipairs(type.alternatives) do
    names[i] = checker.kinds[alternative.kind]
    if names[i] == value.kind then return end
  end
  say(node, "table-value", ("'%s' is a %s, not %s"):format(key, table.concat(names, " or a "), checker.describe(value)))
end

-- Values that the function would refuse, or pass over without a word.
local function checkValue(job, say, node, key, rule)
  local value, kind, isNumeric = job.types:valueOf(node), rule.keys[key], rule.numeric[key]
  if not value or value.kind == "nil" then return end
  if rule.mixed[key] then return checkMixed(say, node, key, value, rule.mixed[key]) end
  local given = value.kind == "object" and checker.classes[value.class].label .. " object" or value.kind
  if type(kind) == "table" then
    if given ~= "text" or value.constant and not isOneOf(value.constant, kind) then
      say(node, "table-value", ("'%s' is one of %s, not %s"):format(
        key, table.concat(kind, ", "), checker.describe(value)))
    end
  elseif isNumeric and given == "text" and not checker.isNumeric(value) then
    say(node, "table-value", ("'%s' is a number, not %s"):format(key, checker.describe(value)))
  elseif given ~= kind and not (kind == "text" and given == "number") then
    local advice = given == "boolean" and ", so write it in quotes" or ""
    local article = kind == "text" and kind or "a " .. kind
    say(node, "table-value", ("'%s' is read only as %s, not as a %s%s"):format(
      key, article, given, kind == "text" and advice or ""))
  end
end

-- What stands in a table without a key.
local checkKeys
local function checkItem(job, say, item, method, type)
  local rule = type and checker.tables[type.alternatives[1].kind]
  local value = job.types:valueOf(item)
  if not type then
    say(item, "table-key", ("%s reads named values only, and this one has no name"):format(method))
  elseif rule and item.tag == "Table" then
    checkKeys(job, say, item, item, "a moment of " .. method, rule, true)
  elseif value and value.kind ~= (rule and "table" or checker.kinds[type.alternatives[1].kind]) then
    say(item, "table-value", ("what has no key is a %s here, not %s"):format(
      rule and "table" or type.alternatives[1].kind, checker.describe(value)))
  end
end

-- The keys of a table argument. On an object of unknown class only what is surely meant for this function.
function checkKeys(job, say, call, argument, method, rule, isKnown)
  local found, complete = {}, true
  for _, item in ipairs(argument) do
    if item.tag == "Pair" and item[1].tag == "String" then
      found[item[1][1]] = item[2]
    else
      complete = false
    end
  end
  if not isKnown then
    local recognised = false
    for key in pairs(rule.keys) do
      recognised = recognised or found[key] ~= nil
    end
    if not recognised then return end
  end
  for _, item in ipairs(argument) do
    local key = item.tag == "Pair" and item[1].tag == "String" and item[1][1]
    if key and rule.keys[key] then
      checkValue(job, say, item[2], key, rule)
      if rule.beside and found[rule.beside] and not rule.read[key] then
        say(item[1], "table-key", ("'%s' is not read where '%s' is given; set it in another call of %s"):format(
          key, rule.beside, method))
      end
    elseif key and not rule.open then
      say(item[1], "table-key", ("%s has no key '%s'%s"):format(method, key, checker.didYouMean(key, rule.keys)))
    elseif item.tag ~= "Pair" and not isMultiple(item) then
      checkItem(job, say, item, method, rule.item)
    end
  end
  for _, key in ipairs(complete and rule.required or {}) do
    if not found[key] then say(call, "table-key", ("%s needs the key '%s'"):format(method, key)) end
  end
end

local function checkTable(job, say, node, method, isKnown)
  local rule = checker.tables[method]
  if not rule then return end
  local argument = node[3]
  if #node == 3 and argument.tag == "Table" then
    checkKeys(job, say, node, argument, method, rule, isKnown)
  elseif isKnown and rule.positional and #node > 3 then
    for i, texts in ipairs(rule.positional) do
      local given = node[i + 2]
      if given and given.tag == "String" and not isOneOf(given[1], texts) then
        say(given, "table-value", ("argument %d of %s is one of %s, not '%s'"):format(
          i, method, table.concat(texts, ", "), given[1]))
      end
    end
  end
end

-- Whether a name that the class does not have is one of the script's own fields.
local function isOwnField(job, className, name)
  local isNear = checker.findNear(name, checker.classes[className].members)
  return job.fields[className][name] or (job.fields[""][name] and not isNear)
end

-- script "cross.lua", market { ... }, expect { ... }
function rules.testCall(job, say, node)
  local name, argument = node[1][1], node[2]
  local row = checker.tests[name]
  checkCount(say, node, 2, name, checker.signatureOf(row))
  rules.arguments(job, say, node, 2, row, name)
  local rule = checker.tables[row.forms[1].parameters[1].type.alternatives[1].kind]
  if rule and argument and argument.tag == "Table" then checkKeys(job, say, node, argument, name, rule, true) end
end

-- object:method(...)
function rules.invoke(job, say, node)
  local object, method = node[1], node[2][1]
  local className = job.types:of(object)
  local class = checker.classes[className]
  checkTable(job, say, node, method, class ~= nil and class.functions[method] ~= nil)
  if not class then return end
  local name = nameOf(object, class.label)
  if class.functions[method] then
    checkCount(say, node, 3, name .. ":" .. method, class.functions[method])
    rules.arguments(job, say, node, 3, checker.rowOf(className, method), name .. ":" .. method)
  elseif class.properties[method] then
    say(node[2], "property-call", ("'%s' is a property of %s: read it as %s.%s, without a call"):format(
      method, class.label, name, method))
  elseif not isOwnField(job, className, method) then
    say(node[2], "unknown-method", ("%s has no method '%s'%s"):format(
      class.label, method, checker.didYouMean(method, class.members)))
  end
end

-- object.member(...)
function rules.callMember(job, say, node)
  local object, key = node[1][1], node[1][2]
  local className = job.types:of(object)
  local class = checker.classes[className]
  if not class then return end
  local name, method = nameOf(object, class.label), key[1]
  if class.functions[method] then
    if rules.isSameName(node[2], object) then return end
    say(key, "dot-call", ("'%s' is a method of %s: call it with a colon, %s:%s(...)"):format(
      method, class.label, name, method))
  elseif class.properties[method] then
    say(key, "property-call", ("'%s' is a property of %s: read it as %s.%s, without a call"):format(
      method, class.label, name, method))
  else
    rules.read(job, say, node[1])
  end
end

-- object.member as a value; isAlias where it is kept to be called later.
function rules.read(job, say, node, isAlias)
  local object, key = node[1], node[2]
  if key.tag ~= "String" then return end
  local className = job.types:of(object)
  local class = checker.classes[className]
  if not class or class.properties[key[1]] then return end
  local name, member = nameOf(object, class.label), key[1]
  if class.functions[member] then
    if isAlias then return end
    say(key, "method-value", ("'%s' is a method of %s, and always true unless it is called: %s:%s(...)"):format(
      member, class.label, name, member))
  elseif not isOwnField(job, className, member) then
    say(key, "unknown-property", ("%s has no property '%s'%s"):format(
      class.label, member, checker.didYouMean(member, class.members)))
  end
end

-- object.member = ...
function rules.write(job, say, node)
  local object, key = node[1], node[2]
  if key.tag ~= "String" then return end
  local class = checker.classes[job.types:of(object)]
  if not class then return end
  local access = class.properties[key[1]]
  if access == "r" then
    say(key, "read-only", ("'%s' of %s is read-only: the engine drops what is written to it"):format(
      key[1], class.label))
  elseif not access and not class.functions[key[1]] then
    local near = checker.findNear(key[1], class.members)
    if near then
      say(key, "unknown-property", ("%s has no property '%s', and this makes a new field; did you mean '%s'?"):format(
        class.label, key[1], near))
    end
  end
end
