#pragma once

#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

class nxScriptAccount;
struct lua_State;

// A number of a script truncated toward zero to 64 bits. NaN and what does not fit give 0.
long long nxLuaTruncateToLong(double number);
// The low 32 bits of that.
unsigned int nxLuaTruncate(double number);

// One argument of a bound call, read where it lies on the Lua stack. Belongs to its nxLuaParameters and shows
// what that one's cursor points at. The getters marked "raises" leave the caller by Lua's own argument error
// when the type is wrong, so call them before taking a lock.
class nxLuaParameter
{
public:
    nxLuaParameter() = default;
    virtual ~nxLuaParameter() = default;
    nxLuaParameter(const nxLuaParameter&) = delete;
    nxLuaParameter& operator=(const nxLuaParameter&) = delete;

    bool IsValid() const;  // given, and not nil
    bool IsNull() const;   // given as nil; a missing parameter is not null
    bool IsTable() const;
    const char* GetType() const;  // for messages: "NIL", "NUMBER", ...

    double GetNumber() const;       // 0.0 when missing; raises
    const char* GetString() const;  // null when missing; numbers are converted; raises
    bool GetBool() const;           // false when missing; raises on anything but a boolean
    // The number truncated to 32 bits; raises.
    unsigned int GetUnsigned() const { return nxLuaTruncate(GetNumber()); }

    // A value of a table parameter by its key, without metamethods; false when it is absent or of another
    // type. A number is taken for a text, and an empty text counts as not given.
    bool GetNamedValue(const std::string& key, double& out) const;
    bool GetNamedValue(const std::string& key, bool& out) const;
    bool GetNamedValue(const std::string& key, std::string& out) const;

    // The names of its values, as far as `room` goes; they are the script's and good while the table is not
    // changed. False: there are more, which are not in `out`. None when the parameter is no table.
    bool GetNames(std::string_view* out, std::size_t room, std::size_t& count) const;

    // The elements 1, 2, ... up to the first nil. False when the parameter is no table or at the first
    // element that is not numeric; what was read so far stays in out.
    bool GetAsDoubleVector(std::vector<double>& out) const;
    // Rows of such elements, which may differ in length. It and the next raise when the script may not hold
    // so much: a table may hold one long row or text many times over. error stays as it is when the parameter
    // is no table.
    bool GetAsMatrix(std::vector<std::vector<double>>& out, std::string& error) const;
    // All pairs as text. False when the parameter is no table or at the first key or value that is neither
    // string nor number; what was collected so far stays in out.
    bool GetAsNameValueMap(std::map<std::string, std::string>& out) const;

    void Test() const {}

    const std::shared_ptr<nxScriptAccount>& GetAccount() const;
    // What the script's account answered, for where no nxLuaResults can tell: raises its text on false.
    void Require(bool isAllowed) const;

private:
    friend class nxLuaParameters;

    bool _FetchNamedValue(const std::string& key) const;

    int _index = 0;  // 0: no value
    lua_State* _L = nullptr;
    int _type = -1;
};
