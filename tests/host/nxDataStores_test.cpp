#include "host/jobs/nxDataStores.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <stdlib.h>
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
    nxDataStoresTest()
    {
        folder = mkdtemp((::testing::TempDir() + "nxDataStores_XXXXXX").data());
        file = folder + "/stores.sqlite";
    }
    ~nxDataStoresTest() override { fs::remove_all(folder); }

    // Saves on a disk on which files can have that many bytes.
    static std::optional<std::string> SaveWithin(nxDataStores& stores, rlim_t bytes)
    {
        signal(SIGXFSZ, SIG_IGN);
        rlimit limit{};
        getrlimit(RLIMIT_FSIZE, &limit);
        const rlim_t before = std::exchange(limit.rlim_cur, bytes);
        setrlimit(RLIMIT_FSIZE, &limit);
        const auto failure = stores.Save();
        limit.rlim_cur = before;
        setrlimit(RLIMIT_FSIZE, &limit);
        return failure;
    }

    std::string folder;
    std::string file;
};

// A row of the table is a server of its own, and finds what the one before has left.
TEST_F(nxDataStoresTest, SavesWhatIsOtherThanBefore)
{
    const std::tuple<const char*, const char*, bool> rows[] = {
        {"", "''", true},  // now there is such a store
        {"", "''", false},
        {"s:add('a', 1) s:add('b') s:add('c')", "'a,1;b;c'", true},
        {"s:set(2, 'b', 2)", "'a,1;b,2;c'", true},
        {"s:set(2, 'x') s:set(2, 'b', 2)", "'a,1;b,2;c'", false},
        {"s:set(1) s:set(3, '', 'z')", "';b,2;,z'", true},
        {"s:add('x') s:clear() s:add('\\255\\128')", "'\xff\x80'", true},
        {"for i = 2, 10001 do s:add(i) end s:clear() s:add('d') s:add('\\255')", "'d;\xff'", true},
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

// Between the saves that count there are some that fail on a full disk, at different places.
TEST_F(nxDataStoresTest, ManySavesLeaveTheLatestContent)
{
    std::mt19937 random(5);
    unsigned int failed = 0;
    for (int run = 0; run < 4; ++run) {
        std::string expected;
        {
            Server server(folder);
            for (int i = 0; i < 60; ++i) {
                const std::string n = std::to_string(1 + random() % 9);
                const std::string changes[] = {"s:add(" + n + ", math.random())", "s:add(('x'):rep(999))",
                                               "s:set(" + n + ")", "s:set(" + n + ", 'x', 'y')", "s:clear()"};
                static_cast<void>(server.script.Evaluate(changes[random() % (i % 20 == 0 ? 5 : 4)]));
                if (i % 4 == 0) failed += SaveWithin(server.stores, 1 + random() % 30000).has_value();
                EXPECT_TRUE(i % 7 != 0 || !server.stores.Save());
            }
            EXPECT_EQ(server.stores.Save(), std::nullopt);
            expected = server.Read();
        }
        EXPECT_EQ(Server(folder).Read(), expected);
    }
    EXPECT_GT(failed, 10u);
}

TEST_F(nxDataStoresTest, AFailedSaveLeavesTheOldStateAndTheNextOneTriesAgain)
{
    {
        Server server(folder);
        static_cast<void>(server.script.Evaluate("s:add('old')"));
        EXPECT_EQ(server.stores.Save(), std::nullopt);
        static_cast<void>(
            server.script.Evaluate("s:set(1, 'new') for i = 1, 999 do s:add(('x'):rep(99)) end"));
        const std::string failure = SaveWithin(server.stores, 40000).value_or("");
        EXPECT_EQ(failure, file + ": the data stores cannot be saved: disk I/O error (SQLite 778)");
        fs::copy_file(file, folder + "/copy");
        fs::copy_file(file + "-journal", folder + "/copy-journal");
    }
    EXPECT_EQ(Server(folder).Read(), "'old'");
    {
        Server server(folder);
        static_cast<void>(
            server.script.Evaluate("s:set(1, 'new') for i = 1, 999 do s:add(('x'):rep(99)) end"));
        EXPECT_TRUE(SaveWithin(server.stores, 40000));
        EXPECT_EQ(server.stores.Save(), std::nullopt);
    }
    EXPECT_EQ(Server(folder).script.Evaluate("s.count, s:get(1)"), "1000 'new'");
}

// A store as a host may fill it, with what no script could.
class HostStore : public nxSqliteDataStore
{
public:
    using nxSqliteDataStore::_LoadRow, nxSqliteDataStore::nxSqliteDataStore;

    std::vector<Row> GetRows() const
    {
        std::vector<Row> rows;
        for (const auto& row : _rows)
            rows.push_back(*row);
        return rows;
    }
};

TEST_F(nxDataStoresTest, KeepsAnyBytes)
{
    using namespace std::string_literals;
    EXPECT_EQ(nxDataStores().Open(folder), std::nullopt);
    const std::vector<nxAlgoDataStoreObject::Row> rows = {{"a\0b"s, "\0"s, ""s},
                                                          {},
                                                          {""s},
                                                          {"\xff\xfe\xc0"s, "1"s, "1.0"s},
                                                          nxAlgoDataStoreObject::Row(5000, "x")};
    for (const std::string& name : {""s, "name"s, "name\0"s, "\xff"s}) {
        nxSqliteDatabase database;
        ASSERT_TRUE(database.Open(file));
        HostStore store(database, name);
        EXPECT_FALSE(store.Load());
        for (const auto& row : rows)
            store._LoadRow(row);
        EXPECT_TRUE(store.Persist() && database.Commit()) << database.GetFailure();
        HostStore again(database, name);
        EXPECT_TRUE(again.Load());
        EXPECT_EQ(again.GetRows(), rows);
    }
}

TEST_F(nxDataStoresTest, RefusesWhatItCannotUse)
{
    const auto execute = [this](const char* sql) {
        nxSqliteDatabase database;
        EXPECT_TRUE(database.Open(file) && database.Run(sql) && database.Commit()) << database.GetFailure();
    };
    const auto write = [this](const std::string& text) { std::ofstream(file, std::ios::binary) << text; };
    const auto prepare = [this] { EXPECT_EQ(nxDataStores().Open(folder), std::nullopt); };
    const auto protect = [this, prepare](const std::string& path, unsigned int mode) {
        prepare();
        fs::permissions(folder, fs::perms(0755));
        if (geteuid() == 0) fs::permissions(path, fs::perms(mode));
    };
    nxDataStores first;
    const std::string newer = "was written by a newer program: it has layout version 2, and this one knows 1";
    const std::tuple<const char*, std::function<void()>, std::string> rows[] = {
        {"no database", [&] { write("time,product\n" + std::string(2000, 'x')); },
         "F: is not a database of stores"},
        {"another's", [&] { execute("CREATE TABLE t (x)"); }, "F: is a database of another program"},
        {"another's, marked", [&] { execute("PRAGMA application_id = 7"); },
         "F: is a database of another program"},
        {"newer", [&] { prepare(), execute("PRAGMA user_version = 2"); }, "F: " + newer},
        {"damaged", [&] { prepare(), fs::resize_file(file, fs::file_size(file) - 4096); }, "F: is damaged: "},
        {"a folder", [&] { fs::create_directory(file); }, "F: is a directory, not a database of stores"},
        {"in use", [&] { EXPECT_EQ(first.Open(folder), std::nullopt); },
         "D: these data stores are in use: another server, or a program that looks into F, holds them"},
        {"read-only file", [&] { protect(file, 0444); },
         "F: cannot be written: it, or its directory, is read-only"},
        {"read-only folder", [&] { protect(folder, 0555); },
         "F: cannot be written: it, or its directory, is read-only"},
        {"empty file", [&] { write(""); }, "opens"},
    };
    for (const auto& [name, make, expected] : rows) {
        SCOPED_TRACE(name);
        fs::remove_all(folder);
        fs::create_directory(folder);
        make();
        // Root may write everywhere.
        const bool isRoot = geteuid() == 0 && expected.find("read-only") != std::string::npos;
        if (isRoot && seteuid(65534) != 0) GTEST_SKIP() << "cannot be somebody else";
        std::string text = nxDataStores().Open(folder).value_or("opens");
        ASSERT_TRUE(!isRoot || seteuid(0) == 0);
        for (std::size_t at = 0; (at = text.find(file)) != std::string::npos;)
            text.replace(at, file.size(), "F");
        if (text.starts_with(folder)) text.replace(0, folder.size(), "D");
        EXPECT_EQ(text.substr(0, expected.size()), expected) << text;
    }
    EXPECT_EQ(nxDataStores().Open(folder + "/new"), std::nullopt) << "is made";
    EXPECT_EQ(nxDataStores().Open(folder + "/no/new"),
              folder + "/no/new: the directory for data stores cannot be made: No such file or directory");
    EXPECT_EQ(nxDataStores().Open(file), file + ": is no directory for data stores");
}

// Saves states without end, each of rows that bear its number, and tells of each save that is done.
[[noreturn]] void SaveUntilKilled(const std::string& folder, int pipe)
{
    Server server(folder);
    for (unsigned int n = 1;; ++n) {
        static_cast<void>(server.script.Evaluate(
            "n = " + std::to_string(n) +
            " s:clear() for i = 1, 50 + n * 7 % 90 do s:add(n, ('x'):rep(n % 9 * 60)) end"));
        if (server.stores.Save() || ::write(pipe, &n, sizeof(n)) != sizeof(n)) _exit(1);
    }
}

TEST_F(nxDataStoresTest, AProcessKilledAtAnyMomentLeavesTheLastCompleteSave)
{
    std::mt19937 random(11);
    unsigned int cutShort = 0;
    for (int round = 0; round < 50; ++round) {
        SCOPED_TRACE(round);
        int ends[2];
        ASSERT_EQ(pipe(ends), 0);
        const pid_t child = fork();
        if (child == 0) SaveUntilKilled(folder, ends[1]);
        close(ends[1]);
        unsigned int told = 0, latest = 0;
        for (std::size_t i = random() % 4; i > 0; --i)
            ASSERT_EQ(read(ends[0], &told, sizeof(told)), ssize_t{sizeof(told)});
        usleep(static_cast<unsigned int>(random() % 20000));
        kill(child, SIGKILL);
        waitpid(child, nullptr, 0);
        while (read(ends[0], &latest, sizeof(latest)) == ssize_t{sizeof(latest)})
            told = latest;
        close(ends[0]);
        cutShort += std::ifstream(file + "-journal").get() > 0;  // it is hot: its header is not blank

        const std::string found = Server(folder).script.Evaluate(R"lua(
            if s.count == 0 then return 0 end
            local n = tonumber((s:get(1)))
            assert(s.count == 50 + n * 7 % 90, "not all rows, or too many")
            for i = 1, s.count do
              local m, text = s:get(i)
              assert(tonumber(m) == n and #text == n % 9 * 60, "rows of two saves")
            end
            return n)lua");
        // The save that was under way may have come through without being told.
        EXPECT_TRUE(found == std::to_string(told) || found == std::to_string(told + 1))
            << found << " of " << told;
        fs::remove_all(folder);
        fs::create_directory(folder);
    }
    RecordProperty("saves cut short", static_cast<int>(cutShort));
}

}  // namespace
