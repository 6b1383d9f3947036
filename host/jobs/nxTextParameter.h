#pragma once

#include "scriptFramework/supervision/nxVorantParameter.h"

// A parameter that is text, which the library has no instance for: scripts read it as it stands. Any text is
// one, the empty one too; null only after SetNull.
class nxTextParameter : public nxVorantParameter
{
public:
    using nxVorantParameter::nxVorantParameter;

    nxTextParameter* CopyInstance() const override { return new nxTextParameter(*this); }
    nxVorantParameterTypeEnum GetParameterType() const override { return nxVorantParameterType_String; }
    bool IsNull() const override { return _isNull; }
    void SetNull() override
    {
        _value.clear();
        _isNull = true;
    }
    void PersistValueToString(std::string& text) const override { text = _value; }
    [[nodiscard]] nxErrorEnum PersistValueFromString(const std::string& text) override
    {
        _value = text;
        _isNull = false;
        return {};
    }

private:
    std::string _value;
    bool _isNull = true;
};
