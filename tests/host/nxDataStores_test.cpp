#include "host/jobs/nxDataStores.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <stdlib.h>  // mkdtemp
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <random>

#include "tests/support/nxScriptJob.h"

namespace {

namespace fs = std::filesystem;

// The stores of a folder, and a script that has the one of name "s" as `s` and its content, as text, by
// all().
struct Server
{
    explicit Server(const std::string& folder)
    {
        EXPECT_EQ(stores.Open(folder), std::nullopt);
        std::string failure;
        script.host.dataStore = stores.Get("s", true, failure);
        EXPECT_EQ(failure, "");
        static_cast<void>(script.Evaluate(R"lua(
            s = job:getDataStore("s", true)
            function all()
              local rows = {}
              for i = 1, s.count do rows[i] = table.concat({ s:get(i) }, ",") end
              return table.concat(rows, ";")
            end)lua"));
    }
    std::string Read() { return script.Evaluate("all()"); }

    nxDataStores stores;
    nxScriptJob script;
};

class nxDataStoresTest : public ::testing::Test
{
protected:
    ~nxDataStoresTest() override { fs::remove_all(folder); }

    const std::string folder = mkdtemp((::testing::TempDir() + "nxDataStores_XXXXXX").data());
    const std::string file = folder + "/stores.sqlite";
};

// A row of the table is a server of its own, and finds what the one before has left.
TEST_F(nxDataStoresTest, SavesWhatIsOtherThanBefore)
{
    const std::tuple<const char*, const char*, bool> rows[] = {
        {"", "''", true},  // now there is such a store
        {"", "''", false},
        {"s:add('a', 1) s:add('b') s:add('c')", "'a,1;b;c'", true},
        {"s:set(2, 'x') s:set(2, 'b')", "'a,1;b;c'", false},
        {"s:set(1) s:set(3, '', 'z')", "';b;,z'", true},
        {"for i = 4, 10001 do s:add(i) end s:clear() s:add('\\255\\128')", "'\xff\x80'", true},
        {"s:clear()", "''", true},
    };
    for (const auto& [change, expected, isWritten] : rows) {
        SCOPED_TRACE(change);
        Server server(folder);
        static_cast<void>(server.script.Evaluate(change));
        fs::last_write_time(file, fs::file_time_type{});
        EXPECT_EQ(server.stores.Save(), std::nullopt);
        EXPECT_EQ(fs::last_write_time(file) != fs::file_time_type{}, isWritten);
        EXPECT_EQ(server.Read(), expected);
    }
}

// On a disk that is full now and then, at different places: what stays is the latest save that went well.
TEST_F(nxDataStoresTest, AFailedSaveLeavesTheOldStateAndTheNextOneTriesAgain)
{
    signal(SIGXFSZ, SIG_IGN);
    rlimit free{};
    getrlimit(RLIMIT_FSIZE, &free);
    std::mt19937 random(5);
    unsigned int failed = 0;
    std::string expected = "''";
    for (int run = 0; run < 5; ++run) {
        Server server(folder);
        EXPECT_EQ(server.Read(), expected);
        for (int i = 0; i < 30; ++i) {
            const std::string n = std::to_string(1 + random() % 9);
            const std::string changes[] = {"s:add(" + n + ", math.random())", "s:add(('x'):rep(999))",
                                           "s:set(" + n + ")", "s:set(" + n + ", 'x', 'y')", "s:clear()"};
            static_cast<void>(server.script.Evaluate(changes[random() % (i % 20 == 0 ? 5 : 4)]));
            const rlim_t largest = i % 3 == 0 ? RLIM_INFINITY : 1 + random() % 30000;
            const rlimit full{std::min(largest, free.rlim_max), free.rlim_max};
            ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &full), 0);
            const std::string failure = server.stores.Save().value_or("");
            ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &free), 0);
            if (failure.empty()) {
                expected = server.Read();
            } else {
                EXPECT_TRUE(failure.starts_with(file + ": the data stores cannot be saved: disk I/O error"))
                    << failure;
                ++failed;
            }
        }
    }
    EXPECT_GT(failed, 10u);
}

// The others are saved, what the row was stays, and a new one keeps its place.
TEST_F(nxDataStoresTest, ARowWithAValueThatIsTooLargeIsLeftOut)
{
    for (const char* const found : {"''", "'a,b;;c'"}) {
        Server server(folder);
        EXPECT_EQ(server.Read(), found);
        server.stores.SetLargestValue(100);
        static_cast<void>(server.script.Evaluate(
            "s:clear() s:add('a', 'b') s:add('x', ('x'):rep(101)) s:add('c') s:set(1, ('y'):rep(100), 'b')"));
        EXPECT_EQ(
            server.stores.Save(),
            file +
                ": row 2 of the store s cannot be saved: it has a value of 101 bytes, and 100 are the most");
        static_cast<void>(server.script.Evaluate("s:set(1, 'a', 'b')"));
        EXPECT_TRUE(server.stores.Save());
    }
}

// As a host may fill it, with what no script could.
TEST_F(nxDataStoresTest, KeepsAnyBytes)
{
    struct HostStore : nxSqliteDataStore
    {
        using nxSqliteDataStore::_LoadRow, nxSqliteDataStore::_rows, nxSqliteDataStore::nxSqliteDataStore;
    };
    using namespace std::string_literals;
    EXPECT_EQ(nxDataStores().Open(folder), std::nullopt);
    const nxAlgoDataStoreObject::Row rows[] = {{"a\0b"s, "\0"s, ""s},
                                               {},
                                               {""s},
                                               {"\xff\xfe\xc0"s, "1"s, "1.0"s},
                                               nxAlgoDataStoreObject::Row(5000, "x")};
    nxSqliteDatabase database;
    ASSERT_TRUE(database.Open(file));
    for (const std::string& name : {""s, "name"s, "name\0"s, "\xff"s}) {
        HostStore store(database, name), again(database, name);
        EXPECT_FALSE(store.Load());
        for (const auto& row : rows)
            store._LoadRow(row);
        EXPECT_TRUE(store.Persist() && again.Load() && !database.HasFailed()) << database.GetFailure();
        EXPECT_TRUE(std::ranges::equal(
            again._rows, rows, {}, [](const auto& row) -> auto& { return *row; }));
    }
}

TEST_F(nxDataStoresTest, RefusesWhatItCannotUse)
{
    const auto execute = [this](const char* sql) {
        nxSqliteDatabase database;
        EXPECT_TRUE(database.Open(file) && database.Run(sql) && database.Commit()) << database.GetFailure();
    };
    const auto write = [this](const std::string& text) { std::ofstream(file, std::ios::binary) << text; };
    const auto make = [this] { EXPECT_EQ(nxDataStores().Open(folder), std::nullopt); };
    const auto protect = [](const std::string& path) { fs::permissions(path, fs::perms(0555)); };
    nxDataStores first;
    const std::string readOnly = "stores.sqlite: cannot be written: it, or its directory, is read-only";
    const std::pair<std::function<void()>, std::string> rows[] = {
        {[&] { write(std::string(2000, 'x')); }, "stores.sqlite: is not a database of stores"},
        {[&] { execute("CREATE TABLE t (x)"); }, "stores.sqlite: is a database of another program"},
        {[&] { execute("PRAGMA application_id = 7"); }, "stores.sqlite: is a database of another program"},
        {[&] { make(), execute("PRAGMA user_version = 2"); },
         "it has layout version 2, and this one knows 1"},
        {[&] { make(), fs::resize_file(file, fs::file_size(file) - 4096); }, "stores.sqlite: is damaged: "},
        {[&] { fs::create_directory(file); }, "stores.sqlite: is a directory, not a database of stores"},
        {[&] { EXPECT_EQ(first.Open(folder), std::nullopt); },
         "these data stores are in use: another server"},
        {[&] { make(), protect(file); }, readOnly},
        {[&] { make(), fs::permissions(file, fs::perms(0666)), protect(folder); }, readOnly},
        {[&] { write(""); }, "nothing"},
    };
    for (const auto& [prepare, expected] : rows) {
        fs::remove_all(folder);
        fs::create_directory(folder);
        prepare();
        const bool isRoot = expected == readOnly && geteuid() == 0;  // who may write everywhere
        ASSERT_TRUE(!isRoot || seteuid(65534) == 0);
        const std::string text = nxDataStores().Open(folder).value_or("nothing");
        ASSERT_TRUE(!isRoot || seteuid(0) == 0);
        EXPECT_NE(text.find(expected), std::string::npos) << text << "\nis no " << expected;
        fs::permissions(folder, fs::perms(0755));
    }
}

// Saves states without end, each of rows that bear its number, and tells of each save that is done.
[[noreturn]] void SaveUntilKilled(const std::string& folder, int pipe)
{
    Server server(folder);
    for (unsigned int n = 1;; ++n) {
        static_cast<void>(server.script.Evaluate(
            "n = (n or 0) + 1 s:clear() for i = 1, 50 + n * 7 % 90 do s:add(n, ('x'):rep(n % 9 * 60)) end"));
        if (server.stores.Save() || ::write(pipe, &n, sizeof(n)) != sizeof(n)) _exit(1);
    }
}

TEST_F(nxDataStoresTest, AProcessKilledAtAnyMomentLeavesTheLastCompleteSave)
{
    std::mt19937 random(11);
    int cutShort = 0;
    for (int round = 0; round < 50; ++round) {
        int ends[2];
        ASSERT_EQ(pipe(ends), 0);
        const pid_t child = fork();
        if (child == 0) SaveUntilKilled(folder, ends[1]);
        close(ends[1]);
        unsigned int told = 0, latest = 0;
        for (std::size_t i = round % 8 == 0 ? 0 : 1 + random() % 3; i > 0; --i)
            ASSERT_EQ(read(ends[0], &told, sizeof(told)), ssize_t{sizeof(told)});
        usleep(static_cast<unsigned int>(random() % 20000));
        kill(child, SIGKILL);
        waitpid(child, nullptr, 0);
        while (read(ends[0], &latest, sizeof(latest)) == ssize_t{sizeof(latest)})
            told = latest;
        close(ends[0]);
        cutShort += std::ifstream(file + "-journal").get() > 0;  // its header is not blank

        const std::string found = Server(folder).script.Evaluate(R"lua(
            local n = s.count == 0 and 0 or tonumber((s:get(1)))
            assert(s.count == 0 or s.count == 50 + n * 7 % 90, "not all rows, or too many")
            for i = 1, s.count do
              local m, text = s:get(i)
              assert(tonumber(m) == n and #text == n % 9 * 60, "rows of two saves")
            end
            return n)lua");
        // The save that was under way may have come through without being told.
        EXPECT_TRUE(found == std::to_string(told) || found == std::to_string(told + 1))
            << found << ", " << told;
        fs::remove(file);
    }
    RecordProperty("saves cut short", cutShort);
}

}  // namespace
