#pragma once

#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "base/values/nxExactAmount.h"
#include "host/feed/nxInputStream.h"
#include "host/report/nxRunRecord.h"

// The lines of the record of a run, one after the other, in memory that does not grow with their count: a
// plain file, a packed one or a pipe. A value that is not there, or is something else than asked for, counts
// as nothing: 0, not a number, an empty text. Used on one thread.
class nxRecordLines
{
public:
    // Keys in their order. A number that no double holds with all its digits is its text.
    using Json = nlohmann::ordered_json;
    enum class Step { Line, End, Failed };

    [[nodiscard]] bool Open(const std::string& path);
    // The values of the line before are gone then.
    [[nodiscard]] Step Next();
    // The last line is not whole, or a packed file stops before its end; known at the end.
    bool IsCut() const { return _isCut; }
    // "FILE:LINE: what is wrong".
    const std::string& GetFailure() const { return _failure; }
    // "FILE:LINE: " with that of the latest line.
    std::string GetPlace() const { return _path + ":" + std::to_string(_line) + ": "; }

    const Json& Get() const { return _json; }
    const Json& Get(const char* key) const { return GetPart(_json, key); }
    const std::string& GetText(const char* key) const { return GetText(_json, key); }
    unsigned long long GetCount(const char* key) const { return GetCount(_json, key); }
    double GetNumber(const char* key) const { return ToNumber(Get(key)); }
    nxExactAmount GetAmount(const char* key) const { return ToAmount(Get(key)); }
    bool GetBool(const char* key) const { return Get(key).is_boolean() && Get(key).get<bool>(); }
    // None for null and for what is no time.
    std::optional<long long> GetTime(const char* key) const { return GetTime(_json, key); }
    // The values that are texts, numbers or bools. Valid until the next line.
    const std::vector<nxRunRecord::Field>& GetFields();

    static const Json& GetPart(const Json& json, const char* key);
    static const std::string& GetText(const Json& json, const char* key);
    static unsigned long long GetCount(const Json& json, const char* key);
    static std::optional<long long> GetTime(const Json& json, const char* key);
    static double ToNumber(const Json& json);
    static nxExactAmount ToAmount(const Json& json);
    static std::vector<std::string> ToTexts(const Json& json);

private:
    bool _Fill();
    Step _Fail(const std::string& what);
    Step _Parse(std::string_view text, bool hasEnd);

    nxInputStream _stream;
    std::string _path;
    std::string _buffer;     // what was read, from the line at _begin on
    std::size_t _begin = 0;  // of the next line in it
    bool _isOver = false;    // nothing more to read
    bool _isCut = false;
    unsigned long long _line = 0, _sequence = 0;
    Json _json;
    std::vector<nxRunRecord::Field> _fields;
    std::string _failure;
};
