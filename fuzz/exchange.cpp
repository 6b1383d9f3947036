// Random orders over a random market: the exchange beside a naive one. The bytes choose the setup, the
// requests and the rows; where the two differ, the latest steps are printed.
#include <cstdio>
#include <cstdlib>

#include "tests/host/nxExchangePair.h"

namespace {

// As many steps as there are bytes to choose them.
std::string Compare(const std::uint8_t* data, std::size_t size, bool keepsLog)
{
    std::size_t place = 2;
    const auto choose = [&](unsigned int limit) { return place < size ? data[place++] % limit : 0; };
    const auto kind = static_cast<nxExchangePair::Data>(data[0] % 6);
    const auto models = nxFillModel::GetAll();
    nxExchangePair pair(kind, models[data[1] % models.size()].name, choose, keepsLog);
    while (place < size)
        if (pair.Run(1) == 0) return pair.GetReport();
    return {};
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    constexpr std::size_t most = 8192;  // the naive one is slow with many orders
    if (size < 2) return 0;
    size = std::min(size, most);
    if (Compare(data, size, false).empty()) return 0;
    std::fprintf(stderr, "%s\n", Compare(data, size, true).c_str());
    std::abort();
}
