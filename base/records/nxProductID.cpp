#include "base/records/nxProductID.h"

nxProductID::nxProductID(const std::string& name, const nxProductTypeEnum& productType,
                         const std::string& exchange)
    : _text(exchange.empty() ? name : exchange + ":" + name),
      _name(name),
      _productType(productType),
      _exchange(exchange)
{
}
