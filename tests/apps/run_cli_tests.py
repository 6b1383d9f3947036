#!/usr/bin/env python3
"""Runs algoserver as a user does and checks what comes back.

    run_cli_tests.py ALGOSERVER [NAME...]    the cases whose name holds one of NAMEs, or all
    run_cli_tests.py ALGOSERVER --update     writes the golden files anew from what the program prints

Prints "N passed, N failed"; the exit status is 1 when a case failed.
"""

import contextlib
import gzip
import json
import os
import pty
import resource
import signal
import sqlite3
import subprocess
import sys
import tempfile
import time

GOLDEN = os.path.join(os.path.dirname(os.path.abspath(__file__)), "golden")
EXAMPLES = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..", "examples")
TIMEOUT = 60

QUOTES = "time,product,bid,bidVolume,ask,askVolume,last,lastVolume,side\n"
DAY = QUOTES + """\
20240108:14:30:00.5,A,99,1,101,2,,,
20240108:14:30:01,A,,,,,100,3,BUY
20240108:14:30:02,A,,,99,,,,
20240108:14:30:07.25,A,98.5,4,,,,,
"""
DEPTH = """\
time,product,side,price,volume
20240108:14:30:00,B,BUY,10,1
20240108:14:30:00,B,SELL,12,1
20240108:14:30:03,B,BUY,11,1
"""
TELL = """\
function OnInit()
  a = job:getProduct("A")
  a:subscribe()
  job:startTimer("tick", 2000)
end
function OnPrice(price) job:logText("bid " .. price.bidPrice .. " ask " .. price.askPrice) end
function OnTimer(name) job:logText(name) end
function OnShutdown() job:logText("bye") end
"""

FILES = {
    "tell.lua": TELL,
    "quiet.lua": "function OnInit() end\n",
    "both.lua": TELL.replace("a:subscribe()", 'a:subscribe() job:getProduct("B"):subscribe()'),
    "broken.lua": 'function OnInit()\n  job:logText("x"\nend\n',
    "failing.lua": TELL.replace('job:logText(name)', 'error("timer " .. name)'),
    "lib.lua": "function helper(price)\n  return price.nothing.more\nend\n",
    "uses_lib.lua": TELL.replace("function OnPrice(price)", "function OnPrice(price) helper(price)"),
    "silent.lua": "function OnInit() job:getProduct('A'):subscribePrice() x = job:getParameter('treshold') end\n"
                  "function OnOrderFilled(update) end\nfunction OnPrice(price) jop() end\n",
    "prints.lua": 'function OnInit() print("one") job:logText("two") print("three") end\n',
    "hungry.lua": "function OnInit() local t = {} for i = 1, 1e7 do t[i] = { i } end end\n",
    "empty.lua": "",
    "day.csv": DAY,
    "day.csv.gz": gzip.compress(DAY.encode(), mtime=0),
    "depth.csv": DEPTH,
    "empty.csv": "",
    "header.csv": QUOTES,
    "truncated.csv.gz": gzip.compress(DAY.encode(), mtime=0)[:-12],
    "bad.csv": DAY + "20240108:14:30:08,A,98.,x,,,,,\n20240108:14:30:09,A,97,1,,,,,\n",
    "half.toml": '[[product]]\nname = "A"\ntickSize = 0.5\n',
    "broken.toml": "[[product]]\nname = \n",
    "params.toml": '[parameters]\nn = 1\n[jobs.asks]\nsize = { type = "uint", value = 5 }\n',
    "asks.lua": """\
function OnInit()
  job:getProduct("A"):subscribePrice()
  job:logText(table.concat({ type(job:getParameter("n")), tostring(job:getParameter("size")), job.selectedSide,
                             job.selectedPrice, job.account }, " "))
end
function OnParameter(name, value, tag) job:logText(name .. "=" .. value .. tag) end
function OnJobParametersChanged() job:logText("changed") end
function OnShutdown() job:sendUserState("WARN", "bye") end
""",
    # Counts in a store, once a second and at its end; killed at each fourth row, unless a job of that name ends first.
    "keeps.lua": """\
local execute = os.execute
function OnInit()
  store = job:getDataStore("n", true)
  job:logText("found " .. store.count)
  job:startTimer("count", 1000)
  job:getProduct("A"):subscribePrice()
end
function OnTimer()
  store:add("x")
  if job:getParameter("killed") and store.count % 4 == 0 then execute("kill -9 $PPID") end
  if job:getParameter("ends") then job:shutdown() end
end
function OnShutdown() store:add("end") end
""",
    "changes.csv.gz": gzip.compress(b"time,parameter,value,tag\n20240108:14:30:03,n,7,T\n", mtime=0),
}
for folder in ("", "data"):
    for name in os.listdir(os.path.join(EXAMPLES, folder)):
        if not name.endswith((".lua", ".toml", ".gz", ".py")):
            continue
        with open(os.path.join(EXAMPLES, folder, name), "rb") as example:
            FILES[name] = example.read()

END = "\nend         "

# Name, arguments, exit status, texts that standard output holds (a name in angle brackets: it is that golden
# file), texts that standard error holds. None: it is empty.
CASES = [
    ("help", "--help", 0, ["Exit status: 0 done, 1 a script failed or check found something, 2 bad input", "run ", "generate "], None),
    ("help of run", "run --help", 0, ["run [OPTIONS] SCRIPT... --data FILE...", "--on-error", "(an empty cell: unchanged)"], None),
    ("help of generate", "generate --help", 0, ["--seed", "bytes on every machine"], None),
    ("version", "--version", 0, ["0."], None),
    ("no arguments", "", 2, None, ["no command; there are run, check and generate. Try 'algoserver --help'."]),
    ("unknown command", "walk", 2, None, ["not expected: walk", "there are run, check and generate"]),
    ("wrong flag", "run tell.lua --data day.csv --frob", 2, None, ["not expected: --frob", "algoserver run --help"]),
    ("wrong flag in front", "--frob run tell.lua --data day.csv", 2, None, ["not expected: --frob"]),
    ("no data", "run tell.lua", 2, None, ["--data is required"]),
    ("script behind the data", "run --data day.csv tell.lua", 2, None, ["no script; it stands in front of --data"]),
    ("speed 0", "run tell.lua --data day.csv --speed 0", 2, None, ["--speed: 0 is no number above 0"]),
    ("unknown way on errors", "run tell.lua --data day.csv --on-error go", 2, None, ["go not in {stop,continue}"]),
    ("negative memory", "run tell.lua --data day.csv --memory-limit -1", 2, None, ["--memory-limit = -1"]),

    ("a day", "run tell.lua --data day.csv", 0, "<day.txt>", ["--- speed", "events per second", "peak memory"]),
    ("two files", "run both.lua --data day.csv depth.csv", 0, "<two_files.txt>", ["--- speed"]),
    ("two files, named one by one", "run both.lua -d day.csv -d depth.csv", 0, "<two_files.txt>", ["--- speed"]),
    ("fast replay", "run tell.lua --data day.csv --speed 1000", 0, "<day.txt>", ["--- speed"]),
    ("print keeps its place", "run prints.lua --data day.csv", 0,
     ["one\n20240108:14:30:00.000  two\nthree\n--- summary\n"], ["--- speed"]),
    ("library's log", "run tell.lua --data day.csv --log-level info", 0, "<day.txt>", ["[tell.lua] Stopping Algo Job"]),

    ("missing file", "run tell.lua --data none.csv", 2, None, ["none.csv: cannot open: No such file or directory"]),
    ("data is a directory", "run tell.lua --data .", 2, None, [".: is a directory, not a file of recorded data"]),
    ("header only", "run quiet.lua --data header.csv", 0,
     [END + "the data ended\n", "data        header.csv: no rows\n", "no events   the data holds no rows\n"], ["--- speed"]),
    ("truncated gzip", "run tell.lua --data truncated.csv.gz", 2, ["bid 99 ask 101\n", "bye\n", END + "bad data: "],
     ["truncated.csv.gz:4: truncated gzip data: the file stops before its end; line 4 is the last whole one\n"]),
    ("bad row", "run tell.lua --data bad.csv", 2, ["bid 98.5 ask 99\n", "bye\n", END + "bad data: "],
     ['bad.csv:6:21: bid: not a number: "98."\n']),
    ("bad row, lenient", "run tell.lua --data bad.csv --lenient", 0,
     ["bid 97 ask 99\n", "data        bad.csv: 1 bad row skipped\n"], ["--- speed"]),
    ("broken product file", "run tell.lua --data day.csv --products broken.toml", 2, None, ["broken.toml:"]),

    ("empty script", "run empty.lua --data day.csv", 1, [END + "the script defines no function OnInit\n"],
     ["empty.lua: defines no function OnInit\n"]),
    ("broken script", "run broken.lua --data day.csv", 1, [END + "the script could not be loaded\n"],
     ["broken.lua:3: ')' expected (to close '(' at line 2) near 'end'\n     3 | end\n       while the script was loaded\n"]),
    ("failing callback", "run failing.lua --data day.csv", 1, ["bye\n", END + "a callback failed\n"],
     ['failing.lua:7: timer tick\n     7 | function OnTimer(name) error("timer " .. name) end\n'
      "       in OnTimer at 20240108:14:30:02.000000000\n"]),
    ("failing callback, continue", "run failing.lua --data day.csv --on-error continue", 1,
     ["bid 98.5 ask 99\n", END + "the data ended\n",
      "failing.lua:7: timer tick (in OnTimer, 3 times, first at 20240108:14:30:02.000000000)\n"], ["--- speed"]),
    ("error in a module", "run uses_lib.lua --data day.csv --module lib.lua", 1, ["bye\n"],
     ["lib.lua:2: attempt to index field 'nothing' (a nil value)\n     2 | return price.nothing.more\n"]),
    ("too much memory", "run hungry.lua --data day.csv --memory-limit 8", 1, [END + "OnInit failed\n"],
     ["not enough memory; the script may hold 8 MiB\n"]),
    ("what is silently wrong is told", "run silent.lua --data day.csv --param threshold=5 --on-error continue", 1,
     ["\nnote        parameter threshold is given, and no script reads it; asked for, and not given: treshold\n"
      "note        silent.lua:2: there is no callback 'OnOrderFilled', and nothing calls it; did you mean 'OnOrderFill'?\n"
      "note        1 finding in the script: algoserver check --no-run silent.lua\n"], ["--- speed"]),
    ("nothing delivered", "run quiet.lua --data day.csv", 0,
     ["no events   the script asked for no product; the data holds A\n"], ["--- speed"]),

    ("a market maker", "run market_maker.lua --data demo_quotes.csv.gz", 0, "<market_maker.txt>", ["--- speed"]),
    ("latency in a range, the same by seed", "run market_maker.lua --data demo_quotes.csv.gz --latency 0.5-20 --seed 7 --fills cross", 0,
     ["20240108:14:31:13.470  order 1 is not amended: the order is filled\n",
      "20240108:20:59:59.880  bought 896, sold 894, profit -2.28\n",
      "\norders      946 orders, 1,325 fills, volume 1,790, maker share 99.9%\n"
      "profit      -2.28: realised -2.26, open -0.02, fees in it 0, largest drawdown 7.69\n"], ["--- speed"]),
    ("a story of no order", "run market_maker.lua --data demo_quotes.csv.gz --explain 1 --explain 9999", 1, ["--- order 1\n"],
     ["--explain 9999: there is no such order; the run had "]),
    ("three models over standard input", "run market_maker.lua --data - --envelope", 2, None,
     ["algoserver run: --envelope reads everything once for each fill model, and - can be read only once\n"]),
    ("three models", "run market_maker.lua --data demo_quotes.csv.gz --envelope", 0, "<market_maker_envelope.txt>", ["--- speed"]),
    ("brackets", "run bracket.lua --data demo_quotes.csv.gz", 0, "<bracket.txt>", ["--- speed"]),
    ("a crossover", "run moving_average.lua --data demo_quotes.csv.gz", 0, "<moving_average.txt>", ["--- speed"]),
    ("trade windows", "run trade_window.lua --data demo_quotes.csv.gz", 0, "<trade_window.txt>", ["--- speed"]),
    ("bands over bars", "run bollinger.lua --data demo_bars.csv.gz", 0, "<bollinger.txt>", ["--- speed"]),
    ("a spread", "run spread.lua --data calendar_quotes.csv.gz --products products.toml", 0, "<spread.txt>", ["--- speed"]),
    ("a spread's file watched", "run spread.lua --data calendar_quotes.csv.gz --products products.toml --watch-products", 0,
     "<spread.txt>", ["--- speed"]),
    ("a missing script", "run none.lua --data day.csv", 2, None, ["none.lua: cannot open: No such file or directory"]),
    ("too large a seed", "run tell.lua --data day.csv --seed 18446744073709551616", 2, None,
     ["--seed: 18446744073709551616 is no whole number from 0 to 18446744073709551615"]),
    ("no period", "run tell.lua --data day.csv --bar-period A=1", 2, None, ["--bar-period A=1: is no [PRODUCT=]PERIOD, such as "]),
    ("watching a pipe", "run tell.lua --data day.csv --products - --watch-products", 2, None,
     ["--watch-products: - can be read only once"]),
    ("nothing to watch", "run tell.lua --data day.csv --watch-products", 2, None, ["--watch-products is for the file of --products"]),
    ("nothing to save", "run tell.lua --data day.csv --store-every 5", 2, None, ["--store-every is for the stores of --store"]),
    ("wrong latency", "run tell.lua --data day.csv --latency 5-1", 2, None, ["--latency: 5-1 is no MS or MIN-MAX"]),
    ("a job that watches another", "run parent.lua worker.lua --data demo_quotes.csv.gz --param enough=40", 0,
     "<parent.txt>", ["--- speed", "script      parent  OnInit"]),
    ("one of two jobs fails", "run broken.lua tell.lua --data day.csv", 1,
     ["[tell] bid 98.5 ask 99\n", END + "the data ended\n", "\njob         broken  the script could not be loaded\n",
      "\nfailure     broken  broken.lua:3: "], ["       while the script was loaded of broken\n"]),
    ("parameters, selection and account", "run --params params.toml --param asks/size:uint=6 --account mine"
     " --select side=SELL,price=1.5 --events changes.csv.gz --at 20240108:14:30:03 n=8 asks.lua --data day.csv", 0, "<asks.txt>",
     ["--- speed"]),
    ("a parameter that does not parse", "run asks.lua --data day.csv --param n:uint=five", 2, None,
     ['--param n:uint=five: parameter n: "five" is no uint: not a number\n']),
    ("a change without a value", "run asks.lua --data day.csv --at 20240108", 2, None, ["--at: 2 required"]),
    ("a record in no folder", "run asks.lua --data day.csv --record none/record.jsonl", 2, None,
     ["none/record.jsonl: the record cannot be written: No such file or directory\n"]),

    ("remembers, run one", "run remember.lua --data demo_quotes.csv.gz --store memory", 0, "<remember_1.txt>", ["--- speed"]),
    ("remembers, run two", "run remember.lua --data demo_quotes.csv.gz --store memory", 0, "<remember_2.txt>", ["--- speed"]),
    ("no stores", "run keeps.lua --data day.csv", 1, ["\nend         OnInit failed\n"],
     ["[keeps.lua] getDataStore. no store n: the server was given no directory for data stores (--store)\n"]),
    ("stores in a file", "run keeps.lua --data day.csv --store day.csv", 2, None, ["day.csv: is no directory for data stores\n"]),
    ("stores in no folder", "run keeps.lua --data day.csv --store no/stores", 2, None,
     ["no/stores: the directory for data stores cannot be made: No such file or directory\n"]),
    ("stores saved all the time", "run keeps.lua --data day.csv --store memory --store-every 0", 2, None,
     ["--store-every: 0 is no number of seconds from 0.001 to 1000000000"]),

    ("generate quotes", "generate --seed 7 --duration 5", 0, "<generated_quotes.txt>", [" rows from "]),
    ("generate depth", "generate --seed 7 --duration 2 --kind depth", 0, "<generated_depth.txt>", [" rows from "]),
    ("generate of an unknown kind", "generate --kind bars", 2, None, ["bars not in {quotes,depth}"]),
    ("generate from no date", "generate --start 20240230", 2, None, ["--start 20240230 is no YYYYMMDD"]),
    ("generate with no price", "generate --price cheap", 2, None, ["--price cheap is no decimal number"]),
    ("generate into nowhere", "generate --output none/day.csv", 2, None, ["none/day.csv: No such file or directory"]),
]


class Failed(Exception):
    pass


def require(condition, message):
    if not condition:
        raise Failed(message)


def execute(program, arguments, **options):
    options.setdefault("stdout", subprocess.PIPE)
    return subprocess.run([program] + arguments, stdin=subprocess.DEVNULL, stderr=subprocess.PIPE,
                          timeout=TIMEOUT, **options)


def check_text(name, text, expected, update):
    if expected is None:
        require(text == "", f"{name} should be empty:\n{text}")
    elif isinstance(expected, str):
        path = os.path.join(GOLDEN, expected.strip("<>"))
        if update:
            with open(path, "w", newline="") as file:
                file.write(text)
        with open(path, newline="") as file:
            golden = file.read()
        require(text == golden, f"{name} is not {expected}:\n{text}")
    else:
        for part in expected:
            require(part in text, f"{name} lacks {part!r}:\n{text}")


def run_case(program, case, update):
    _, arguments, status, out, err = case
    result = execute(program, arguments.split())
    stderr = result.stderr.decode()
    require(result.returncode == status, f"exit status {result.returncode} instead of {status}:\n{stderr}")
    check_text("standard output", result.stdout.decode(), out, update)
    check_text("standard error", stderr, err, update)
    require("\r" not in stderr and "\033" not in stderr, f"a progress bar in a pipe:\n{stderr!r}")


def test_calendar_is_what_its_maker_prints(program):
    made = subprocess.run([sys.executable, "make_calendar.py"], stdout=subprocess.PIPE, timeout=TIMEOUT, check=True)
    require(made.stdout == gzip.decompress(FILES["calendar_quotes.csv.gz"]), "the shipped data are others")


def test_generate_again(program):
    """The same seed gives the same bytes, another one others, and a run takes them."""
    arguments = ["generate", "--duration", "600", "--seed"]
    first, again, other = (execute(program, arguments + [seed]).stdout for seed in ("3", "3", "4"))
    require(first == again and first != other and first.count(b"\n") > 100, "the bytes do not follow the seed")
    execute(program, arguments + ["3", "--output", "generated.csv"])
    with open("generated.csv", "rb") as file:
        require(file.read() == first, "the file differs from standard output")
    result = execute(program, ["run", "quiet.lua", "--data", "generated.csv"])
    require(result.returncode == 0 and b" quotes, " in result.stdout, result.stdout.decode())


def test_every_input_from_a_pipe(program):
    """Each is read once, from standard input or another pipe, and two cannot share one."""
    def pipe(arguments, *files):
        """With standard input from the first file, and {} for a pipe from each other one."""
        writers = [subprocess.Popen(["cat", name], stdout=subprocess.PIPE) for name in files]
        paths = [f"/dev/fd/{writer.stdout.fileno()}" for writer in writers[1:]]
        result = subprocess.run([program] + arguments.format(*paths).split(), stdin=writers[0].stdout, capture_output=True,
                                pass_fds=[writer.stdout.fileno() for writer in writers[1:]], timeout=TIMEOUT)
        for writer in writers:
            writer.stdout.close()
            writer.wait()
        return result.returncode, result.stdout.decode(), result.stderr.decode()
    for arguments, golden, *files in (
            ("run tell.lua --data -", "day.txt", "day.csv"), ("run - --data {}", "day.txt", "tell.lua", "day.csv.gz"),
            ("run --products - {} --data {}", "day.txt", "half.toml", "tell.lua", "day.csv"),
            ("run --params {} --param asks/size:uint=6 --account mine --select side=SELL,price=1.5 --events -"
             " --at 20240108:14:30:03 n=8 asks.lua --data day.csv", "asks.txt", "changes.csv.gz", "params.toml"),
            ("run --module - tell.lua tell.lua --name one --name two --data day.csv", "two_jobs.txt", "empty.csv")):
        status, out, err = pipe(arguments, *files)
        require(status == 0, f"{arguments}: {err}")
        check_text(arguments, out, f"<{golden}>", False)
    status, out, err = pipe("check - --module {}", "uses_lib.lua", "lib.lua")
    require((status, out, err) == (0, "", ""), out + err)
    for arguments, text in (("run - --data -", "-: standard input can be read only once\n"),
                            ("run tell.lua --data - --events /dev/stdin", "/dev/stdin: is the same pipe as -, and can be ")):
        status, out, err = pipe(arguments, "day.csv")
        require(status == 2 and text in err and not out, f"{arguments}: {status} {err}")


def test_nothing_is_written_over_an_input(program):
    """By whichever name; and a file is emptied only for a command that can be carried out."""
    os.link("day.csv", "link.csv")
    os.mkdir("inside")
    os.link("day.csv", os.path.join("inside", "stores.sqlite"))
    for arguments, text in (
            ("run tell.lua --data day.csv --record link.csv", "--record link.csv: would be written over day.csv, which is read"),
            ("run tell.lua --data depth.csv day.csv --store inside", "--store inside/stores.sqlite: would be written over day.csv"),
            ("run tell.lua --data day.csv --record ./tell.lua", "--record ./tell.lua: would be written over tell.lua"),
            ("generate --tick-size 0.03 --output day.csv", "no multiple of the tick size")):
        result = execute(program, arguments.split())
        require(result.returncode == 2 and text in result.stderr.decode(), f"{arguments}: {result.stderr.decode()}")
    with open("day.csv", "ab") as end:
        result = execute(program, ["run", "tell.lua", "--data", "day.csv"], stdout=end)
    require(b"standard output: would be written over day.csv" in result.stderr, result.stderr.decode())
    with open("day.csv") as day, open("tell.lua") as tell:
        require((day.read(), tell.read()) == (DAY, TELL), "an input was written over")


def test_full_disk(program):
    """Output that is lost is no success."""
    if not os.path.exists("/dev/full"):
        return
    with open("/dev/full", "wb") as full:
        result = execute(program, ["run", "tell.lua", "--data", "day.csv"], stdout=full)
    require(result.returncode == 2, f"exit status {result.returncode}")
    require(b"standard output cannot be written" in result.stderr, result.stderr.decode())


def read_record(path):
    with open(path) as file:
        return [json.loads(line) for line in file]


def test_record_repeats_to_the_byte(program):
    for path in ("one.jsonl", "two.jsonl"):
        execute(program, ["run", "parent.lua", "worker.lua", "--data", "demo_quotes.csv.gz", "--record", path])
    with open("one.jsonl", "rb") as one, open("two.jsonl", "rb") as two:
        require(one.read() == two.read(), "the records differ")
    entries = read_record("one.jsonl")
    piped = execute(program, ["run", "parent.lua", "worker.lua", "--data", "demo_quotes.csv.gz", "--record", "-"])
    with open("one.jsonl", "rb") as one:
        require(piped.stdout == one.read() and b"--- summary" in piped.stderr, "the record on standard output differs")
    require([entry["sequence"] for entry in entries] == list(range(1, len(entries) + 1)), "a gap in the sequence")
    require(len(entries) > 20 and entries[-1]["type"] == "jobStopped", repr(entries[-1]))


def test_record_on_a_full_disk(program):
    if not os.path.exists("/dev/full"):
        return
    result = execute(program, ["run", "tell.lua", "--data", "day.csv", "--record", "/dev/full"])
    require(result.returncode == 2, f"exit status {result.returncode}")
    require(b"/dev/full: the record cannot be written: No space left" in result.stderr, result.stderr.decode())


def rows_of_store(folder):
    with contextlib.closing(sqlite3.connect(os.path.join(folder, "stores.sqlite"))) as database:
        return database.execute("SELECT count(*) FROM rows").fetchone()[0]


def test_stores_of_a_killed_run(program):
    """What was saved by the recorded time, or when a job ended, is there; the killed second is not."""
    keeps = ["run", "keeps.lua", "keeps.lua", "--name", "a", "--name", "b", "--data", "day.csv", "--param", "b/killed=true"]
    # Both count in the one store: two rows a second.
    for folder, arguments, status, rows in (
            ("timed", ["--store-every", "1"], -signal.SIGKILL, 2),
            ("rarely", ["--store-every", "5"], -signal.SIGKILL, 0),
            ("ended", ["--param", "a/ends=true"], -signal.SIGKILL, 2),
            ("whole", ["--param", "b/ends=true"], 0, 10)):
        result = execute(program, keeps + ["--store", folder] + arguments)
        require(result.returncode == status, f"{folder}: exit status {result.returncode}: {result.stderr.decode()}")
        require(rows_of_store(folder) == rows, f"{folder}: {rows_of_store(folder)} rows")


def test_stores_on_a_full_disk_and_for_one_server(program):
    """Interrupted, a run saves what OnShutdown did; a full disk fails the next run, and leaves that."""
    keeps = ["run", "keeps.lua", "--data", "day.csv", "--store", "held"]
    process = start_slow_run(program, "--store", "held", script=FILES["keeps.lua"], stdout=subprocess.PIPE, stderr=subprocess.PIPE)
    try:
        process.stdout.readline()
        second = execute(program, keeps)
        interrupt(process, signal.SIGINT)
    finally:
        process.kill()
    rows = rows_of_store("held")
    require(process.returncode == 0 and rows >= 1, f"exit status {process.returncode}, {rows} rows")
    limit = lambda: (signal.signal(signal.SIGXFSZ, signal.SIG_IGN), resource.setrlimit(resource.RLIMIT_FSIZE, (600, 600)))
    full = execute(program, keeps, preexec_fn=limit, restore_signals=False)
    for result, status, text in ((second, 2, "held: these data stores are in use: another server, "),
                                 (full, 1, "held/stores.sqlite: the data stores cannot be saved: ")):
        require(result.returncode == status and text in result.stderr.decode(), f"{result.returncode}: {result.stderr.decode()}")
    require(rows_of_store("held") == rows, "the store has changed")


def start_slow_run(program, *arguments, script=TELL.replace("2000", "1800000"), **streams):
    """A run of which the first row comes at once and the next in an hour, a timer in half an hour."""
    with open("slow.csv", "w") as file:
        file.write(QUOTES + "20240108:14:30:00,A,99,1,101,2,,,\n20240108:15:30:00,A,98,1,,,,,\n")
    with open("slow.lua", "w") as file:
        file.write(script)
    return subprocess.Popen([program, "run", "slow.lua", "--data", "slow.csv", "--speed", "1", "--record", "slow.jsonl", *arguments],
                            stdin=subprocess.DEVNULL, **streams)


def interrupt(process, number):
    require(process.poll() is None, "it ended by itself")
    process.send_signal(number)
    return process.communicate(timeout=TIMEOUT)


def test_interrupted(program):
    """Ctrl-C, and the way a service manager stops a process: OnShutdown runs, and the summary is printed."""
    for number in (signal.SIGINT, signal.SIGTERM):
        process = start_slow_run(program, stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        try:
            first = process.stdout.readline()
            require(first == b"20240108:14:30:00.000  bid 99 ask 101\n", repr(first))
            out, err = interrupt(process, number)
        finally:
            process.kill()
        require(process.returncode == 0, f"exit status {process.returncode}")
        check_text("standard output", out.decode(), ["20240108:14:30:00.000  bye\n", END + "interrupted\n", "\nevents      1 quote\n"],
                   False)
        check_text("standard error", err.decode(), ["--- speed"], False)
        require([entry["type"] for entry in read_record("slow.jsonl")] ==
                ["timerStart", "jobStarted", "log", "log", "jobStopped"], "the record is not whole")


def test_interrupted_while_a_pipe_is_silent(program):
    """What came through the pipe has been delivered; the wait for more ends."""
    rows = [f"{1704724200000000000 + i},A,{99 + i % 2},1,101,2,,,\n" for i in range(8000)]
    with open("piped.lua", "w") as file:
        file.write(TELL)
    process = subprocess.Popen([program, "run", "piped.lua", "--data", "-"], stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                               stderr=subprocess.PIPE)
    try:
        process.stdin.write((QUOTES + "".join(rows)).encode())
        process.stdin.flush()
        process.stdout.readline()
        process.send_signal(signal.SIGINT)
        process.wait(timeout=TIMEOUT)
        out = process.stdout.read().decode()
    finally:
        process.kill()
        process.stdin.close()
    require(process.returncode == 0, f"exit status {process.returncode}")
    check_text("standard output", out, ["  bye\n", END + "interrupted\n"], False)


def test_progress_on_a_terminal(program):
    """A line that is drawn over itself, and erased at the end."""
    terminal, other = pty.openpty()
    process = start_slow_run(program, stdout=subprocess.PIPE, stderr=other)
    os.close(other)
    drawn = b""
    try:
        deadline = time.monotonic() + TIMEOUT
        while b"left" not in drawn and time.monotonic() < deadline:
            drawn += os.read(terminal, 4096)
        require(b" %  1 event, " in drawn and b"\r\033[K[" in drawn, repr(drawn))
        process.send_signal(signal.SIGINT)
        try:
            while part := os.read(terminal, 4096):
                drawn += part
        except OSError:  # how a terminal tells that the other end is closed
            pass
        process.communicate(timeout=TIMEOUT)
    finally:
        process.kill()
        os.close(terminal)
    require(b"\r\033[K--- speed" in drawn, repr(drawn))
    require(process.returncode == 0, f"exit status {process.returncode}")


def main():
    program = os.path.abspath(sys.argv[1])
    update = "--update" in sys.argv
    wanted = [name for name in sys.argv[2:] if name != "--update"]
    tests = [(case[0], lambda case=case: run_case(program, case, update)) for case in CASES]
    tests += [(name[5:].replace("_", " "), lambda function=function: function(program))
              for name, function in sorted(globals().items()) if name.startswith("test_")]
    passed = failed = 0
    with tempfile.TemporaryDirectory() as folder:
        os.chdir(folder)
        for name, content in FILES.items():
            with open(name, "wb") as file:
                file.write(content if isinstance(content, bytes) else content.encode())
        for name, test in tests:
            if wanted and not any(part in name for part in wanted):
                continue
            try:
                test()
                passed += 1
            except (Failed, subprocess.TimeoutExpired, OSError) as error:
                failed += 1
                print(f"FAILED {name}: {error}\n")
        os.chdir("/")
    print(f"{passed} passed, {failed} failed")
    return 1 if failed or not passed else 0


if __name__ == "__main__":
    sys.exit(main())
