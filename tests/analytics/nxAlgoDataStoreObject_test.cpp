#include <gtest/gtest.h>

#include "tests/support/nxRecordingLog.h"
#include "tests/support/nxScriptJob.h"
#include "tests/support/nxTestDataStore.h"

namespace {

TEST(nxAlgoDataStoreObject, KeepsRowsOfTextForTheScript)
{
    // Behind "! " an error of the store, and what it logs.
    const std::tuple<std::string, std::string, std::string> rows[] = {
        {"s:add()", "! add requires at least one argument", ""},
        {"s:add('a', 1.5, '') s:add('b') return s.count", "2", ""},
        {"s:get(1)", "'a' '1.5' ''", ""},
        {"s:get(2 ^ 32 + 2.9)", "'b'", ""},
        {"s:get(1, 2)", "! get requires one argument [index]", ""},
        {"s:get(0)", "! get invalid index", "get invalid index : 0"},
        {"s:get(3)", "! get invalid index", "get invalid index : 3"},
        {"s:set()", "! set requires at least two arguments ", ""},
        {"s:set(0, 'a')", "! set invalid index", "set invalid index : 0"},
        {"s:set(3, true)", "! set invalid index", "set invalid index : 3"},
        {"s:set(1, 'x', true)", "error: bad argument #3 to 'set' (string expected, got boolean)", ""},
        {"s:add('x', true)", "error: bad argument #2 to 'add' (string expected, got boolean)", ""},
        {"s.count, s:get(1)", "2 'a' '1.5' ''", ""},
        {"s:set(1, 'c', 'd') return s.count, s:get(1)", "2 'c' 'd'", ""},
        {"s:set(1) return s.count, select('#', s:get(1))", "2 0", ""},
        {"s:add('cut\\0short') return s:get(3)", "'cut'", ""},
        {"s:clear('x') return s.count", "0", ""},
        {"s:get(1)", "! get invalid index", "get invalid index : 1"},
        // The limits.
        {"t = {} for i = 1, 101 do t[i] = i end return #t", "101", ""},
        {"s:add(unpack(t, 2)) return (select(100, s:get(1)))", "'101'", ""},
        {"s:add(unpack(t))", "! add exceeded max number of columns",
         "add exceeded max number of columns : 100 adding 101 columns"},
        {"s:set(1, unpack(t, 2)) return (select(100, s:get(1)))", "'101'", ""},
        {"s:set(1, unpack(t))", "! set exceeded max number of columns",
         "set exceeded max number of columns : 100 adding 101 columns"},
        {"for i = 2, 10001 do s:add(i) end return s:get(10001)", "'10001'", ""},
        {"s:add(1)", "! add exceeded max number of rows", "add exceeded max number of rows: 10000"},
        {"s.count", "10001", ""},
    };
    nxScriptJob script;
    nxTestDataStore store(&script.host);
    script.host.dataStore = &store;
    EXPECT_EQ(script.Evaluate("s = job:getDataStore('old') return s.count"), "0");
    nxRecordingLog log;
    for (const auto& [code, answer, logged] : rows) {
        EXPECT_EQ(script.Evaluate(code),
                  answer.starts_with("! ") ? "error: dataStore:" + answer.substr(2) : answer)
            << code;
        EXPECT_EQ(log.TakeLines(), logged.empty() ? "" : "32 [test] dataStore:" + logged + "\n") << code;
    }
    // A host is bound by none of them, a script's stack is.
    store._LoadRow(nxTestDataStore::Row(1000, "x"));
    EXPECT_EQ(script.Evaluate("select('#', s:get(10002))"), "1000");
    store._LoadRow(nxTestDataStore::Row(1'000'000, "x"));
    EXPECT_NE(script.Evaluate("s:get(10003)").find("too many results"), std::string::npos);
}

}  // namespace
