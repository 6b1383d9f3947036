#include "host/exchange/nxSelfTrade.h"

#include <algorithm>

namespace {

constexpr nxSelfTradeRule Rules[] = {
    {nxSelfTrade::CancelNewest, "cancel-newest", "what is left of the one that comes in ends"},
    {nxSelfTrade::CancelOldest, "cancel-oldest", "the resting one ends"},
    {nxSelfTrade::Refuse, "refuse", "the one that comes in is refused"},
    {nxSelfTrade::Meet, "meet", "they trade"},
};

}  // namespace

std::span<const nxSelfTradeRule> nxSelfTradeRule::GetAll()
{
    return Rules;
}

const nxSelfTradeRule* nxSelfTradeRule::Find(std::string_view name)
{
    const auto found = std::ranges::find(Rules, name, &nxSelfTradeRule::name);
    return found == std::end(Rules) ? nullptr : found;
}
