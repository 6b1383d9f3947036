-- Columns count characters, not bytes.
function OnInit()
  local text = "größer" job:logTxt(text)
end
