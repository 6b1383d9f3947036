#!/usr/bin/env python3
"""Runs sweeps: what they come to against single runs, whatever the number of processes, kills, slices and faults.

    run_sweep_tests.py PROGRAM [NAME...]
"""
import contextlib
import csv
import datetime
import io
import json
import math
import os
import pathlib
import random
import signal
import sqlite3
import statistics
import struct
import subprocess
import sys
import tempfile
import threading
import time

TESTS = pathlib.Path(__file__).resolve().parent.parent
sys.path.insert(0, str(TESTS / "tools"))
import check_sweep_statistics as own  # pylint: disable=wrong-import-position

PROGRAM = os.path.abspath(sys.argv[1])
EXAMPLES = TESTS.parent / "examples"
# Follows the last moves; "how" makes it go wrong in several ways.
SCRIPT = """\
function OnInit()
  how, back, size = job:getParameter("how"), job:getParameter("back") or 3, job:getParameter("size") or 1
  a, closes = job:getProduct("A"), {}
  a:subscribePrice()
end
function OnPrice(p)
  closes[#closes + 1] = p.lastPrice
  if how == "error" and #closes == 50 then error("no more") end
  if how == "loop" and #closes == 50 then while true do end end
  if how == "stuck" and #closes == 50 then string.find(string.rep("a", 200000), string.rep("a-", 40) .. "b") end
  if #closes <= back then return end
  local wanted = (closes[#closes] > closes[#closes - back] and 1 or -1) * size
  local volume = wanted - a.position.localNet
  if volume ~= 0 then a:createOrder{side = volume > 0 and "BUY" or "SELL", type = "MARKET"}:work{volume = math.abs(volume)} end
end
"""
SWEEP = ["sweep", "follow.lua", "--data", "bars.csv", "--capital", "1000"]
PLAN = ["--vary", "back=1:6:1", "--vary", "size=1,2"]


def make_files():
    rng, price, rows = random.Random(7), 1000, ["time,product,open,high,low,close,volume"]
    day = datetime.date(2024, 1, 1)
    for _ in range(120):
        for hour in (10, 12, 14, 16):
            before, price = price, price + rng.randint(-20, 20)
            rows.append(f"{day} {hour}:00,A,{before / 10},{max(before, price) / 10},{min(before, price) / 10},{price / 10},500")
        day += datetime.timedelta(days=3 if day.weekday() == 4 else 1)
    for name, text in {"follow.lua": SCRIPT, "other.lua": SCRIPT.replace("> closes", "< closes"), "bars.csv": "\n".join(rows) + "\n"}.items():
        with open(name, "w", encoding="utf-8") as file:
            file.write(text)


def run(*words, status=0):
    done = subprocess.run([PROGRAM, *words], capture_output=True, text=True, stdin=subprocess.DEVNULL, check=False)
    require(done.returncode == status, f"{' '.join(words)}: status {done.returncode}: {done.stdout}{done.stderr}")
    return done


def require(holds, what):
    if not holds:
        raise AssertionError(what)


def table_of(database):
    return run("report", database, "--csv", "-").stdout


def rows_of(database):
    return list(csv.DictReader(io.StringIO(table_of(database))))


def stored(database):
    """What each run took, which would be another time if it were made again."""
    if not os.path.exists(database):
        return {}
    with sqlite3.connect(database) as connection:
        try:
            return {(point, part): seconds for point, part, seconds in connection.execute("SELECT point, part, seconds FROM runs")}
        except sqlite3.OperationalError:
            return {}


def measures_of(*words):
    return json.loads(run("run", "follow.lua", "--data", "bars.csv", "--capital", "1000", *words, "--json", "-").stdout)["results"][0]["measures"]


def require_row(row, measures):
    for name, value in measures.items():
        require((None if row[name] == "" else float(row[name])) == value, f"{name}: {row[name]} and {value}")


def test_a_run_of_a_sweep_is_the_run_alone():
    run(*SWEEP, *PLAN, "-o", "a.db")
    rows = rows_of("a.db")
    require(len(rows) == 12, "12 points")
    for row in (rows[0], rows[5], rows[11]):
        require_row(row, measures_of("--param", f"back={row['back']}", "--param", f"size={row['size']}"))
    again = json.loads(run("report", "a.db", "--run", "5", "--json", "-").stdout)
    require_row(rows[5], again["results"][0]["measures"])


def test_the_table_is_the_same_with_any_processes_batches_and_slices():
    words = [*SWEEP, *PLAN, "--vary-option", "bar-fills=open,mean", "--random", "15", "--walk", "2m:1m", "--holdout", "10%"]
    run(*words, "-o", "one.db", "--jobs", "1", "--batch", "1")
    expected = table_of("one.db")
    require(expected.count("\n") == 16 and expected.count(",done,") == 15, expected)
    run(*words, "-o", "many.db", "--jobs", "3", "--batch", "7")
    require(table_of("many.db") == expected, "another table with three processes")
    parts = []
    for k in range(3):
        parts += ["--take", f"part{k}.db"]
        run(*words, "--slice", f"{k}/3", "-o", f"part{k}.db")
    before = len(stored("part0.db")) + len(stored("part1.db")) + len(stored("part2.db"))
    done = run(*words, "-o", "whole.db", *parts)
    require(table_of("whole.db") == expected, "another table of slices")
    added = set(stored("whole.db")) - set(stored("part0.db")) - set(stored("part1.db")) - set(stored("part2.db"))
    require(before > 15 and {point for point, _ in added} == {int(done.stdout.split("best        run ")[1].split(":")[0])},
            f"the merge made other runs than those of the best: {added}")


def test_a_hundred_kills_lose_nothing_that_was_done():
    for name, plan, kills in (("grid", ["--vary", "back=1:100:1", "--vary", "size=1,2,3"], 100), ("tpe", ["--vary", "back=1:200:1", "--search", "tpe", "--runs", "60"], 20)):
        words = [*SWEEP, *plan, "--jobs", "2", "--batch", "4"]
        run(*words, "-o", "quiet.db")
        rng, before = random.Random(3), {}
        for _ in range(kills):
            process = subprocess.Popen([PROGRAM, *words, "-o", f"{name}.db"], stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
            time.sleep(rng.uniform(0.01, 0.12))
            process.send_signal(rng.choice([signal.SIGKILL, signal.SIGKILL, signal.SIGINT]))
            process.wait()
            now = stored(f"{name}.db")
            require(before.items() <= now.items(), f"{name}: a run was lost or made twice")
            before = now
        run(*words, "-o", f"{name}.db")
        require(before.items() <= stored(f"{name}.db").items(), f"{name}: a run was made twice at the end")
        require(table_of(f"{name}.db") == table_of("quiet.db"), f"{name}: another table after kills")
        os.remove("quiet.db")


def test_a_run_that_fails_costs_itself_alone():
    words = [*SWEEP, "--vary", "how=fine,error,loop,stuck", "--vary", "back=1,2", "--callback-limit", "0.3", "-o", "fail.db", "--maximise", "netProfit"]
    out = run(*words).stdout
    require("runs        2 done, 6 failed" in out and "2 of 8 runs failed: follow.lua:8: no more" in out, out)
    texts = {row["how"]: row["failure"] for row in rows_of("fail.db")}
    require(texts["fine"] == "" and "OnPrice" in texts["stuck"] and "string.find" in texts["stuck"] and texts["loop"] != "", texts)
    before = stored("fail.db")
    run(*words)
    require(stored("fail.db") == before, "failed runs were tried again")
    run(*words, "--retry")
    after = stored("fail.db")
    require(after.keys() == before.keys() and sum(after[key] != before[key] for key in before) == 4, "--retry")  # of killed ones no time is known


def test_walk_forward_chooses_by_the_train_and_judges_by_the_test():
    run(*SWEEP, *PLAN, "--maximise", "netProfit", "--walk", "2m:1m", "--holdout", "1m", "-o", "walk.db")
    sweep = json.loads(run("report", "walk.db", "--json", "-").stdout)
    require(len(sweep["splits"]) == 2, sweep["splits"])
    points = list(zip(*[[dimension["values"][place] for place in places] for dimension, places in zip(sweep["dimensions"], sweep["points"]["places"])]))

    def profit(point, first, last):
        after = (datetime.date.fromisoformat(last) + datetime.timedelta(days=1)).isoformat()
        back, size = points[point]
        return measures_of("--param", f"back={back}", "--param", f"size={size}", "--from", first, "--to", after)["netProfit"]

    for split in sweep["splits"]:
        trains = [profit(point, *split["train"][0]) for point in range(len(points))]
        require(split["chosen"] == trains.index(max(trains)), f"{split} and {trains}")
        require(abs(split["outOfSample"] - profit(split["chosen"], *split["test"])) < 1e-9, split)
    require(abs(sweep["walk"]["profit"][-1] - sum(split["outOfSample"] for split in sweep["splits"])) < 1e-9, "the joined tests")
    held = sweep["holdout"]
    require(abs(held["objective"] - profit(sweep["best"], held["from"], held["to"])) < 1e-9, held)
    require(held["from"] > sweep["splits"][-1]["test"][1] and sweep["best"] == sweep["splits"][-1]["chosen"], held)


def test_the_luck_of_the_best_follows_from_the_days_of_all():
    run(*SWEEP, *PLAN, "-o", "luck.db")
    run(*SWEEP, *PLAN, "--folds", "4", "-o", "folds.db")
    for name, role in (("luck.db", "whole"), ("folds.db", "test")):
        sweep = json.loads(run("report", name, "--json", "-").stdout)
        days_of = {}
        with sqlite3.connect(name) as connection:
            for point, days, profits in connection.execute(
                    f"SELECT point, days, profits FROM runs JOIN parts USING (part) JOIN calendars USING (calendar) WHERE role = '{role}' ORDER BY point, part"):
                before = 1000
                for (day,), (profit,) in zip(struct.iter_unpack("<q", days), struct.iter_unpack("<d", profits)):
                    days_of.setdefault(point, {})[day] = (1000 + profit) / before - 1
                    before = 1000 + profit
        runs = [[returns for _, returns in sorted(days_of[point].items())] for point in sorted(days_of)]
        luck, points = sweep["luck"], sweep["points"]
        best = own.best_of_luck([own.sharpe(returns) for returns in runs], len(runs))
        white, spa, lower, upper = own.reality_check(runs, 1)[2:]
        halves = [([own.sharpe(part) for part in (returns[:60], returns[60:])]) for returns in runs]
        samples = list(zip(*halves)) if role == "whole" else (points["inSample"], points["outOfSample"])
        chosen_by = dict(zip(zip(*points["places"]), points["objective" if role == "whole" else "outOfSample"]))
        peak = tuple(places[sweep["best"]] for places in points["places"])
        beside = [chosen_by[near] for near in chosen_by if sum(abs(a - b) for a, b in zip(near, peak)) == 1]
        middle = statistics.median(chosen_by.values())
        for told, computed in ((luck["days"], 120), (luck["tried"], 12), (luck["sharpe"], own.sharpe(runs[sweep["best"]])), (luck["bestOfLuck"], best),
                               (luck["deflated"], own.probabilistic(runs[sweep["best"]], best)), (luck["realityCheck"]["white"], white),
                               (luck["realityCheck"]["spa"], spa), (luck["realityCheck"]["spaLower"], lower), (luck["realityCheck"]["spaUpper"], upper),
                               (luck["rankCorrelation"], own.rank_correlation(*map(list, samples))),
                               (luck["neighbours"]["stability"], (statistics.fmean(beside) - middle) / (chosen_by[peak] - middle))):
            require(math.isclose(told, computed, rel_tol=1e-9), f"{name}: {told} and {computed} in {luck}")


def test_what_is_luck_is_told_from_what_is_not():
    for name, verdict in (("noise", "The best of 63 runs may well be luck: "), ("signal", "The best of 63 runs is more than luck: ")):
        out = run("sweep", f"{EXAMPLES}/moving_average.lua", "--data", f"{EXAMPLES}/data/{name}_bars.csv.gz", "--latency", "5ms", "--vary", "fast=5:40:5",
                  "--vary", "slow=20:100:10", "--condition", "fast < slow", "-o", f"{name}.db").stdout
        require(f"verdict     {verdict}" in out, out)


def test_what_is_wrong_is_told():
    run(*SWEEP, *PLAN, "-o", "told.db")
    for words, text in (
            ([*SWEEP, "--vary", "bck=1:3:1", "-o", "x.db"], "no script reads the parameter bck"),
            ([*SWEEP, "-o", "x.db"], "no plan: --vary"),
            ([*SWEEP, "--vary", "back=1:x", "-o", "x.db"], "--vary back=1:x"),
            ([*SWEEP, "--vary-option", "fill=queue", "-o", "x.db"], "fill"),
            ([*SWEEP, "--vary-option", "fills=queue,none", "-o", "x.db"], "none"),
            ([*SWEEP, "--vary", "back=1:3:1", "--maximise", "shape", "-o", "x.db"], "shape"),
            ([*SWEEP, "--vary", "back=1:9:1", "-o", "told.db"], "the plan has changed since"),
            ([*SWEEP, *PLAN, "--seed", "5", "-o", "told.db"], "--seed has changed since"),
            ([*SWEEP, *PLAN, "--currency", "EUR", "-o", "told.db"], "--currency has changed since"),
            ([*SWEEP, *PLAN, "--sandbox", "base", "-o", "told.db"], "--sandbox has changed since"),
            (["sweep", "other.lua", *SWEEP[2:], *PLAN, "-o", "told.db"], "script"),
            ([*SWEEP, *PLAN, "--walk", "5y:1y", "-o", "x.db"], "too few"),
            ([*SWEEP, *PLAN, "--search", "tpe", "--runs", "5", "--walk", "2m:1m", "-o", "x.db"], "--search looks at all the data"),
            ([*SWEEP, *PLAN, "-o", "bars.csv"], "bars.csv"),
            ([*SWEEP, "--vary", "how=error", "-o", "x.db"], "no run goes through: follow.lua:8: no more"),
            (["sweep", "follow.lua", "--data", "/dev/stdin", *PLAN, "-o", "x.db"], "can be read only once"),
            (["report", "bars.csv", "--csv", "-"], "--csv")):
        done = run(*words, status=2)
        require(text in done.stderr, f"{words}: {done.stderr}")
    with open("follow.lua", "a", encoding="utf-8") as file:
        file.write("\n-- changed\n")
    require("script follow.lua has changed since" in run(*SWEEP, *PLAN, "-o", "told.db", status=2).stderr, "a changed script")
    require("has changed since" in run("report", "told.db", "--run", "0", "--json", "-", status=2).stderr, "a page of a changed script")
    run(*SWEEP, *PLAN, "-o", "told.db", "--restart")


def test_a_file_that_a_hand_has_changed_is_refused():
    run(*SWEEP, *PLAN, "--walk", "2m:1m", "-o", "whole.db")
    with open("whole.db", "rb") as file:
        whole = file.read()
    for statement, text in (("UPDATE calendars SET days = randomblob(960)", "do not go together"), ("UPDATE runs SET profits = x'00'", "do not go together"),
                            ("DROP TABLE parts", "no such table"), ("UPDATE facts SET value = '[{}]' WHERE name = 'plan'", "holds no plan"),
                            ("UPDATE facts SET value = '[\"-o\"]' WHERE name = 'command'", "its command"), ("PRAGMA user_version = 2", "newer program"),
                            ("PRAGMA application_id = 7", "another program")):
        with open("hand.db", "wb") as file:
            file.write(whole)
        with contextlib.closing(sqlite3.connect("hand.db")) as connection:
            connection.execute(statement)
            connection.commit()
        told = run("report", "hand.db", "--json", "-", status=2).stderr
        require("hand.db: " in told and text in told, f"{statement}: {told}")
    with contextlib.closing(sqlite3.connect("whole.db")) as connection:
        connection.execute("UPDATE parts SET last = '213305255806638'")
        connection.commit()
    run("report", "whole.db", "--json", "-")


def test_each_run_begins_with_a_copy_of_the_stores():
    count = """function OnInit()
  store, a = job:getDataStore("s", true), job:getProduct("A")
  store:add("x" .. job:getParameter("k"))
  a:subscribePrice()
end
function OnPrice() if not done then a:createOrder{side = "BUY", type = "MARKET"}:work{volume = store.count} end done = true end
"""
    with open("store.lua", "w", encoding="utf-8") as file:
        file.write(count)
    run("run", "store.lua", "--data", "bars.csv", "--store", "kept", "--param", "k=0")
    with open("kept/stores.sqlite", "rb") as file:
        before = file.read()
    words = ["sweep", "store.lua", "--data", "bars.csv", "--store", "kept", "--vary", "k=1:4:1", "--maximise", "netProfit", "-o", "stores.db"]
    run(*words)
    with open("kept/stores.sqlite", "rb") as file:
        require(file.read() == before, "a sweep wrote to the stores")
    bought = {float(row["turnover"]) for row in rows_of("stores.db")}
    alone = json.loads(run("run", "store.lua", "--data", "bars.csv", "--store", "kept", "--param", "k=1", "--json", "-").stdout)
    require(bought == {alone["results"][0]["measures"]["turnover"]} and rows_of("stores.db")[0]["state"] == "done", bought)
    require("the stores of --store has changed" in run(*words, status=2).stderr, "changed stores")


def test_who_only_looks_is_waited_for():
    with contextlib.closing(sqlite3.connect("held.db", check_same_thread=False)) as connection:
        connection.execute("BEGIN EXCLUSIVE")
        require("is in use by another program" in run(*SWEEP, *PLAN, "-o", "held.db", status=2).stderr, "a file in use")
        threading.Timer(0.7, connection.rollback).start()
        run(*SWEEP, *PLAN, "-o", "held.db")


def test_a_dry_run_tells_and_writes_nothing():
    out = run(*SWEEP, *PLAN, "--dry-run", "-o", "dry.db").stdout
    require("runs        12\n" in out and "0           back=1 size=1\n" in out and "            and 2 more" in out and "one run" in out, out)
    require(not os.path.exists("dry.db"), "a dry run wrote a file")
    require(run(*SWEEP, *PLAN, "--count").stdout == "12\n", "--count")


def main():
    tests = [(name, test) for name, test in globals().items() if name.startswith("test_") and (len(sys.argv) < 3 or any(word in name for word in sys.argv[2:]))]
    for name, test in tests:
        begin = time.monotonic()
        with tempfile.TemporaryDirectory() as folder:
            os.chdir(folder)
            make_files()
            test()
            os.chdir("/")
        print(f"ok {name[5:]} ({time.monotonic() - begin:.1f} s)", flush=True)


main()
