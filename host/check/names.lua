-- Which known name an author may have meant.

-- Letters inserted, deleted, replaced or swapped with their neighbour, case aside.
local function distance(a, b)
  a, b = a:lower(), b:lower()
  local before, previous, row = {}, {}, {}
  for j = 0, #b do
    row[j] = j
  end
  for i = 1, #a do
    before, previous, row = previous, row, { [0] = i }
    for j = 1, #b do
      local same = a:byte(i) == b:byte(j)
      local cost = math.min(previous[j] + 1, row[j - 1] + 1, previous[j - 1] + (same and 0 or 1))
      if i > 1 and j > 1 and a:byte(i) == b:byte(j - 1) and a:byte(i - 1) == b:byte(j) then
        cost = math.min(cost, before[j - 2] + 1)
      end
      row[j] = cost
    end
  end
  return row[#b]
end

-- The nearest of the candidates, a table by name, in a fixed order; nil when none is near enough.
local function nearest(name, candidates, limit)
  local best, least
  for candidate in pairs(candidates) do
    local steps = distance(name, candidate)
    if steps <= limit and (best == nil or steps < least or (steps == least and candidate < best)) then
      best, least = candidate, steps
    end
  end
  return best
end

-- A name so near that it can hardly be meant otherwise.
function checker.findNear(name, candidates)
  return nearest(name, candidates, #name < 4 and 0 or #name < 8 and 1 or 2)
end

-- The shortest candidate that begins or ends with the name, whatever stands for `part`; a leading On does not count.
local function containing(name, candidates, part)
  local best
  local lower = name:lower():gsub("^on", "")
  if #lower < 3 then return nil end
  for candidate in pairs(candidates) do
    local other = candidate:lower():gsub("^on", "")
    local fits = part == "begin" and other:sub(1, #lower) == lower or part == "end" and other:sub(-#lower) == lower
    if fits and (best == nil or #candidate < #best or (#candidate == #best and candidate < best)) then
      best = candidate
    end
  end
  return best
end

-- For a name that is wrong in any case: one slip away, or cut short, or further off.
function checker.suggest(name, candidates)
  local near = nearest(name, candidates, 1)
  if near and near:sub(1, 1):lower() == name:sub(1, 1):lower() then return near end
  return containing(name, candidates, "begin")
    or nearest(name, candidates, #name < 3 and 1 or #name < 6 and 2 or 3)
    or containing(name, candidates, "end")
end

function checker.didYouMean(name, candidates)
  local known = checker.suggest(name, candidates)
  return known and ("; did you mean '%s'?"):format(known) or ""
end
