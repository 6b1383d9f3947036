-- Watches another job, reads what it shows and stops it when it has done enough. Run both over one replay:
--   algoserver run examples/parent.lua examples/worker.lua --data examples/data/demo_quotes.csv.gz --param enough=40

local enough

function OnInit()
  enough = job:getParameter("enough") or 100
  local jobs = job:getVorantJobs() -- the other jobs, in the order of the command line, from 1
  for i = 1, jobs.count do
    jobs:getVorantJob(i):subscribe()
  end
end

function OnVorantJobStarted(other)
  job:logText(other.name .. " has started: " .. other.reference)
end

-- An output parameter has changed. It comes as text, whatever it was set to.
function OnVorantJobUpdate(other)
  local trades = tonumber(other:getOutputParameter("trades"))
  if not trades then return end
  job:logText(string.format("%s: %d trades, volume %s, %s", other.name, trades,
                            other:getOutputParameter("volume"), other.userText1))
  if trades >= enough then
    other:stop() -- it ends when this function has returned
  end
end

function OnVorantJobStopped(other)
  job:logText(other.name .. " is " .. other.userStateText)
  job:shutdown()
end
