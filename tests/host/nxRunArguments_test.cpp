#include "host/run/nxRunArguments.h"

#include "tests/host/nxHostFixture.h"

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
    const std::pair<const char*, const char*> rows[] = {
        {"n=true", "bool true"},
        {"n=False", "string False"},
        {"n=3000000000", "decimal 3000000000"},
        {"n=1e5", "string 1e5"},
        {"n=", "string "},
        {"n=a=b:c/d", "string a=b:c/d"},
        {"n:uint=5", "volume 5"},
        {"n:double=1e5", "double 100000"},
        {"n:bool=FALSE", "bool false"},
    };
    for (const auto& [text, expected] : rows) {
        SCOPED_TRACE(text);
        arguments.parameters = {text};
        EXPECT_EQ(Apply(), "");
        EXPECT_EQ(Get(0, "n"), expected);
    }
}

TEST_F(nxRunArgumentsTest, RefusesAParameterWithItsTextAndTheReason)
{
    const std::pair<const char*, const char*> rows[] = {
        {"n", "is no NAME=VALUE"},
        {"=5", "the parameter has no name"},
        {"c/n=5", "no job named \"c\"; there is a, b"},
        {"n:number=5", "unknown type \"number\"; known are decimal, uint, price, double, int, bool, text"},
        {"n:uint=4294967295", "parameter n: \"4294967295\" is no uint: number out of range"},
        {"n:bool=yes", "parameter n: \"yes\" is no bool: neither true nor false"},
    };
    for (const auto& [text, error] : rows) {
        arguments.parameters = {text};
        EXPECT_EQ(Apply(), std::string("--param ") + text + ": " + error);
    }
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
    const std::pair<const char*, const char*> rows[] = {
        {"[parameter]\nn = 1\n", "p.toml:1:1: unknown key \"parameter\"; known are parameters, jobs"},
        {"[jobs.a]\nn = {kind = \"int\", value = 1}\n",
         "p.toml:2:13: unknown key \"kind\" of parameter n; known are type, value"},
        {"[jobs.a]\nn = {type = \"int\"}\n", "p.toml:2:5: parameter n has no value"},
        {"[jobs.a]\nn = {type = \"uint\", value = -1}\n",
         "p.toml:2:29: parameter n: \"-1\" is no uint: not a number"},
        {"[jobs.a]\nn = [1, 2]\n",
         "p.toml:2:5: parameter n is neither a text, a finite number, true nor false"},
        {"parameters = 5\n", "p.toml:1:14: parameters is no table"},
        {"n = \n", "p.toml:1:"},
    };
    for (const auto& [content, error] : rows) {
        SCOPED_TRACE(content);
        arguments.parameterFiles = {files.Write("p.toml", content)};
        EXPECT_EQ(Apply().substr(0, std::string_view(error).size()), error);
    }
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

    const std::pair<const char*, const char*> rows[] = {
        {"", "\"\" is no KEY=VALUE"},
        {"side=buy", "side \"buy\" is neither BUY nor SELL"},
        {"volume=4294967294", "volume \"4294967294\" is no whole number from 0 to 4294967293"},
        {"size=1", "unknown key \"size\"; known are product, side, volume, price, spread"},
        {"side=BUY,side=BUY", "key \"side\" is given twice"},
    };
    for (const auto& [text, error] : rows) {
        arguments.selections = {text};
        EXPECT_EQ(Apply(), std::string("--select ") + text + ": " + error);
    }
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
    const std::pair<const char*, const char*> rows[] = {
        {"", "e.csv: no header row; known are time,parameter,value,tag"},
        {"time,name,value\n", "e.csv:1:6: unknown column \"name\"; known are time,parameter,value,tag"},
        {"time,value,value\n", "e.csv:1:12: column given twice: \"value\""},
        {"time,parameter,value\n\n20240108,n\n", "e.csv:3:10: too few cells: 2 instead of 3"},
        {"time,parameter,value\n20240108,n,\"1\n", "e.csv:2:12: a quote is not closed"},
        {"time,value\n", "e.csv:1:1: missing column \"parameter\"; known are time,parameter,value,tag"},
        {"time,parameter,value\n20240108,n,1,\n", "e.csv:2:14: too many cells: 4 instead of 3"},
        {"time,parameter,value\nsoon,n,1\n", "e.csv:2:1: time: not a time: \"soon\""},
        {"time,parameter,value\n20240108,n,\"1\"x\n", "e.csv:2:15: text behind the closing quote"},
        {"time,parameter,value\n20240109,m,x\n20240108,m,1\n",
         "e.csv:2:12: parameter m: \"x\" is no int: not a number"},
    };
    arguments.parameters = {"n:uint=5"};
    for (const auto& [content, error] : rows) {
        SCOPED_TRACE(content);
        arguments.eventFiles = {files.Write("e.csv", content)};
        EXPECT_EQ(Apply(), error);
    }
    arguments.eventFiles.clear();
    arguments.changes = {{"20240108", "n:int=5"}};
    EXPECT_EQ(Apply(), "--at 20240108 n:int=5: names a type; a parameter keeps the one that it has");
    arguments.changes = {{"soon", "n=5"}};
    EXPECT_EQ(Apply(), "--at soon n=5: time: not a time: \"soon\"");
}
