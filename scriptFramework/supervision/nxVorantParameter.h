#pragma once

#include <string>

#include "base/enums/nxErrorEnum.h"
#include "base/enums/nxVorantParameterTypeEnum.h"

// A named input value of an algorithm that knows its type, may be null and has a text form. The host makes
// and fills it; nxAlgoJobInterface::GetParameter hands out copies that the receiver deletes. A plain value:
// one thread at a time.
//
// A type without a template instance (see nxVorantParameterTemplate.h) is a class of the host's own, which
// scripts read as its text.
class nxVorantParameter
{
public:
    nxVorantParameter() = default;
    explicit nxVorantParameter(const std::string& name) : _name(name) {}
    nxVorantParameter(const nxVorantParameter&) = default;
    nxVorantParameter& operator=(const nxVorantParameter&) = default;
    virtual ~nxVorantParameter() = default;

    // The caller owns the copy.
    virtual nxVorantParameter* CopyInstance() const = 0;
    virtual nxVorantParameterTypeEnum GetParameterType() const = 0;
    virtual bool IsNull() const = 0;
    virtual void SetNull() = 0;
    // The same in every locale; empty for null.
    virtual void PersistValueToString(std::string& text) const = 0;
    // Refuses what is no text of the type, and is null then, never at its old value.
    [[nodiscard]] virtual nxErrorEnum PersistValueFromString(const std::string& text) = 0;

    const std::string& GetName() const { return _name; }
    void SetName(const std::string& name) { _name = name; }
    bool GetIsSystemParameter() const { return _isSystemParameter; }

protected:
    void SetIsSystemParameter(bool isSystemParameter) { _isSystemParameter = isSystemParameter; }

private:
    std::string _name;
    bool _isSystemParameter = false;
};
