#include "api/nxInterface.h"

#include <gtest/gtest.h>

TEST(nxInterface, NamesTheSubjectOfAFunction)
{
    const std::pair<unsigned int, const char*> rows[] = {
        {100231, "QLX.EO."},  {100233, "QLX.EOT."},  {100304, "QLX.P."},
        {100305, "QLX.D."},   {100321, "QLX.SD."},   {100326, "QLX.MBO."},
        {100328, "QLX.PLV."}, {100332, "QLX.THEO."}, {100336, "QLX.RLP."},
        {100418, "QLX.IDU."}, {101502, "QLX.QP."},   {102500, "QLX.EOWP."},
        {102600, "QLX.N."},   {100306, ""},          {0, ""}};
    for (const auto& [function, prefix] : rows) {
        const bool isKnown = *prefix != '\0';
        std::string subject = "old";
        EXPECT_EQ(nxInterface::GetLightSubscriptionSubject(subject, function, "").GetValue(), 1000002u);
        EXPECT_EQ(subject, "old");
        const nxErrorEnum error = nxInterface::GetLightSubscriptionSubject(subject, function, "X.Y");
        EXPECT_EQ(error.GetValue(), isKnown ? 0u : 1000002u) << function;
        EXPECT_EQ(subject, isKnown ? prefix + std::string("X.Y") : "old") << function;
    }
}
