#include "scriptFramework/supervision/nxVorantParameterTemplate.h"

namespace {

nxErrorEnum Read(const std::string& text, nxDecimal& value)
{
    return value.SetFromString(text, '.');
}

nxErrorEnum Read(const std::string& text, nxDoubleValueWrapper& value)
{
    double number = 0.0;
    const nxErrorEnum error = nxStringHelper::SetFromString(text, number, '.');
    value = number;
    return error;
}

// Not the wrapper's own reading: a text that names a mark gives the mark.
template <class T, long long nullValue, long long noChangeValue>
nxErrorEnum Read(const std::string& text, nxValueWrapper<T, nullValue, noChangeValue>& value)
{
    T number = 0;
    const nxErrorEnum error = nxStringHelper::SetFromString(text, number);
    value.SetValue(number);
    return error;
}

nxErrorEnum Read(const std::string& text, nxEnum& value)
{
    return value.SetFromString(text) ? nxErrorEnum() : nxErrorEnum(nxError_GeneralFailure);
}

}  // namespace

template <unsigned int id, class T>
nxVorantParameterTemplate<id, T>* nxVorantParameterTemplate<id, T>::CopyInstance() const
{
    return new nxVorantParameterTemplate(*this);
}

template <unsigned int id, class T>
void nxVorantParameterTemplate<id, T>::_GetAsString(const BareValue& value, std::string& text) const
{
    if constexpr (std::is_same_v<BareValue, nxEnum>) {
        text = value.GetShortDescription();
    } else {
        text = value.GetAsString();
    }
}

template <unsigned int id, class T>
bool nxVorantParameterTemplate<id, T>::_IsNull(const BareValue& value) const
{
    if constexpr (std::is_same_v<BareValue, nxEnum>) {
        return value.IsUndefined();
    } else {
        return value.IsNull();
    }
}

template <unsigned int id, class T>
nxErrorEnum nxVorantParameterTemplate<id, T>::_SetFromString(const std::string& text, BareValue& value)
{
    const nxErrorEnum error = Read(text, value);
    if (!error.IsSuccess()) _SetNull(value);
    return error;
}

template <unsigned int id, class T>
void nxVorantParameterTemplate<id, T>::_SetNull(BareValue& value) const
{
    if constexpr (std::is_same_v<BareValue, nxEnum>) {
        value = nxEnum_Undefined;
    } else {
        value.SetNull();
    }
}

template class nxVorantParameterTemplate<nxVorantParameterType_Price, nxDecimal>;
template class nxVorantParameterTemplate<nxVorantParameterType_Volume, nxVolume>;
template class nxVorantParameterTemplate<nxVorantParameterType_Decimal, nxDecimal>;
template class nxVorantParameterTemplate<nxVorantParameterType_Double, nxDoubleValueWrapper>;
template class nxVorantParameterTemplate<nxVorantParameterType_Integer, nxIntValue>;
template class nxVorantParameterTemplate<nxVorantParameterType_Bool, nxBoolEnum>;
