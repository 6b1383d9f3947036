#include "scriptFramework/lua/nxScriptAccount.h"

#include <algorithm>

#include "base/threads/nxMutexGuard.h"
#include "scriptFramework/lua/nxLuaPool.h"

namespace {

constexpr std::string_view LuaText = "not enough memory";
constexpr std::size_t NodeSize = 128;  // of a name that a host keeps, beside its text

std::size_t ToPlace(nxScriptLimit which)
{
    return static_cast<std::size_t>(which);
}

}  // namespace

nxScriptAccount::nxScriptAccount(nxLuaPool& pool) : _pool(&pool) {}

void nxScriptAccount::Close()
{
    const nxMutexGuard guard(_mutex);
    _pool = nullptr;
}

void nxScriptAccount::SetLimits(const nxScriptLimits& limits)
{
    const nxMutexGuard guard(_mutex);
    _limits = limits;
    _limit = limits.memory;
    _Publish();
}

void nxScriptAccount::SetInShutdown(bool inShutdown)
{
    const nxMutexGuard guard(_mutex);
    _inShutdown = inShutdown;
    _limit = _limits.memory;
    if (inShutdown && _limit != 0)
        _limit = std::max(_limit, _pool->GetHeapBytes() + _held) + _limits.shutdownMemory;
    _Publish();
}

nxScriptLimits::Amount nxScriptAccount::GetInstructions() const
{
    return _inShutdown && _limits.instructions != 0 ? _limits.shutdownInstructions : _limits.instructions;
}

// What is left for Lua's heap, which is all that the pool looks at.
void nxScriptAccount::_Publish()
{
    if (_pool == nullptr) return;
    _pool->SetHeld(_held);
    constexpr std::size_t nothing = 1;  // since 0 is no limit
    _pool->SetLimit(_limit == 0 ? 0 : _limit > _held ? _limit - _held : nothing);
}

bool nxScriptAccount::_HasRoom(std::size_t bytes) const
{
    if (_limit == 0 || _pool == nullptr) return true;
    return bytes <= _limit && _pool->GetHeapBytes() + _held <= _limit - bytes;
}

bool nxScriptAccount::Charge(std::size_t bytes)
{
    {
        const nxMutexGuard guard(_mutex);
        if (_HasRoom(bytes)) {
            _held += bytes;
            _Publish();
            return true;
        }
    }
    return _Refuse(_GetMemoryRow());
}

bool nxScriptAccount::HasRoom(std::size_t bytes)
{
    {
        const nxMutexGuard guard(_mutex);
        if (_HasRoom(bytes)) return true;
    }
    return _Refuse(_GetMemoryRow());
}

void nxScriptAccount::ChargeAnyway(std::size_t bytes)
{
    const nxMutexGuard guard(_mutex);
    _held += bytes;
    _Publish();
}

void nxScriptAccount::Release(std::size_t bytes)
{
    const nxMutexGuard guard(_mutex);
    _held -= std::min(_held, bytes);
    _Publish();
}

bool nxScriptAccount::_Refuse(nxScriptLimit which)
{
    NoteBreach(which);
    _refused = which;
    return false;
}

bool nxScriptAccount::Allows(nxScriptLimit which, nxScriptLimits::Amount amount)
{
    const nxScriptLimits::Amount limit = _Get(which);
    return limit == 0 || amount <= limit || _Refuse(which);
}

bool nxScriptAccount::Adds(nxScriptLimit which, nxScriptLimits::Amount more)
{
    nxScriptLimits::Amount& count = _counts[ToPlace(which)];
    if (!Allows(which, count + more)) return false;
    count += more;
    return true;
}

bool nxScriptAccount::Keeps(nxScriptLimit which, const std::string& name, std::size_t bytes)
{
    if (_Get(which) == 0 && _limits.memory == 0) return true;
    std::map<std::string, std::size_t>& kept = _kept[ToPlace(which)];
    const auto found = kept.find(name);
    const bool isNew = found == kept.end();
    if (isNew && which != nxScriptLimit::Memory && !Allows(which, kept.size() + 1)) return false;
    const std::size_t before = isNew ? 0 : found->second;
    const std::size_t after = NodeSize + 2 * name.size() + bytes;
    if (after > before && !Charge(after - before)) return false;
    if (after < before) Release(before - after);
    kept[name] = after;
    return true;
}

void nxScriptAccount::Drop(nxScriptLimit which, const std::string& name)
{
    std::map<std::string, std::size_t>& kept = _kept[ToPlace(which)];
    const auto found = kept.find(name);
    if (found == kept.end()) return;
    Release(found->second);
    kept.erase(found);
}

nxScriptLimit nxScriptAccount::_GetMemoryRow() const
{
    return _inShutdown ? nxScriptLimit::ShutdownMemory : nxScriptLimit::Memory;
}

std::string nxScriptAccount::GetText(nxScriptLimit which) const
{
    return nxGetBreachText(which, _Get(which));
}

void nxScriptAccount::NoteBreach(nxScriptLimit which)
{
    _breached[ToPlace(which)] = true;
}

// A script may have caught the breach, and may raise it again later: its text tells.
unsigned int nxScriptAccount::FindBreach(std::string& text) const
{
    for (std::size_t i = 0; i < _breached.size(); ++i) {
        const auto which = static_cast<nxScriptLimit>(i);
        if (_breached[i] && text.ends_with(GetText(which))) return nxGetRow(which).error;
    }
    if (_pool == nullptr || !_pool->HasRefused() || !text.ends_with(LuaText)) return 0;
    text.replace(text.size() - LuaText.size(), LuaText.size(), GetText(_GetMemoryRow()));
    return nxGetRow(_GetMemoryRow()).error;
}
