#include <gtest/gtest.h>

#include "tests/support/nxRecordingLog.h"
#include "tests/support/nxScriptJob.h"
#include "tests/support/nxTestDataStore.h"

namespace {

TEST(nxAlgoDataStoreObject, KeepsRowsOfTextForTheScript)
{
    const std::tuple<const char*, const char*, const char*> rows[] = {
        {"s:add()", "error: dataStore:add requires at least one argument", ""},
        {"s:add('a', 1.5, '') s:add('b') return s.count", "2", ""},
        {"s:get(1)", "'a' '1.5' ''", ""},
        {"s:get(2 ^ 32 + 2.9)", "'b'", ""},
        {"s:get()", "error: dataStore:get requires one argument [index]", ""},
        {"s:get(1, 2)", "error: dataStore:get requires one argument [index]", ""},
        {"s:get(0)", "error: dataStore:get invalid index", "32 [test] dataStore:get invalid index : 0\n"},
        {"s:get(3)", "error: dataStore:get invalid index", "32 [test] dataStore:get invalid index : 3\n"},
        {"s:set()", "error: dataStore:set requires at least two arguments ", ""},
        {"s:set(0, 'a')", "error: dataStore:set invalid index",
         "32 [test] dataStore:set invalid index : 0\n"},
        {"s:set(3, true)", "error: dataStore:set invalid index",
         "32 [test] dataStore:set invalid index : 3\n"},
        {"s:set(1, 'x', true)", "error: bad argument #3 to 'set' (string expected, got boolean)", ""},
        {"s:add('x', true)", "error: bad argument #2 to 'add' (string expected, got boolean)", ""},
        {"s:add(nil)", "error: bad argument #1 to 'add' (string expected, got nil)", ""},
        {"s.count, s:get(1)", "2 'a' '1.5' ''", ""},
        {"s:set(1, 'c', 'd') return s.count, s:get(1)", "2 'c' 'd'", ""},
        {"s:set(1) return s.count, select('#', s:get(1))", "2 0", ""},
        {"s:add('cut\\0short') return s:get(3)", "'cut'", ""},
        {"s:clear('x') return s.count", "0", ""},
        {"s:get(1)", "error: dataStore:get invalid index", "32 [test] dataStore:get invalid index : 1\n"},
    };
    nxScriptJob script;
    nxTestDataStore store(&script.host);
    script.host.dataStore = &store;
    EXPECT_EQ(script.Evaluate("s = job:getDataStore('old') return s.count"), "0");
    nxRecordingLog log;
    for (const auto& [code, answer, logged] : rows) {
        EXPECT_EQ(script.Evaluate(code), answer) << code;
        EXPECT_EQ(log.TakeLines(), logged) << code;
    }
}

TEST(nxAlgoDataStoreObject, RefusesWhatIsBeyondItsLimits)
{
    const std::tuple<const char*, const char*, const char*> rows[] = {
        {"s:add(columns(100)) return s.count, (select(100, s:get(1)))", "1 '100'", ""},
        {"s:add(columns(101))", "error: dataStore:add exceeded max number of columns",
         "32 [test] dataStore:add exceeded max number of columns : 100 adding 101 columns\n"},
        {"s:set(1, columns(100)) return (select(100, s:get(1)))", "'100'", ""},
        {"s:set(1, columns(101))", "error: dataStore:set exceeded max number of columns",
         "32 [test] dataStore:set exceeded max number of columns : 100 adding 101 columns\n"},
        {"for i = 2, 10001 do s:add(i) end return s.count", "10001", ""},
        {"s:add('one more')", "error: dataStore:add exceeded max number of rows",
         "32 [test] dataStore:add exceeded max number of rows: 10000\n"},
        {"s.count, s:get(10001)", "10001 '10001'", ""},
    };
    nxScriptJob script;
    nxTestDataStore store(&script.host);
    script.host.dataStore = &store;
    static_cast<void>(script.Evaluate(
        "s = job:getDataStore('old') function columns(n) local t = {} for i = 1, n do t[i] = i end "
        "return unpack(t) end"));
    nxRecordingLog log;
    for (const auto& [code, answer, logged] : rows) {
        EXPECT_EQ(script.Evaluate(code), answer) << code;
        EXPECT_EQ(log.TakeLines(), logged) << code;
    }
    // A host is bound by none of them, a script's stack is.
    store.Load(nxTestDataStore::Row(1000, "x"));
    EXPECT_EQ(script.Evaluate("s.count, select('#', s:get(10002))"), "10002 1000");
    store.Load(nxTestDataStore::Row(1'000'000, "x"));
    EXPECT_NE(script.Evaluate("s:get(10003)").find("too many results"), std::string::npos);
    EXPECT_EQ(script.Evaluate("s.count"), "10003");
}

TEST(nxAlgoDataStoreObject, PersistsItsRowsInOrder)
{
    nxScriptJob script;
    nxTestDataStore store(&script.host);
    nxRecordingLog log;
    store.Load({"a", "b"});
    store.Load({});
    store.Load({"c"});
    EXPECT_EQ(store.Save(), "begin a|b|;;c|; end true");
    EXPECT_EQ(log.TakeLines(), "32 [test] Persist DataStore\n");
    store.wantsSave = false;
    EXPECT_EQ(store.Save(), "begin  true");
}

}  // namespace
