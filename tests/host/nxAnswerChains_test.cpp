#include "host/run/nxAnswerChains.h"

#include <gtest/gtest.h>

// Two orders for each answer, without latency: no row is long, and yet there is no end.
TEST(nxAnswerChains, BranchesEndForTheirOwnerAtOneTimeOnly)
{
    nxAnswerChains chains;
    unsigned int orders = 1;
    unsigned int answered = 1;
    for (; chains.Begin(answered, 0, 5); ++answered) {
        chains.NoteRequest(++orders, 0);
        chains.NoteRequest(++orders, 0);
        chains.End();
        ASSERT_LE(orders, nxAnswerChains::MostInAll + 3);
    }
    EXPECT_GT(orders, nxAnswerChains::MostInAll);
    EXPECT_TRUE(chains.Begin(orders + 1, 1, 5));
    EXPECT_TRUE(chains.Begin(answered, 0, 6));
}
