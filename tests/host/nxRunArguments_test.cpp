#include "host/run/nxRunArguments.h"

#include "tests/host/nxHostFixture.h"
#include "tests/support/nxRowFile.h"

namespace {

class nxRunArgumentsTest : public ::testing::Test
{
protected:
    nxRunArgumentsTest() { arguments.scripts = {"x/a.lua", "b.lua"}; }

    // What is wrong, without the folder of the files; "" when nothing is.
    std::string Apply()
    {
        options = nxRunOptions();
        return files.Hide(arguments.Apply(options).value_or(""));
    }
    // "TYPE text" of a parameter, "none" where there is none.
    std::string Get(std::size_t job, const std::string& name) const
    {
        const nxVorantParameter* parameter = options.jobs[job].parameters.Find(name);
        if (parameter == nullptr) return "none";
        std::string text;
        parameter->PersistValueToString(text);
        return parameter->GetParameterType().GetShortDescription() + " " + text;
    }

    static std::string TakeFront(const std::string& front, const std::string& error)
    {
        EXPECT_TRUE(error.starts_with(front)) << error;
        return error.substr(front.size());
    }

    nxHostRun files;
    nxRunArguments arguments;
    nxRunOptions options;
};

}  // namespace

TEST_F(nxRunArgumentsTest, JobsAreNamedByTheirFilesUnlessTheyAreGivenNames)
{
    arguments.names = {"b c"};
    EXPECT_EQ(Apply(), "");
    EXPECT_EQ(options.jobs[0].name + "," + options.jobs[1].name, "b c,b");

    const std::pair<std::vector<std::string>, const char*> rows[] = {
        {{"b"}, "two jobs are named \"b\": x/a.lua and b.lua; name them by --name"},
        {{"a", "a/b"}, "\"a/b\" is no name for b.lua: it is empty or holds a /"},
        {{"1", "2", "3"}, "--name 3: there are more names than scripts"},
    };
    for (const auto& [names, error] : rows) {
        arguments.names = names;
        EXPECT_EQ(Apply(), error);
    }
}

TEST_F(nxRunArgumentsTest, AParameterHasTheTypeThatIsNamedOrTheOneItsTextLooksLike)
{
    nxExpectRows("host/arguments.txt", [this](const std::string& text) {
        arguments.parameters = {text};
        EXPECT_EQ(Apply(), "");
        return Get(0, "n");
    });
}

TEST_F(nxRunArgumentsTest, RefusesAParameterWithItsTextAndTheReason)
{
    nxExpectRows("host/arguments.txt", [this](const std::string& text) {
        arguments.parameters = {text};
        return TakeFront("--param " + text + ": ", Apply());
    });
}

TEST_F(nxRunArgumentsTest, AJobsOwnParameterGoesBeforeThatOfAllAndTheCommandLineBeforeTheFile)
{
    arguments.parameterFiles = {files.Write("p.toml", R"([jobs.b]
n = 2
own = { type = "uint", value = 7 }
[parameters]
n = 1
text = "12"
real = 2.0
large = 1e300
flag = true
)")};
    arguments.parameters = {"b/own=8", "a/m=1", "m=2"};
    EXPECT_EQ(Apply(), "");
    EXPECT_EQ(Get(0, "n") + "," + Get(1, "n"), "integer 1,integer 2");
    EXPECT_EQ(Get(0, "own") + "," + Get(1, "own"), "none,volume 8") << "the type of the file stays";
    EXPECT_EQ(Get(0, "m") + "," + Get(1, "m"), "integer 1,integer 2");
    EXPECT_EQ(Get(0, "text") + "," + Get(0, "real") + "," + Get(0, "flag"),
              "string 12,decimal 2.0,bool true");
    EXPECT_EQ(Get(0, "large").substr(0, 8), "double 1");
}

TEST_F(nxRunArgumentsTest, RefusesAParameterFileWithItsPlace)
{
    nxExpectRows("host/arguments.txt", [this](const std::string& content) {
        arguments.parameterFiles = {files.Write("p.toml", content + "\n")};
        return Apply();
    });
    arguments.parameterFiles = {files.Write("p.toml", "n = \n")};
    EXPECT_TRUE(Apply().starts_with("p.toml:1:"));
}

TEST_F(nxRunArgumentsTest, RefusesAnAdjustmentWithItsPlace)
{
    nxExpectRows("host/arguments.txt", [this](const std::string& row) {
        arguments.adjustmentFiles = {files.Write("a.csv", "time,product,kind,value\n" + row)};
        return Apply();
    });
}

TEST_F(nxRunArgumentsTest, ABarPeriodIsThatOfAProductOrOfAllOthers)
{
    arguments.barPeriods = {"5m", "A=1h", "A=B=1d", "A=30s"};
    EXPECT_EQ(Apply(), "");
    const std::map<std::string, long long, std::less<>> expected = {
        {"", 300'000'000'000}, {"A", 30'000'000'000}, {"A=B", 86'400'000'000'000}};
    EXPECT_EQ(options.barPeriods, expected);
}

TEST_F(nxRunArgumentsTest, SelectionsAreOfAllJobsOrOfOne)
{
    arguments.selections = {"b/product=X/Y,volume=5", "product=SIM,side=SELL,price=100.25,spread=s=1"};
    EXPECT_EQ(Apply(), "");
    EXPECT_EQ(options.jobs[0].selection->product + options.jobs[0].selection->side, "SIMSELL");
    EXPECT_EQ(options.jobs[0].selection->price.GetAsString() + options.jobs[0].selection->spread,
              "100.25s=1");
    EXPECT_EQ(options.jobs[1].selection->product + options.jobs[1].selection->side, "X/Y");
    EXPECT_EQ(options.jobs[1].selection->volume, nxVolume(5));

    nxExpectRows("host/arguments.txt", [this](const std::string& text) {
        arguments.selections = {text};
        return TakeFront("--select " + text + ": ", Apply());
    });
}

TEST_F(nxRunArgumentsTest, ChangesComeByTimeAndThoseOfOneTimeInTheirOrder)
{
    arguments.eventFiles = {files.Write("e.csv",
                                        "\xEF\xBB\xBFtag,time,value,parameter\r\n\r\n"
                                        "T,1704724202,\"a,\"\"b\"\"\",b/m\r\n,1704724201,,n")};
    arguments.changes = {{"1704724201", "a/n==2"}, {"20240108:14:30", "n=x"}};
    EXPECT_EQ(Apply(), "");
    std::string told;
    for (const nxParameterChange& change : options.changes)
        told += std::to_string(change.time / 1'000'000'000 - 1'704'724'200) +
                (change.job ? " of " + std::to_string(*change.job) : "") + " " + change.name + "=" +
                change.value + " " + change.tag + "\n";
    EXPECT_EQ(told, "0 n=x \n1 n= \n1 of 0 n==2 \n2 of 1 m=a,\"b\" T\n");
}

TEST_F(nxRunArgumentsTest, RefusesAChangeWithItsPlace)
{
    arguments.parameters = {"n:uint=5"};
    nxExpectRows("host/arguments.txt", [this](const std::string& content) {
        arguments.eventFiles = {files.Write("e.csv", content)};
        return Apply();
    });
    arguments.eventFiles.clear();
    arguments.changes = {{"20240108", "n:int=5"}};
    EXPECT_EQ(Apply(), "--at 20240108 n:int=5: names a type; a parameter keeps the one that it has");
    arguments.changes = {{"soon", "n=5"}};
    EXPECT_EQ(Apply(), "--at soon n=5: time: not a time: \"soon\"");
}
