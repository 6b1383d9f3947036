#include "api/nxInterface.h"

#include <gtest/gtest.h>

TEST(nxInterface, NamesTheSubjectOfAFunction)
{
    const struct
    {
        unsigned function;
        const char* key;
        const char* subject;  // "old": none
    } rows[] = {
        {100231, "X", "QLX.EO.X"},
        {100233, "X", "QLX.EOT.X"},
        {100304, "X", "QLX.P.X"},
        {100305, "X", "QLX.D.X"},
        {100321, "X", "QLX.SD.X"},
        {100326, "X", "QLX.MBO.X"},
        {100328, "X", "QLX.PLV.X"},
        {100332, "X", "QLX.THEO.X"},
        {100336, "X", "QLX.RLP.X"},
        {100418, "X", "QLX.IDU.X"},
        {101502, "X", "QLX.QP.X"},
        {102500, "X", "QLX.EOWP.X"},
        {102600, "X.Y", "QLX.N.X.Y"},
        {100305, "", "old"},
        {100306, "X", "old"},
        {0, "X", "old"},
        {0, "", "old"},
    };
    for (const auto& row : rows) {
        std::string subject = "old";
        const nxErrorEnum error = nxInterface::GetLightSubscriptionSubject(subject, row.function, row.key);
        EXPECT_EQ(subject, row.subject) << row.function;
        EXPECT_EQ(error.GetValue(), subject == "old" ? 1000002u : 0u) << row.function;
    }
}
