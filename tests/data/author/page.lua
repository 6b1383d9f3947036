-- Whether `page`, all pages with tables, has a table of each group of members that an author can meet.
local missing = {}
for _, section in ipairs(members.list) do
  local isShown = section.heading or section.kind == "table" and section.name ~= "pull" and section.name ~= "testMarket" or section.kind == "callbacks"
  for _, group in ipairs(isShown and section.groups or {}) do
    local name = (section.kind == "table" and "table " or "") .. section.label .. (group.title == "" and "" or ", " .. group.title)
    if not page:find("<!-- members: " .. name .. " -->", 1, true) then missing[#missing + 1] = name end
  end
end
if #missing > 0 then error("no table of " .. table.concat(missing, "; "), 0) end
