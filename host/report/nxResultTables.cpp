#include "host/report/nxResultTables.h"

#include <algorithm>

#include "base/values/nxStringHelper.h"
#include "host/report/nxCsvWriter.h"
#include "host/report/nxResultSections.h"
#include "host/report/nxResultText.h"

namespace {

std::string GetJob(const nxResult& result, const nxResultData& data)
{
    return data.job ? result.jobs[*data.job].name : std::string();
}

}  // namespace

void nxResultTables::WriteTrips(std::ostream& out, const nxResult& result)
{
    out << "job,currency,product,side,volume,entryTime,exitTime,entryPrice,exitPrice,profit,fees,mae,mfe,"
           "entryOrder,"
           "exitOrder\n";
    for (const nxResultData& data : result.results) {
        if (!data.job) continue;
        for (const nxRoundTrip& trip : data.trips) {
            std::vector<std::string> cells = {GetJob(result, data),
                                              nxGetCurrency(data),
                                              result.products[trip.product].name,
                                              nxGetText(trip.side),
                                              std::to_string(trip.volume),
                                              nxResultText::GetTime(trip.entryTime),
                                              nxResultText::GetTime(trip.exitTime)};
            for (const double number :
                 {trip.entryPrice, trip.exitPrice, trip.profit.GetAsDouble(), trip.fees.GetAsDouble(),
                  trip.mae.GetAsDouble(), trip.mfe.GetAsDouble()})
                cells.push_back(nxJsonWriter::GetNumber(number));
            cells.push_back(std::to_string(trip.entryOrder));
            cells.push_back(std::to_string(trip.exitOrder));
            nxCsvWriter(out).Write(cells);
        }
    }
}

void nxResultTables::WriteEquity(std::ostream& out, const nxResult& result)
{
    out << "job,currency,time,profit,equity,drawdown,exposure\n";
    const double capital = result.run.capital.value_or(0.0);
    for (const nxResultData& data : result.results) {
        const auto write = [&](long long time, double profit, double drawdown, double exposure) {
            std::vector<std::string> cells = {GetJob(result, data), nxGetCurrency(data),
                                              nxResultText::GetTime(time)};
            for (const double number : {profit, capital + profit, drawdown, exposure})
                cells.push_back(nxJsonWriter::GetNumber(number));
            nxCsvWriter(out).Write(cells);
        };
        auto day = data.days.begin();
        nxEquityBucket latest;
        // The last moment of a day, with what was true by then.
        const auto writeDays = [&](long long until) {
            for (; day != data.days.end() && (day->day + 1) * nxTime::NanosecondsPerDay <= until; ++day)
                write((day->day + 1) * nxTime::NanosecondsPerDay - 1, day->profit.GetAsDouble(),
                      latest.drawdown, latest.exposure);
        };
        for (const nxEquityBucket& bucket : data.equity.Get()) {
            writeDays(bucket.time);
            latest = bucket;
            write(bucket.time, bucket.close, bucket.drawdown, bucket.exposure);
        }
        writeDays(nxTime::Never);
    }
}
