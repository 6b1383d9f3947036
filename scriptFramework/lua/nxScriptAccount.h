#pragma once

#include <array>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "base/threads/nxMutex.h"
#include "scriptFramework/lua/nxScriptLimits.h"

class nxAlgoOrderObject;
class nxLuaPool;

// What one script has and may have: the bytes that its objects hold outside of Lua, and things by number.
// Shared by the Lua state and all that is charged to it, and so outlives the state where a product or a store
// does. Memory may be charged on any thread; all else belongs to the thread that runs the script.
//
// Each operation that may be refused answers false then and takes note; GetRefusal is the text for the
// script.
class nxScriptAccount
{
public:
    explicit nxScriptAccount(nxLuaPool& pool);
    nxScriptAccount(const nxScriptAccount&) = delete;
    nxScriptAccount& operator=(const nxScriptAccount&) = delete;
    // The pool is about to go.
    void Close();

    void SetLimits(const nxScriptLimits& limits);
    const nxScriptLimits& GetLimits() const { return _limits; }
    // OnShutdown has instructions of its own, and more memory than is held when it begins.
    void SetInShutdown(bool inShutdown);
    bool IsInShutdown() const { return _inShutdown; }
    // Those of the call that begins now; 0: no limit.
    nxScriptLimits::Amount GetInstructions() const;

    // On the script's thread.
    [[nodiscard]] bool Charge(std::size_t bytes);
    // Whether Charge would be refused.
    [[nodiscard]] bool HasRoom(std::size_t bytes);
    // On any thread, for what cannot be refused: the script finds out when it asks for more.
    void ChargeAnyway(std::size_t bytes);
    void Release(std::size_t bytes);

    // Whether there may be so many, the wanted one included.
    [[nodiscard]] bool Allows(nxScriptLimit which, nxScriptLimits::Amount amount);
    // Counts more of what never becomes less.
    [[nodiscard]] bool Adds(nxScriptLimit which, nxScriptLimits::Amount more = 1);
    // Takes note of a thing with a name and of a text of so many bytes that the host keeps for it, in place
    // of an earlier one. Memory stands for texts of which there is one for each name.
    [[nodiscard]] bool Keeps(nxScriptLimit which, const std::string& name, std::size_t bytes = 0);
    void Drop(nxScriptLimit which, const std::string& name);

    // Orders that were not over when the script made the latest; kept while their number is limited.
    std::vector<nxAlgoOrderObject*> openOrders;

    std::string GetRefusal() const { return GetText(_refused); }
    std::string GetText(nxScriptLimit which) const;
    void NoteBreach(nxScriptLimit which);
    // The error of nxErrorEnum that tells of the limit whose breach ended a call with this text; 0: none did.
    // Lua's own text of a lack of memory is completed.
    unsigned int FindBreach(std::string& text) const;

private:
    nxScriptLimits::Amount _Get(nxScriptLimit which) const { return _limits.*nxGetRow(which).member; }
    bool _Refuse(nxScriptLimit which);
    bool _HasRoom(std::size_t bytes) const;
    nxScriptLimit _GetMemoryRow() const;
    void _Publish();

    nxMutex _mutex;
    nxLuaPool* _pool;  // by _mutex, as _held and _limit; null once the state has gone
    std::size_t _held = 0;
    std::size_t _limit = 0;  // of Lua and objects together; 0: none
    nxScriptLimits _limits;
    bool _inShutdown = false;
    nxScriptLimit _refused = nxScriptLimit::Memory;
    std::array<bool, static_cast<std::size_t>(nxScriptLimit::Count)> _breached{};
    std::array<nxScriptLimits::Amount, static_cast<std::size_t>(nxScriptLimit::Count)> _counts{};
    // Bytes charged for each name.
    std::array<std::map<std::string, std::size_t>, static_cast<std::size_t>(nxScriptLimit::Count)> _kept;
};
