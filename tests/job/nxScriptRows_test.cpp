// What scripts see of the library, as the files of tests/data/scripts tell it.

#include <gtest/gtest.h>

#include <optional>

#include "tests/support/nxRowFile.h"
#include "tests/support/nxScriptJob.h"
#include "tests/support/nxTestDataStore.h"
#include "tests/support/nxTestJob.h"
#include "tests/support/nxTestOrder.h"

namespace {

// A job whose host has two products, one order, a store of one row and a profit.
class Job : public nxScriptJob
{
public:
    explicit Job(bool refuses)
    {
        AddProduct("7", 4);
        host.order12 = &_order;
        host.orders = &_all;
        host.jobOrders = &_own;
        host.pandL = nxDecimal::FromMantissa(refuses ? 0 : 125, 1);
        if (refuses) host.pandL.SetNull();
        host.refusal = refuses ? "the disk is full" : "";
        host.hasContext = host.inOnInit = !refuses;
        _store._LoadRow({"row"});
        host.dataStore = &_store;
    }

private:
    nxTestOrder _order{&host, &AddProduct("FDAX", 3)};
    nxTestOrderCollection _all{&host, {&_order}};
    nxTestOrderCollection _own{&host, {}};
    nxTestDataStore _store{&host};
};

class nxScriptRows : public testing::TestWithParam<const char*>
{
};

TEST_P(nxScriptRows, EveryRowComesToWhatItSays)
{
    std::optional<Job> job;
    std::string section;
    const bool isStrict = nxGetTestedProfile() == nxScriptProfile::Strict;
    for (const nxRow& row : nxReadRows(std::string("scripts/") + GetParam() + ".txt")) {
        if (row.section.starts_with(isStrict ? "--- base" : "--- strict")) continue;
        if (std::exchange(section, row.section) != row.section)
            job.emplace(row.section.starts_with("--- refused"));
        EXPECT_EQ(nxTrim(job->Tell(row.what)), row.outcome) << "line " << row.line << ": " << row.what;
    }
}

INSTANTIATE_TEST_SUITE_P(Files, nxScriptRows, testing::Values("analytics", "job", "prelude"));

}  // namespace
