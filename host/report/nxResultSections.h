#pragma once

#include <string>

#include "host/report/nxJsonWriter.h"
#include "host/report/nxResultBudget.h"
#include "host/results/nxMeasures.h"

// Parts of the result document, each some keys of the object that is open.

// What was run: scripts, modules, data, settings, seed and capital. isOver: with what was read of the data.
void nxWriteRunFacts(nxJsonWriter& json, const nxResultRun& run, bool isOver);
// The measures that there are, as an array.
void nxWriteDefinitions(nxJsonWriter& json);
// Why a job ended, and how often its callbacks were called.
void nxWriteJobEnd(nxJsonWriter& json, const nxResultJob& job);
// The rows of an envelope, as an array.
void nxWriteVariants(nxJsonWriter& json, const std::vector<nxResultVariant>& rows);
// Months, breakdowns, drawdowns and histograms of a result.
void nxWriteSummaries(nxJsonWriter& json, const nxResult& result, const nxMeasureBasis& basis);
// Its equity, round trips and orders.
void nxWriteSeries(nxJsonWriter& json, const nxResult& result, const nxResultData& data,
                   const nxResultBudget& budget);
// Products, lines, log and failures of the run.
void nxWriteMarkets(nxJsonWriter& json, const nxResult& result, const nxResultBudget& budget);

// Empty for products without one.
inline std::string nxGetCurrency(const nxResultData& data)
{
    return data.currency.IsUndefined() ? "" : data.currency.GetAsString();
}
