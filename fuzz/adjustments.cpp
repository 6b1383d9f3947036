// A file of adjustments: refused with a place, or each one gives lots and prices that can be booked.
#include <unistd.h>

#include <cstdint>
#include <cstdlib>

#include "host/accounts/nxProductAccount.h"
#include "host/run/nxAdjustmentFile.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    char path[] = "/tmp/nx_fuzz_XXXXXX";
    const int file = mkstemp(path);
    if (file < 0 || write(file, data, size) != static_cast<ssize_t>(size)) std::abort();
    close(file);
    std::vector<nxAdjustment> adjustments;
    nxFeedError error;
    if (!nxAdjustmentFile::Read(path, adjustments, error)) {
        if (error.GetText().empty()) std::abort();
        adjustments.clear();
    }
    nxExchangeEvent fill;
    fill.fillPrice = nxDecimal::FromMantissa(12345, 2);
    fill.fillVolume = 1'000'000'000;
    for (const nxAdjustment& adjustment : adjustments) {
        nxProductAccount account{nxProductDescription()};
        account.AddFill(nxSide::Sell, fill);
        const nxAdjusted adjusted = account.GetAdjusted(adjustment, adjustment.GetPrice(fill.fillPrice));
        account.Adjust(adjustment, adjusted);
        if (account.GetKeeper().GetNet() != adjusted.lots || adjusted.lots > 0) std::abort();
    }
    unlink(path);
    return 0;
}
