#include "host/results/nxResultData.h"

void nxResultData::Add(const nxResultData& other)
{
    for (const auto count :
         {&nxResultData::orders, &nxResultData::messages, &nxResultData::fills, &nxResultData::orderedVolume,
          &nxResultData::executedVolume, &nxResultData::volume, &nxResultData::makerVolume,
          &nxResultData::slippageVolume})
        this->*count += other.*count;
    for (const auto amount : {&nxResultData::fees, &nxResultData::turnover, &nxResultData::slippage})
        this->*amount += other.*amount;
    for (std::size_t i = 0; i < nxMarkout::Count; ++i) {
        markouts[i].sum += other.markouts[i].sum;
        markouts[i].volume += other.markouts[i].volume;
        markouts[i].fills += other.markouts[i].fills;
    }
    trips.Add(other.trips);
}
