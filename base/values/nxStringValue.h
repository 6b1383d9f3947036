#pragma once

#include <string>
#include <utility>

#include "base/enums/nxValueStatusEnum.h"
#include "base/values/nxValueMarks.h"

// A text with a status of its own: an empty valid text is not a null one. Null by default.
class nxStringValue
{
public:
    nxStringValue() : _status(nxValueStatus_Null) {}
    nxStringValue(std::string value) : _value(std::move(value)), _status(nxValueStatus_Valid) {}
    nxStringValue(const char* value) : nxStringValue(std::string(value)) {}
    nxStringValue(nxNullInitalizer) : nxStringValue() {}
    nxStringValue(nxNoChangeInitalizer) : _status(nxValueStatus_NoChange) {}

    // Empty for a mark.
    const std::string& GetValue() const { return _value; }
    const nxValueStatusEnum& GetStatus() const { return _status; }
    bool IsValid() const { return _status == nxValueStatus_Valid; }
    bool IsNull() const { return _status == nxValueStatus_Null; }
    bool IsNoChange() const { return _status == nxValueStatus_NoChange; }

    void SetValue(std::string value) { *this = nxStringValue(std::move(value)); }
    void SetNull() { *this = nxStringValue(); }
    void SetNoChange() { *this = nxStringValue(nxNoChangeInitalizer()); }

    bool operator==(const nxStringValue&) const = default;

private:
    std::string _value;
    nxValueStatusEnum _status;
};
