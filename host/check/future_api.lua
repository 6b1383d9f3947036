-- The members that a script may name and that no bound class of this version has yet. An entry goes when its
-- member lands; a test tells of those that were left behind. "rw" is a property that may be written.

local function names(text)
  local result = {}
  for name in text:gmatch("%S+") do
    result[name] = "r"
  end
  return result
end

checker.future = {}
