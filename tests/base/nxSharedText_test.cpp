#include "base/values/nxSharedText.h"

#include <gtest/gtest.h>

#include <thread>
#include <vector>

namespace {

TEST(nxSharedTextThread, EqualTextsStandOnceAsLongAsOneHolderIsLeft)
{
    const nxSharedText kept(std::string("kept"));
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back([&] {
            for (int turn = 0; turn < 1000; ++turn) {
                nxSharedText text(std::string("passing"));
                nxSharedText copy(text);
                text = kept;
                copy = std::move(text);
                ASSERT_EQ(&copy.Get(), &kept.Get());
                text = std::string();
                ASSERT_EQ(text.Get(), "");
            }
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(kept.Get(), "kept");
    // A copy is a holder, too: the text is there still, and no other took its place.
    nxSharedText first(std::string("held"));
    const nxSharedText second(std::string("held")), copy(second);
    first = kept;
    const nxSharedText other(std::string("other"));
    EXPECT_EQ(&nxSharedText(std::string("held")).Get(), &copy.Get());
    EXPECT_EQ(nxSharedText(std::string("passing")).Get(), "passing");
}

}  // namespace
