-- Watches the profit that other jobs show, and stops one that has lost too much since its best moment.
-- Parameters: loss (money that a job may fall below its best). A watched job shows its "profit" as an output parameter.

local loss
local best = {} -- profit, by the name of the job
local running = 0

function OnInit()
  loss = job:getParameter("loss") or 1
  local jobs = job:getVorantJobs()
  for i = 1, jobs.count do jobs:getVorantJob(i):subscribe() end
  job:startTimer("report", 7200000)
end

function OnVorantJobStarted(other)
  running = running + 1
  best[other.name] = 0
end

-- It comes once after each callback of the other job that has changed something.
function OnVorantJobUpdate(other)
  local profit = tonumber(other:getOutputParameter("profit"))
  if not profit or not other.running then return end
  best[other.name] = math.max(best[other.name] or 0, profit)
  if best[other.name] - profit > loss then
    job:logText(string.format("%s fell from %.2f to %.2f: stopped", other.name, best[other.name], profit))
    other:stop() -- after this callback; its orders are pulled
  end
end

function OnVorantJobStopped(other)
  running = running - 1
  job:logText(other.name .. " has ended, " .. running .. " still run")
end

function OnTimer()
  local jobs = job:getVorantJobs()
  local texts = {}
  for i = 1, jobs.count do
    local other = jobs:getVorantJob(i)
    texts[i] = string.format("%s %s after %d requests", other.name, other:getOutputParameter("profit") or "0",
      other.transactionCount)
  end
  job:logText(table.concat(texts, ", "))
end
