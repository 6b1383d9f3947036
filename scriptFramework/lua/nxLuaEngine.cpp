#include "scriptFramework/lua/nxLuaEngine.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <lua.hpp>
#include <memory>
#include <string_view>
#include <system_error>

#include "base/enums/nxEnumValue.h"
#include "base/values/nxStringHelper.h"
#include "scriptFramework/lua/nxLuaClass.h"
#include "scriptFramework/lua/nxLuaErrorText.h"
#include "scriptFramework/lua/nxLuaIsolation.h"

namespace {

constexpr char BinaryMark = LUA_SIGNATURE[0];
constexpr std::string_view ByteOrderMark = "\xEF\xBB\xBF";
constexpr const char* BinaryRefused = "binary chunks are not accepted";
constexpr int RoomToLoad = 128;  // values: the class metatables and the script

// A binary chunk can break the state that loads it. Lua engines look for the mark after a leading # line, and
// one of them after a byte order mark, too.
bool IsBinary(std::string_view text)
{
    if (text.starts_with(ByteOrderMark)) text.remove_prefix(ByteOrderMark.size());
    if (text.starts_with('#')) text.remove_prefix(std::min(text.size(), text.find('\n') + 1));
    return text.starts_with(BinaryMark);
}

// The file's content, read once: what is looked through is what is loaded, and a pipe loads, too. False and
// the reason in `text` when it cannot be read.
bool ReadFile(const std::string& path, std::string& text)
{
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "rb"), std::fclose);
    char block[16 * 1024];
    while (file != nullptr) {
        const std::size_t count = std::fread(block, 1, sizeof block, file.get());
        text.append(block, count);
        if (count == 0 && !std::ferror(file.get())) return true;
        if (count == 0) break;
    }
    const std::string reason = std::system_category().message(errno);
    text = (file == nullptr ? "cannot open " : "cannot read ") + path + ": " + reason;
    return false;
}

// Lua calls it where a call fails, before it unwinds the stack. The error stays as it is.
int TellFailure(lua_State* L)
{
    const char* const text = lua_tostring(L, 1);
    const std::string told = text == nullptr ? luaL_typename(L, 1) : text;
    nxLuaState::Of(L).watch->GetDebugger()->OnFailure(L, 1, told);
    lua_settop(L, 1);
    return 1;
}

// The position of the script line in "HEAD:LINE:TAIL", LINE between two colons behind the first closing
// bracket.
struct LinePosition
{
    std::size_t first = std::string::npos;   // of LINE
    std::size_t second = std::string::npos;  // of the colon behind it
};

LinePosition FindLine(const std::string& message)
{
    const std::size_t open = message.find('[');
    const std::size_t close = message.find(']');
    if (open == std::string::npos || close == std::string::npos) return {};
    const std::size_t first = message.find(':', close);
    if (first == std::string::npos) return {};
    return {first + 1, message.find(':', first + 1)};
}

}  // namespace

bool nxLuaEngine::LoadScript(const std::string& path)
{
    return _Guard([&] {
        _state.MakeRoom(RoomToLoad);
        _RegisterCustomObjects();
        _ResetError();
        lua_State* L = _GetState();
        luaL_checkstack(L, 2, "no room for the script");
        std::string text;
        const bool isRead = ReadFile(path, text);
        if (!isRead || IsBinary(text)) {
            lua_pushstring(L, isRead ? BinaryRefused : text.c_str());
            return false;
        }
        // For the system's own interpreter; its line end stays, so that lines count as in the file.
        if (text.starts_with('#')) text.erase(0, text.find('\n'));
        if (luaL_loadbuffer(L, text.data(), text.size(), ("@" + path).c_str()) == 0) {
            _NoteChunk();
            if (lua_pcall(L, 0, LUA_MULTRET, 0) == 0) return true;
        }
        std::string message = nxLuaErrorText(L);
        _limitError = _state.account->FindBreach(message);
        return false;
    });
}

bool nxLuaEngine::LoadText(const std::string& text)
{
    return _Guard([&] {
        _state.MakeRoom(RoomToLoad);
        _RegisterCustomObjects();
        return _LoadAndRun(text, true);
    });
}

bool nxLuaEngine::LoadModule(const std::string& text)
{
    return _Guard([&] {
        _state.MakeRoom();
        return _LoadAndRun(text, false);
    });
}

void nxLuaEngine::SetLimits(const nxScriptLimits& limits)
{
    _state.account->SetLimits(limits);
    _state.TuneCollector();
    const bool isMemoryAlone = limits == nxScriptLimits{.memory = limits.memory,
                                                        .shutdownMemory = limits.shutdownMemory,
                                                        .shutdownInstructions = limits.shutdownInstructions};
    if (!isMemoryAlone || _state.watch != nullptr) _PrepareWatch();
}

void nxLuaEngine::SetPulse(nxScriptPulse* pulse)
{
    if (_state.watch == nullptr && pulse == nullptr) return;
    if (_state.watch == nullptr) _state.watch = std::make_unique<nxScriptWatch>(_state);
    _state.watch->SetPulse(pulse);
    _PrepareWatch();
}

void nxLuaEngine::SetDebugger(nxScriptDebugger* debugger)
{
    if (_state.watch == nullptr && debugger == nullptr) return;
    if (_state.watch == nullptr) _state.watch = std::make_unique<nxScriptWatch>(_state);
    _state.watch->SetDebugger(debugger);
    _state.EndLoans(_GetState());  // it holds what it shows for longer than a call
    _PrepareWatch();
    if (debugger != nullptr) debugger->OnState(_state);
}

void nxLuaEngine::SetSampler(nxScriptSampler* sampler)
{
    if (_state.watch == nullptr && sampler == nullptr) return;
    if (_state.watch == nullptr) _state.watch = std::make_unique<nxScriptWatch>(_state);
    if (sampler != nullptr) sampler->SetState(_state);
    _state.watch->SetSampler(sampler);
    _PrepareWatch();
}

bool nxLuaEngine::ReadHeap(nxScriptHeap& heap)
{
    return _Guard([&] {
        _state.MakeRoom();
        heap.Read(_state);
        return true;
    });
}

void nxLuaEngine::_PrepareWatch()
{
    if (_state.watch == nullptr) _state.watch = std::make_unique<nxScriptWatch>(_state);
    const auto prepare = [&] {
        _state.watch->Prepare();
        return true;
    };
    if (!_Guard(prepare)) throw std::bad_alloc();
}

void nxLuaEngine::_NoteChunk()
{
    if (_state.watch != nullptr) _state.watch->SetChunk(_GetState());
}

bool nxLuaEngine::_Settle(bool succeeded)
{
    if (!_state.watch->IsEnding()) return succeeded;
    _SetError(_state.watch->GetReason());
    _limitError = _state.watch->GetError();
    return false;
}

void nxLuaEngine::Isolate(unsigned long long seed)
{
    const auto isolate = [&] {
        nxLuaIsolate(_GetState(), seed);
        return true;
    };
    if (!_Guard(isolate)) throw std::bad_alloc();
}

void nxLuaEngine::_Restrict(nxScriptServices services)
{
    const auto restrict = [&] {
        nxRestrictScript(_GetState(), std::move(services));
        return true;
    };
    if (!_Guard(restrict)) throw std::bad_alloc();
}

bool nxLuaEngine::_LoadAndRun(const std::string& text, bool isScript)
{
    _ResetError();
    lua_State* L = _GetState();
    luaL_checkstack(L, 2, "no room for the script");
    if (IsBinary(text)) {
        lua_pushstring(L, BinaryRefused);
    } else if (luaL_loadstring(L, text.c_str()) == 0) {
        if (isScript) _NoteChunk();
        return _CallFunction(0, static_cast<unsigned int>(LUA_MULTRET));
    }
    _ProcessError();
    return false;
}

bool nxLuaEngine::DoesFunctionExist(const std::string& name) const
{
    bool exists = false;
    return const_cast<nxLuaEngine*>(this)->_LookUpFunction(name, exists) && exists;
}

bool nxLuaEngine::_LookUpFunction(const std::string& name, bool& exists)
{
    return _Guard([&] {
        _state.MakeRoom();
        _GetFunction(name);
        exists = lua_type(_GetState(), -1) == LUA_TFUNCTION;
        return true;
    });
}

double nxLuaEngine::GetGlobalNumber(const std::string& name)
{
    double number = 0.0;
    _Guard([&] {
        _state.MakeRoom();
        _GetFunction(name);
        number = lua_tonumber(_GetState(), -1);
        lua_pop(_GetState(), 1);
        return true;
    });
    return number;
}

void nxLuaEngine::RemoveFunction(const std::string& name)
{
    // A script's own metatable on the globals may refuse the write; then the name was no plain global.
    _Guard([&] {
        _state.MakeRoom();
        lua_pushnil(_GetState());
        lua_setfield(_GetState(), LUA_GLOBALSINDEX, name.c_str());
        return true;
    });
}

bool nxLuaEngine::SetGlobalObject(const std::string& name, const nxLuaClass& type, void* object)
{
    return _Guard([&] {
        _ResetError();
        _state.MakeRoom();
        _Push(name);
        type.Push(_GetState(), object);
        lua_settable(_GetState(), LUA_GLOBALSINDEX);
        return true;
    });
}

int nxLuaEngine::_PushFailureHandler(int below)
{
    if (_state.watch == nullptr || _state.watch->GetDebugger() == nullptr) return 0;
    lua_State* const L = _GetState();
    lua_pushcfunction(L, TellFailure);
    lua_insert(L, -below - 1);
    return lua_gettop(L) - below;
}

bool nxLuaEngine::_CallFunction(unsigned int arguments, unsigned int results)
{
    _ResetError();
    lua_State* L = _GetState();
    const int handler = _PushFailureHandler(static_cast<int>(arguments) + 1);
    const int status = lua_pcall(L, static_cast<int>(arguments), static_cast<int>(results), handler);
    if (handler != 0) lua_remove(L, handler);
    if (status == 0) return true;
    if (status < 0) {
        // An exception that is none of Lua's, which this engine reports without a text.
        lua_pop(L, 1);
        lua_pushstring(L, "C++ exception");
    }
    _ProcessError();
    // What filled the memory is mostly garbage now, and the collector, which runs between allocations only,
    // would not be asked before the next call has failed for want of the first few bytes.
    if (status == LUA_ERRMEM || _limitError == nxError_LimitMemory) lua_gc(L, LUA_GCCOLLECT, 0);
    return false;
}

void nxLuaEngine::_TuneCollector()
{
    constexpr unsigned int callsBetween = 1000;
    if (_untilTuning-- != 0) return;
    _untilTuning = callsBetween;
    _state.TuneCollector();
}

void nxLuaEngine::_GetFunction(const std::string& name)
{
    lua_getfield(_GetState(), LUA_GLOBALSINDEX, name.c_str());
}

void nxLuaEngine::_Push(const std::string& value)
{
    lua_pushstring(_GetState(), value.c_str());
}

void nxLuaEngine::_Push(unsigned int value)
{
    lua_pushnumber(_GetState(), value);
}

void nxLuaEngine::_ProcessError()
{
    lua_State* L = _GetState();
    _SetError(nxLuaErrorText(L));
    lua_settop(L, -2);
}

void nxLuaEngine::_SetError(std::string text)
{
    _lastError = std::move(text);
    _limitError = _state.account->FindBreach(_lastError);
    _TellLine();
    const nxScriptLimits::Amount most = _state.account->GetLimits().logLine;
    if (_limitError == 0 && most != 0 && _lastError.size() > most) _lastError.resize(most);
}

void nxLuaEngine::_TellLine()
{
    const LinePosition position = FindLine(_lastError);
    if (position.second == std::string::npos) return;
    const int line = std::atoi(_lastError.c_str() + position.first);
    if (line == 0) return;

    // A number that no line can have stays as Lua gave it.
    const std::string place = _helper.modules.empty() ? nxStringHelper::GetAsString(line)
                                                      : _helper.Tell(static_cast<unsigned int>(line));
    _lastError.replace(position.first, position.second - position.first, place);
}
