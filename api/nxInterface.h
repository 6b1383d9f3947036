#pragma once

#include <string>

#include "base/enums/nxErrorEnum.h"
#include "base/enums/nxFunctionEnum.h"

// Names of the service layer. Any thread may call.
class nxInterface
{
public:
    nxInterface() = delete;

    // The subject under which messages of a function about `key` are published. nxError_GeneralFailure, and
    // the subject left alone, when the key is empty or the function has no subject.
    [[nodiscard]] static nxErrorEnum GetLightSubscriptionSubject(std::string& subject,
                                                                 const nxFunctionEnum& function,
                                                                 const std::string& key);
};
