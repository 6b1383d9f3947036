-- Checks the files of one job without running them. `analyze(input)` is called with the job's files; findings go to
-- input:add(file, line, column, endColumn, code, message).

local checkState = require "luacheck.check_state"
local format = require "luacheck.format"
local parser = require "luacheck.parser"
local stages = require "luacheck.stages"
local utils = require "luacheck.utils"
local rules, uses, habits = checker.rules, checker.uses, checker.habits

-- What luacheck finds that is a mistake and not a matter of taste.
local adopted = {
  ["221"] = "never-set",
  ["314"] = "duplicate-key",
  ["321"] = "uninitialised",
  ["341"] = "uninitialised",
  ["511"] = "unreachable",
  ["531"] = "unbalanced-assignment",
  ["532"] = "unbalanced-assignment",
  ["571"] = "loop-direction",
  ["582"] = "negation",
}

local function newFile(input, index)
  local path, text = input:path(index), input:text(index)
  local file = { path = path, index = index, state = checkState.new(text), ignored = {} }
  function file.add(line, column, endColumn, code, message)
    local ignored = file.ignored[line]
    if ignored and (ignored.all or ignored[checker.numbers[code]]) then return end
    input:add(index, line, column, endColumn, code, message)
  end
  function file.say(node, code, message)
    local state = file.state
    file.add(node.line, state:offset_to_column(node.line, node.offset),
      state:offset_to_column(node.line, node.end_offset), code, message)
  end
  return file, text
end

-- numbers: those of the findings, or none for all.
local function ignore(file, line, numbers)
  local ignored = file.ignored[line] or {}
  file.ignored[line] = ignored
  ignored.all = ignored.all or not numbers:match("%d")
  for number in numbers:gmatch("%d+") do
    ignored[tonumber(number)] = true
  end
end

-- Fills in the file's tree; false when it does not compile.
local function parse(file, text)
  local compiled, message = loadstring(text, "=script")
  local ok, failure = utils.try(stages.run, file.state)
  local err = not ok and failure.err
  if err and not utils.is_instance(err, parser.SyntaxError) then
    -- What the engine itself refuses is told in its own words.
    if compiled then error(err, 0) end
    err = nil
  end
  if not compiled then
    local line, what = message:match("^script:(%d+): (.*)$")
    line = tonumber(line) or 1
    local column = err and err.line == line and file.state:offset_to_column(line, err.offset) or 1
    file.add(line, column, 0, "syntax", what or message)
    return false
  elseif err then
    -- What this engine takes and a later one refuses, an unknown escape in a text for one.
    file.say(err, "syntax", err.msg)
    return false
  end
  for _, comment in ipairs(file.state.comments) do
    local numbers = comment.contents:match("^%s*check:%s*ignore([%d%s,]*)")
    if numbers then
      ignore(file, comment.line, numbers)
      if not file.state.code_lines[comment.line] then ignore(file, comment.line + 1, numbers) end
    end
  end
  return true
end

-- A local that hides another one and is never read: the other was meant to be assigned.
local function tellHidden(file)
  local unread = {}
  for _, warning in ipairs(file.state.warnings) do
    if (warning.code == "211" or warning.code == "231") and not warning.secondary then
      unread[warning.line .. ":" .. warning.column] = true
    end
  end
  for _, warning in ipairs(file.state.warnings) do
    local hides = warning.code:match("^4[23]1$") and not warning.name:match("^_")
    if hides and unread[warning.line .. ":" .. warning.column] then
      file.add(warning.line, warning.column, warning.end_column, "hidden-variable",
        ("this local '%s' is never read, and hides the one of line %d; was that meant to be set?"):format(
          warning.name, warning.prev_line))
    end
  end
end

local function tellAdopted(file)
  for _, warning in ipairs(file.state.warnings) do
    if adopted[warning.code] then
      file.add(warning.line, warning.column, warning.end_column, adopted[warning.code],
        format.get_message(warning))
    end
  end
  tellHidden(file)
end

-- Calls visit(node, depth) on each node of a tree, from the outside in; not on what is in a node for which visit
-- answers true. depth counts the functions around a node.
local function walk(node, depth, visit)
  local inner = node.tag == "Function" and depth + 1 or depth
  if node.tag and visit(node, depth) then return end
  for _, child in ipairs(node) do
    if type(child) == "table" then walk(child, inner, visit) end
  end
end

local function isGlobal(node)
  return node.tag == "Id" and not node.var
end

-- The name of a global, also by way of _G.
local function globalName(node)
  if isGlobal(node) then return node[1] end
  if node.tag == "Index" and isGlobal(node[1]) and node[1][1] == "_G" and node[2].tag == "String" then
    return node[2][1]
  end
end

local Job = {}
Job.__index = Job

-- The first round, over all files: which globals are set, where, and which names are read.
function Job:_collectSets(file, node, depth)
  for i, target in ipairs(node[1]) do
    local name = globalName(target)
    if name then
      local value = node[2][i] or false
      self.sets[name] = self.sets[name] or {}
      table.insert(self.sets[name], { file = file, node = target, value = value, depth = depth })
      local arguments = value and value.tag == "Function" and checker.callbacks[name]
      for position, class in ipairs(arguments or {}) do
        local parameter = value[1][position]
        if parameter and parameter.var then parameter.var.class = class or nil end
      end
    elseif target.tag == "Index" then
      if isGlobal(target[1]) and target[1][1] == "_G" then self.isDynamic = true end
      self.targets[#self.targets + 1] = target
    end
  end
end

function Job:_collectCall(node)
  local callee, argument = node[1], node[2]
  if callee.tag == "Id" and callee.var then self.called[callee.var] = true end
  if not isGlobal(callee) or not argument then return end
  local isOnGlobals = argument.tag == "Id" and argument[1] == "_G"
  if callee[1] == "setfenv" or callee[1] == "module" then self.isDynamic = true end
  if (callee[1] == "rawset" or callee[1] == "setmetatable") and isOnGlobals then self.isDynamic = true end
  if callee[1] == "require" and argument.tag == "String" then
    self.required[argument[1]:match("[^.]*$")] = true
  end
end

function Job:_collect(file)
  walk(file.state.ast, 0, function(node, depth)
    uses.collect(self, node)
    habits.collect(self, file, node)
    habits.collectVariables(self, node, not node.isTarget)
    if node.tag == "Set" then self:_collectSets(file, node, depth) end
    if node.tag == "Call" then self:_collectCall(node) end
    if node.tag == "Index" and globalName(node) then self.reads[globalName(node)] = true end
    if node.tag == "String" then self.texts[node[1]] = true end
    if node.tag == "Local" and depth == 0 then
      for _, name in ipairs(node[1]) do
        self.known[name[1]] = true
      end
    end
  end)
end

-- Fields that the script hangs on objects, by class; "" where the class cannot be told.
function Job:_collectFields()
  for _, target in ipairs(self.targets) do
    if target[2].tag == "String" then
      local class = self.types:of(target[1])
      local fields = self.fields[class or ""]
      local isNear = class and checker.findNear(target[2][1], checker.classes[class].members)
      if not isNear then fields[target[2][1]] = true end
      if isGlobal(target[1]) then self.ownFields[target[1][1] .. "." .. target[2][1]] = true end
    end
  end
end

local function isSetAfterLoad(sets)
  for _, set in ipairs(sets or {}) do
    if set.depth > 0 then return true end
  end
  return false
end

-- A global that is read.
function Job:_tellGlobal(file, node, depth)
  local name = node[1]
  self.reads[name] = true
  local isBound = not self.isTest and environment.bound[name]
  if self.sets[name] and not isBound or self.required[name] then return end
  if environment.removed[name] and not self.isTest then
    if depth > 0 and not self.isDynamic then
      file.say(node, "removed-global", ("'%s' is removed from what a script may use before OnInit"):format(name))
    end
  elseif isBound then
    if depth == 0 and not self.sets[name] then
      file.say(node, "too-early", ("'%s' does not exist while the script is loaded; use it from OnInit on"):format(
        name))
    end
  elseif not self.globals[name] and not checker.callbacks[name] and not self.isDynamic then
    file.say(node, "unknown-global", ("unknown global '%s'%s"):format(name, checker.didYouMean(name, self.known)))
  end
end

-- A field of one of Lua's own libraries, or of vorant.
function Job:_tellLibraryField(file, node)
  local library, field = node[1][1], node[2][1]
  local description = self.globals[library]
  if self.sets[library] or not description or not description.fields then return end
  if description.fields[field] or self.ownFields[library .. "." .. field] then return end
  file.say(node[2], "unknown-field", ("%s has no '%s'%s"):format(
    library, field, checker.didYouMean(field, description.fields)))
end

function Job:_tellSet(file, node, depth)
  if self.isTest then return self:_tellTestSet(file, node) end
  for _, target in ipairs(node[1]) do
    local name = globalName(target)
    local bound = name and environment.bound[name]
    if bound and (depth == 0 or bound.class) then
      file.say(target, "overwritten-global", depth == 0
        and ("the engine sets '%s' before OnInit, so this value is lost; choose another name"):format(name)
        or ("this replaces the engine's own '%s'"):format(name))
    elseif name and environment.removed[name] and depth == 0 and not isSetAfterLoad(self.sets[name]) then
      local text = "'%s' is removed before OnInit, this value with it; choose another name"
      file.say(target, "removed-global", text:format(name))
    elseif not name and target.tag == "Index" then
      rules.write(self, file.say, target)
    end
  end
end

function Job:_tellTestSet(file, node)
  for _, target in ipairs(node[1]) do
    local name = globalName(target)
    if name and checker.tests[name] then
      file.say(target, "overwritten-global", ("this replaces the function '%s' that tests call"):format(name))
    end
  end
end

function Job:_tellTestCall(file, node, depth)
  local name = isGlobal(node[1]) and node[1][1]
  if not self.isTest or not checker.tests[name] then return end
  if depth == 0 then
    file.say(node, "too-early", ("'%s' is for functions whose name begins with Test, and this is called while the file is loaded"):format(name))
  end
  rules.testCall(self, file.say, node)
end

-- The second round, over each file: tells what is wrong where it stands.
function Job:_tell(file)
  local visit
  local function go(node, depth)
    if node then walk(node, depth, visit) end
  end
  local function goEach(nodes, depth, first)
    for i = first or 1, #nodes do
      go(nodes[i], depth)
    end
  end
  -- A member that is kept in a variable that is called.
  local function isAliasOf(target)
    return target and target.tag == "Id" and target.var and self.called[target.var]
  end
  -- A member that is passed on to be called: pcall(object.method, object), apply(object.method, object).
  local function isHandedOver(callee, argument, follower)
    if isGlobal(callee) and (callee[1] == "pcall" or callee[1] == "xpcall") then return true end
    return argument.tag == "Index" and rules.isSameName(argument[1], follower)
  end
  local function goAssigned(targets, values, depth)
    for i, value in ipairs(values or {}) do
      value.isAlias = isAliasOf(targets[i])
      go(value, depth)
    end
  end
  local by = {}

  function by.Set(node, depth)
    self:_tellSet(file, node, depth)
    for _, target in ipairs(node[1]) do
      if target.tag == "Index" and not globalName(target) then goEach(target, depth) end
    end
    goAssigned(node[1], node[2], depth)
  end
  function by.Local(node, depth)
    goAssigned(node[1], node[2], depth)
  end
  function by.Localrec(node, depth)
    local name, var = node[1][1][1], node[1][1].var
    if checker.callbacks[name] and not var.accessed then
      file.say(node[1][1], "callback-name", ("the engine does not see a local '%s'; leave out 'local'"):format(name))
    end
    goEach(node[2], depth)
  end
  function by.Function(node, depth)
    go(node[2], depth + 1)
  end
  function by.Fornum(node, depth)
    goEach(node, depth, 2)
  end
  function by.Forin(node, depth)
    goEach(node[2], depth)
    go(node[3], depth)
  end
  function by.Invoke(node, depth)
    go(node[1], depth)
    rules.invoke(self, file.say, node)
    goEach(node, depth, 3)
  end
  function by.Call(node, depth)
    local callee = node[1]
    if callee.tag == "Index" and callee[2].tag == "String" then
      go(callee[1], depth)
      rules.callMember(self, file.say, node)
      if isGlobal(callee[1]) then self:_tellLibraryField(file, callee) end
    else
      go(callee, depth)
    end
    self:_tellTestCall(file, node, depth)
    for i = 2, #node do
      node[i].isAlias = isHandedOver(callee, node[i], node[i + 1])
    end
    goEach(node, depth, 2)
  end
  function by.Index(node, depth)
    goEach(node, depth)
    rules.read(self, file.say, node, node.isAlias)
    -- What is asked for with an alternative may be missing.
    if isGlobal(node[1]) and node[2].tag == "String" and not node.isOptional then
      self:_tellLibraryField(file, node)
    end
  end
  function by.Op(node)
    rules.operator(self, file.say, node)
    rules.nilOperands(self, file, node)
    if node[1] == "or" or node[1] == "and" or node[1] == "not" or node[1] == "eq" or node[1] == "ne" then
      node[2].isOptional = true
    end
    return false
  end
  function by.If(node)
    for i = 1, #node - 1, 2 do
      node[i].isOptional = true
    end
    return false
  end
  function by.Id(node, depth)
    if isGlobal(node) then self:_tellGlobal(file, node, depth) end
  end

  visit = function(node, depth)
    local handler = by[node.tag]
    return handler and handler(node, depth) ~= false
  end
  go(file.state.ast, 0)
end

local function isFunction(set)
  return set.value and set.value.tag == "Function"
end

local function tellCallback(job, name, sets)
  local class = checker.callbacks[name]
  for _, set in ipairs(sets) do
    local parameters = isFunction(set) and set.value[1] or {}
    local extra = parameters[#class + 1]
    if extra and extra.tag ~= "Dots" and not job.reads[name] then
      set.file.say(extra, "callback-arguments", ("%s is called with %s, so '%s' is always nil"):format(
        name, #class == 0 and "no argument" or #class == 1 and "1 argument" or #class .. " arguments", extra[1]))
    end
  end
  local first, second = sets[1], sets[2]
  if second and first.depth == 0 and second.depth == 0 and isFunction(first) and isFunction(second)
    and first.node.isStatement and second.node.isStatement then
    second.file.say(second.node, "callback-twice", ("this replaces the %s of %sline %d"):format(
      name, first.file == second.file and "" or first.file.path .. " ", first.node.line))
  end
end

-- Global functions that look like callbacks and are none.
local function tellMisspelt(job, name, sets)
  if job.reads[name] or job.texts[name] then return end
  local near = name:match("^[Oo][Nn]") and checker.suggest(name, checker.callbacks)
  for _, set in ipairs(sets) do
    if isFunction(set) and (near or name:match("^On%u")) then
      job.misspelt[near or name] = true
      set.file.say(set.node, "callback-name", near
        and ("there is no callback '%s', and nothing calls it; did you mean '%s'?"):format(name, near)
        or ("there is no callback '%s', and nothing calls it"):format(name))
    end
  end
end

function Job:_tellCallbacks(files)
  for _, file in ipairs(files) do
    for _, statement in ipairs(file.state.ast) do
      if statement.tag == "Set" then statement[1][1].isStatement = true end
    end
  end
  for name, sets in pairs(self.sets) do
    if checker.callbacks[name] then
      tellCallback(self, name, sets)
    elseif not environment.bound[name] then
      tellMisspelt(self, name, sets)
    end
  end
  local script = files[#files]
  if not self.sets.OnInit and not self.isDynamic then
    script.add(1, 1, 0, "no-oninit", "the script defines no global function OnInit, so it cannot be started")
  end
end

-- In place of callbacks.
function Job:_tellTests(file)
  local hasTest = self.isDynamic
  for name, sets in pairs(self.sets) do
    local isTest = name:match("^Test") and isFunction(sets[1])
    hasTest = hasTest or isTest
    if isTest and sets[2] and isFunction(sets[2]) and sets[1].depth == 0 and sets[2].depth == 0 then
      file.say(sets[2].node, "callback-twice", ("there is a %s already, in line %d"):format(name, sets[1].node.line))
    end
  end
  if not hasTest then
    file.add(1, 1, 0, "no-test", "the file defines no global function whose name begins with Test, so there is nothing to run")
  end
end

local function newJob(isTest)
  local job = setmetatable({ isDynamic = false, isTest = isTest, fields = {}, walk = walk }, Job)
  job.globals = isTest and checker.testGlobals or checker.globals
  for _, set in ipairs({ "sets", "reads", "texts", "targets", "called", "required", "ownFields", "known", "uses",
                         "invoked", "named", "subscribed", "escaped", "misspelt" }) do
    job[set] = {}
  end
  setmetatable(job.fields, { __index = function(fields, class)
    fields[class] = {}
    return fields[class]
  end })
  job.types = checker.Types.new(function(name)
    local sets = job.sets[name]
    if not sets then return nil end
    local values = {}
    for i, set in ipairs(sets) do
      values[i] = set.value
    end
    return values
  end, job.globals)
  return job
end

local function analyzeAll(input)
  local job, files, allParsed = newJob(input:isTest()), {}, true
  for index = 1, input:count() do
    local file, text = newFile(input, index)
    files[index] = file
    allParsed = parse(file, text) and allParsed
  end
  if not allParsed then return end
  for _, file in ipairs(files) do
    job:_collect(file)
  end
  for _, names in ipairs({ job.sets, job.globals, job.required }) do
    for name in pairs(names) do
      job.known[name] = true
    end
  end
  uses.resolve(job)
  job:_collectFields()
  for _, file in ipairs(files) do
    walk(file.state.ast, 0, function(node) rules.collectLooks(job, file, node) end)
    tellAdopted(file)
    job:_tell(file)
  end
  if job.isTest then return job:_tellTests(files[1]) end
  job:_tellCallbacks(files)
  if next(job.required) == nil then habits.tell(job, files) end
end

-- Both luacheck and the walks over its tree go down one level for each operator, call, index or block that is inside
-- another one, or in a chain of them.
function analyze(input)
  local ok, failure = pcall(analyzeAll, input)
  if ok then return end
  if tostring(failure):match("stack overflow") then
    failure = "is too deep to be checked: it has thousands of operators, calls or blocks one inside another or in a chain"
  end
  error(failure, 0)
end
