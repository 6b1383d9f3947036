// The flat text of output parameters: any text is read, and what was read survives the way back.
#include <cstdint>
#include <cstdlib>
#include <string>

#include "scriptFramework/supervision/nxVorantAlgorithmSpec.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string text(reinterpret_cast<const char*>(data), size);
    std::map<std::string, std::string> read, again;
    static_cast<void>(nxVorantAlgorithmSpec::ExtractParametersFromUserString(text, read));
    const std::string joined = nxVorantAlgorithmSpec::JoinParametersToUserString(read);
    if (!nxVorantAlgorithmSpec::ExtractParametersFromUserString(joined, again).IsSuccess()) std::abort();
    if (again != read) std::abort();
    return 0;
}
