#include "base/values/nxDoubleValueWrapper.h"

#include "base/values/nxStringHelper.h"

nxValueStatusEnum nxDoubleValueWrapper::GetStatus() const
{
    return IsNoChange() ? nxValueStatus_NoChange : IsNull() ? nxValueStatus_Null : nxValueStatus_Valid;
}

std::string nxDoubleValueWrapper::GetAsString() const
{
    return IsValid() ? nxStringHelper::GetAsString(_value) : std::string();
}

std::string nxDoubleValueWrapper::GetAsLogString() const
{
    return IsNull() ? nxNullText : IsNoChange() ? nxNoChangeText : nxStringHelper::GetAsString(_value);
}

nxErrorEnum nxDoubleValueWrapper::SetFromString(const std::string& text)
{
    const nxErrorEnum error = nxStringHelper::SetFromString(text, _value, '.');
    if (!error.IsSuccess()) SetNull();
    return error;
}

nxDoubleValueWrapper nxDoubleValueWrapper::GetMax(const nxDoubleValueWrapper& a,
                                                  const nxDoubleValueWrapper& b)
{
    if (!a.IsValid()) return b;
    return !b.IsValid() || a >= b ? a : b;
}

nxDoubleValueWrapper nxDoubleValueWrapper::GetMin(const nxDoubleValueWrapper& a,
                                                  const nxDoubleValueWrapper& b)
{
    if (!a.IsValid()) return b;
    return !b.IsValid() || a <= b ? a : b;
}
