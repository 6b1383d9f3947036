#pragma once

#include <string>

// The scripts that are measured, by the library and by what it is compared with.
namespace nxBenchScripts {

// One method, five reads and an addition to a global.
inline const std::string Body = R"(
  if price:isBid() then
    local mid = (price.bidPrice + price.askPrice) / 2
    local spread = price.askPrice - price.bidPrice
    total = total + price.bidVolume
  end
)";
inline const std::string Whole = "function OnPrice(price)" + Body + "end ";
// The same in a function of its own, to which the callback hands its price.
inline const std::string Kept = "function Act(price)" + Body + "end function OnPrice(price) Act(price) end ";
// Some 8,000 instructions, nearly nothing but Lua.
inline const std::string Loop = R"(
function OnPrice(price)
  local sum = 0
  for i = 1, 2000 do sum = (sum + i * 3) % 1000 end
end )";

// Holds that many tables with a text each, some 94 bytes together, which the collector has to walk: in one
// table, or in tables of `each`.
inline std::string GetHeap(int tables, int each = 0)
{
    const std::string item = "{ i, tostring(i) }";
    const std::string loop = "held = {} for i = 1, " + std::to_string(tables) + " do ";
    if (each == 0) return loop + "held[i] = " + item + " end ";
    const std::string place = "local k = math.floor(i / " + std::to_string(each) + ") ";
    return loop + place + "held[k] = held[k] or {} table.insert(held[k], " + item + ") end ";
}

inline std::string GetCallback(const std::string& name, const std::string& parameter, const std::string& body)
{
    return "function " + name + "(" + parameter + ") " + body + " end";
}

}  // namespace nxBenchScripts
