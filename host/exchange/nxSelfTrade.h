#pragma once

#include <span>
#include <string_view>

// What happens when an order would trade with a resting order of its owner.
enum class nxSelfTrade : unsigned char {
    CancelNewest,  // what is left of the order that comes in ends
    CancelOldest,  // the resting order ends
    Refuse,        // each order is protected: one that would trade with an own order is refused
    Meet           // they trade
};

// A row of the table of these rules, as --self-trade takes them.
struct nxSelfTradeRule
{
    nxSelfTrade rule;
    const char* name;
    const char* help;  // in a few words

    // The default first.
    static std::span<const nxSelfTradeRule> GetAll();
    // Null for an unknown name.
    static const nxSelfTradeRule* Find(std::string_view name);
};
