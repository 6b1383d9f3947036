-- Buys a volume over hours: evenly by time (TWAP), or by the shares of the day's volume that earlier days had (VWAP).
-- Parameters: volume (lots), from ("HH:MM"), minutes, profile (the shares of equally long parts; one without it).

local product, volume, minutes, begin
local profile, sum = {}, 0
local order
local money, lots = 0, 0 -- of the market's trades meanwhile

function OnInit()
  product = job:getProduct("SIM")
  volume = job:getParameter("volume") or 300
  minutes = job:getParameter("minutes") or 300
  local hour, minute = (job:getParameter("from") or "15:00"):match("(%d+):(%d+)")
  begin = hour * 60 + minute
  for share in tostring(job:getParameter("profile") or 1):gmatch("%S+") do
    profile[#profile + 1] = tonumber(share)
    sum = sum + profile[#profile]
  end
  product:subscribePrice()
  job:startTimer("slice", 60000)
end

-- The part of the volume that should be done so many minutes after the begin.
local function getDone(elapsed)
  local done, parts = 0, math.max(0, math.min(1, elapsed / minutes)) * #profile
  for i, share in ipairs(profile) do done = done + share * math.max(0, math.min(1, parts - i + 1)) end
  return done / sum
end

-- What is missing takes what is shown, and no more; what was not there is made up for a minute later.
function OnTimer()
  local elapsed = clock.hour * 60 + clock.minute - begin
  local missing = round(volume * getDone(elapsed)) - product.position.localNet
  local ask = product.price.askPrice
  if missing <= 0 or not ask or order then return end
  order = product:createOrder{side = "BUY", type = "LIMIT", exec = "IOC"}
  order:work{volume = missing, price = ask}
end

function OnPrice(price)
  local elapsed = clock.hour * 60 + clock.minute - begin
  if not price:isLast() or elapsed < 0 or elapsed >= minutes then return end
  money, lots = money + price.lastPrice * price.lastVolume, lots + price.lastVolume
end

local function forget() order = nil end

OnOrderCompleted, OnOrderCancelled, OnOrderRejected = forget, forget, forget

function OnShutdown()
  local position = product.position
  job:logText(string.format("%d of %d at %.4f, the market's own average is %.4f", position.localLong, volume,
    position.localAverageBuyPrice or 0, lots > 0 and money / lots or 0))
end
