#include "host/sweep/nxSlurmSweep.h"

#include <gmock/gmock.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "host/sweep/nxSlurmCall.h"
#include "host/sweep/nxSlurmScripts.h"

namespace {

namespace fs = std::filesystem;

// Commands of Slurm that note how they are called; squeue tells what the file "queue" holds. tests/cluster
// has the real ones.
class nxSlurmSweepTest : public testing::Test
{
protected:
    nxSlurmSweepTest()
    {
        fs::create_directories(_folder / "bin");
        Put("bin/sbatch",
            "#!/bin/sh\ncd '" + _folder.string() + "'\necho sbatch \"$@\" >>calls\ngrep -c ^sbatch calls\n");
        Put("bin/scancel", "#!/bin/sh\necho scancel \"$@\" >>'" + (_folder / "calls").string() + "'\n");
        Put("bin/squeue", "#!/bin/sh\ncat '" + (_folder / "queue").string() + "'\n");
        Put("bin/scontrol", "#!/bin/sh\necho 'MaxArraySize            = 3'\n");
        Put("queue", "");
        for (const auto& file : fs::directory_iterator(_folder / "bin"))
            fs::permissions(file.path(), fs::perms::owner_all);
        setenv("PATH", ((_folder / "bin").string() + ":" + _path).c_str(), 1);
    }
    ~nxSlurmSweepTest() override
    {
        setenv("PATH", _path.c_str(), 1);
        fs::remove_all(_folder);
    }

    void Put(const fs::path& name, const std::string& text) { std::ofstream(_folder / name) << text; }
    // What differs of the calls: arrays, their first slice, what the merge waits for, what is cancelled.
    std::string GetCalls()
    {
        std::ifstream file(_folder / "calls");
        std::string told;
        for (std::string word, last; file >> word; last = word) {
            if (word.starts_with("--array") || word.starts_with("--dep") || last.ends_with("task.sh") ||
                last == "scancel")
                told += word + " ";
        }
        return told;
    }
    std::string Submit(const nxSlurmWork& work)
    {
        nxSlurmOptions options;
        options.throttle = 4;
        std::ostringstream out;
        return nxSlurmSweep(_folder / "x").Submit(work, options, false, out).value_or("");
    }

    const std::string _path = std::getenv("PATH");
    const fs::path _folder = fs::path(testing::TempDir()) / ("slurm" + std::to_string(getpid()));
};

TEST_F(nxSlurmSweepTest, SubmitsWhatIsNeitherDoneNorQueued)
{
    nxSlurmWork work{"/bin/algoserver", {"sweep", "a.lua"}, "/", (_folder / "x.db").string(), "1", "", 70, 7};
    EXPECT_EQ(Submit(work), "");
    EXPECT_EQ(GetCalls(), "--array=0-2%4 0 --array=0-2%4 3 --array=0%4 6 --dependency=afterany:1:2:3 ");
    for (const char* name :
         {"slice-0.done", "slice-0.db", "slice-1.done", "slice-4.done", "slice-4.db", "slice-5.failed"})
        Put(fs::path("x") / name, "late\n");
    const std::string name = nxSlurmFolder(_folder / "x").GetJobName();
    Put("queue", "1|2|RUNNING|" + name + "+0|None\n4|N/A|PENDING|" + name + "|Dependency\n");
    nxSlurmSweep sweep(_folder / "x");
    nxSlurmStatus status;
    const auto count = [](const fs::path& file) {
        return fs::exists(file) ? std::optional(10ULL) : std::nullopt;
    };
    ASSERT_EQ(sweep.GetStatus(status, count), std::nullopt);
    EXPECT_THAT(
        status.GetText(),
        testing::StartsWith("slices   2 of 7 done, 1 running, 1 failed, 3 lost\nruns     20 of 70 done\n"));
    EXPECT_THAT(status.missing, testing::ElementsAre(1, 3, 5, 6));
    Put("calls", "sbatch\nsbatch\nsbatch\nsbatch\n");
    work.slices = 3;  // it stays as it was
    EXPECT_EQ(Submit(work), "");
    EXPECT_EQ(GetCalls(), "--array=1%4 0 --array=0,2%4 3 --array=0%4 6 4 --dependency=afterany:1:5:6:7 ");
    work.arguments.back() = "b.lua";
    EXPECT_THAT(Submit(work), testing::HasSubstr("another sweep was submitted"));
}

TEST_F(nxSlurmSweepTest, IsCutIntoSlicesOfTenMinutes)
{
    const struct
    {
        unsigned int cpus, slices, arraySize;
        unsigned long long runs;
        double seconds;
        unsigned int expected;
    } rows[] = {{1, 0, 1000, 10, 1, 1},     {1, 0, 1000, 601, 1, 2},
                {4, 0, 1000, 601, 8, 3},    {1, 0, 1000, 1'000'000'000'000, 60, 1000},
                {1, 0, 1000, 5, 10'000, 5}, {1, 2000, 1000, 9999, 1, 2000},
                {1, 9, 1000, 5, 1, 5},      {1, 0, 1000, 5, 0, 1}};
    for (const auto& row : rows) {
        nxSlurmOptions options;
        options.cpusPerTask = row.cpus;
        options.slices = row.slices;
        options.arraySize = row.arraySize;
        EXPECT_EQ(options.GetSlices(row.runs, row.seconds), row.expected)
            << row.runs << " of " << row.seconds;
    }
}

TEST_F(nxSlurmSweepTest, QuotesForAShell)
{
    const std::string hostile = "it's \"$HOME\" `x` $(x) \\ \n * ;";
    std::string told;
    ASSERT_EQ(nxSlurmCall::Run({"bash", "-c", "printf %s " + nxSlurmScripts::Quote(hostile)}, told),
              std::nullopt);
    EXPECT_EQ(told, hostile);
}

}  // namespace
