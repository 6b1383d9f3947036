#include "host/check/nxScriptReview.h"

#include "tests/host/nxHostFixture.h"

TEST(nxScriptReviewThread, LooksAtScriptsWhileTheyRunUnlessTheyAreLarge)
{
    for (const bool isLarge : {false, true}) {
        nxHostRun run;
        run.AddModule("lib.lua", isLarge ? "--" + std::string(70'000, 'x') : "");
        run.AddJob("a",
                   "function OnInit() job:getProduct('A'):subscribePrice() end\nfunction OnPrise() end\n");
        run.AddJob("b", "function OnInit() if missing then jop() end end\n");
        run.AddQuotes("@00,A,1,1,,,,,\n");
        nxScriptReview review(run.options.jobs, run.options.modules);
        run.options.getNotes = [&review] { return review.GetNotes(); };
        EXPECT_EQ(run.Run(), nxRunResult::Done);
        std::string notes;
        for (const std::string& note : run.statistics.notes)
            notes += run.Hide(note) + "\n";
        EXPECT_EQ(
            notes,
            isLarge ? ""
                    : "a.lua:2: there is no callback 'OnPrise', and nothing calls it; did you mean "
                      "'OnPrice'?\n"
                      "2 findings in the scripts: algoserver check --no-run --module lib.lua a.lua b.lua\n");
    }
}
