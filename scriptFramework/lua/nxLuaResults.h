#pragma once

#include <memory>
#include <string>
#include <vector>

#include "base/values/nxDecimal.h"
#include "base/values/nxValueWrapper.h"
#include "scriptFramework/lua/nxScriptLimits.h"

class nxScriptAccount;
class nxScriptCharge;
struct lua_State;

// The results of a bound call. Each Add pushes exactly one value; both marks of a value reach the script as
// nil. SetError gives the text that the dispatcher raises when the bound function returns false.
class nxLuaResults
{
public:
    explicit nxLuaResults(lua_State* L) : _L(L) {}
    virtual ~nxLuaResults() = default;
    nxLuaResults(const nxLuaResults&) = delete;
    nxLuaResults& operator=(const nxLuaResults&) = delete;

    void Add(const std::string& value);
    void Add(const char* value);
    void Add(bool value);
    void Add(double value);
    void Add(unsigned int value);
    void Add(long long value);
    void Add(unsigned long long value);
    void Add(const nxValueWrapper<unsigned int, -1, -2>& value);
    void Add(const nxDecimal& value);
    void Add(const std::vector<double>& values);  // nil when empty
    void Add(
        const std::vector<std::vector<double>>& matrix);  // nil when empty; an empty row is an empty table
    void AddNull();
    // Room for that many results, which is asked for when there may be more than a few; raises when there is
    // none.
    void Reserve(std::size_t count);

    // Pushes an object of a bound class as a new wrapper table. The object stays its owner's.
    template <class T>
    void AddObject(T* object);
    // The same, with nil for a null pointer.
    template <class T>
    void AddObjectOrNull(T* object);
    // Pushes a part of the object whose function or property this is, which may be there for one event alone.
    template <class T>
    void AddMember(T* object);

    int Count() const { return _count; }
    void SetError(const std::string& text) { _error = text; }
    const std::string& GetError() const { return _error; }
    // For `return results.Fail("...")`.
    bool Fail(const std::string& text);

    // The script's account, and its operations of these names, with its text as the error where it refuses:
    // for `if (!results.Adds(...)) return false;`.
    const std::shared_ptr<nxScriptAccount>& GetAccount() const;
    [[nodiscard]] bool Allows(nxScriptLimit which, nxScriptLimits::Amount amount);
    [[nodiscard]] bool Adds(nxScriptLimit which, nxScriptLimits::Amount more = 1);
    [[nodiscard]] bool Keeps(nxScriptLimit which, const std::string& name, std::size_t bytes = 0);
    // For good, as what lives as long as the script.
    [[nodiscard]] bool Charges(std::size_t bytes);
    // Of an object that charges what it holds.
    [[nodiscard]] bool Sets(nxScriptCharge& charge, std::size_t bytes);

private:
    bool _Told(bool isAllowed);

    lua_State* _L;
    int _count = 0;
    std::string _error;
};
