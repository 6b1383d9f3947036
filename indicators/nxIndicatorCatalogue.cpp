#include "indicators/nxIndicatorCatalogue.h"

std::unique_ptr<nxTechnicalIndicator> nxIndicatorCatalogue::Create(const std::string& type, const Parameters&,
                                                                   std::string& error)
{
    error = "unknown type " + type;
    return nullptr;
}
