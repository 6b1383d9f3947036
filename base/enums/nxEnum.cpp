#include "base/enums/nxEnum.h"

#include "base/enums/nxEnumTexts.h"

const std::string& nxEnum::GetAsString() const
{
    return nxEnumTexts::Get(_value).name;
}

const std::string& nxEnum::GetShortDescription() const
{
    return nxEnumTexts::Get(_value).shortDescription;
}

const std::string& nxEnum::GetLongDescription() const
{
    return nxEnumTexts::Get(_value).longDescription;
}

bool nxEnum::SetFromString(const std::string& text)
{
    _value = nxEnumTexts::Find(text, _MinValue(), _MaxValue());
    return _value != nxEnum_Undefined;
}
