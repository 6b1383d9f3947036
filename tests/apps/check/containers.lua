local fills

function OnInit()
  fills = vorant.queue.new()
  fills:add(1)
  fills.push(2)
  vorant.stack.new()
  job:logText(fills:size() + fills.count)
end
