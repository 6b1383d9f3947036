#pragma once

#include <string>
#include <type_traits>

#include "base/enums/nxBoolEnum.h"
#include "base/values/nxDecimal.h"
#include "base/values/nxDoubleValueWrapper.h"
#include "base/values/nxValueWrapper.h"
#include "scriptFramework/supervision/nxVorantParameter.h"

// A parameter of type `id` that holds a T. There are the six instances named below; their code stands in the
// source file. Null by default.
//
// A value at no-change is not null, yet its text is empty, as null's is; only a bool tells its marks by name.
template <unsigned int id, class T>
class nxVorantParameterTemplate : public nxVorantParameter
{
public:
    nxVorantParameterTemplate() = default;
    explicit nxVorantParameterTemplate(const std::string& name) : nxVorantParameter(name) {}
    nxVorantParameterTemplate(const std::string& name, const T& value)
        : nxVorantParameter(name), _value(value)
    {
    }

    nxVorantParameterTemplate* CopyInstance() const override;
    nxVorantParameterTypeEnum GetParameterType() const override { return id; }
    bool IsNull() const override { return _IsNull(_value); }
    void SetNull() override { _SetNull(_value); }
    void PersistValueToString(std::string& text) const override { _GetAsString(_value, text); }
    // nxError_NotANumber or nxError_NumberOutOfRange; of a bool, nxError_GeneralFailure.
    [[nodiscard]] nxErrorEnum PersistValueFromString(const std::string& text) override
    {
        return _SetFromString(text, _value);
    }

    const T& GetValue() const { return _value; }

protected:
    // The rules of the value type, for a value that a derived class holds elsewhere too.
    using BareValue = std::conditional_t<std::is_base_of_v<nxEnum, T>, nxEnum, T>;

    void _GetAsString(const BareValue& value, std::string& text) const;
    bool _IsNull(const BareValue& value) const;
    [[nodiscard]] nxErrorEnum _SetFromString(const std::string& text, BareValue& value);
    void _SetNull(BareValue& value) const;

private:
    T _value;
};

using nxVorantPriceParameter = nxVorantParameterTemplate<nxVorantParameterType_Price, nxDecimal>;
using nxVorantVolumeParameter = nxVorantParameterTemplate<nxVorantParameterType_Volume, nxVolume>;
using nxVorantDecimalParameter = nxVorantParameterTemplate<nxVorantParameterType_Decimal, nxDecimal>;
using nxVorantDoubleParameter = nxVorantParameterTemplate<nxVorantParameterType_Double, nxDoubleValueWrapper>;
using nxVorantIntegerParameter = nxVorantParameterTemplate<nxVorantParameterType_Integer, nxIntValue>;
using nxVorantBoolParameter = nxVorantParameterTemplate<nxVorantParameterType_Bool, nxBoolEnum>;

extern template class nxVorantParameterTemplate<nxVorantParameterType_Price, nxDecimal>;
extern template class nxVorantParameterTemplate<nxVorantParameterType_Volume, nxVolume>;
extern template class nxVorantParameterTemplate<nxVorantParameterType_Decimal, nxDecimal>;
extern template class nxVorantParameterTemplate<nxVorantParameterType_Double, nxDoubleValueWrapper>;
extern template class nxVorantParameterTemplate<nxVorantParameterType_Integer, nxIntValue>;
extern template class nxVorantParameterTemplate<nxVorantParameterType_Bool, nxBoolEnum>;
