#!/usr/bin/env python3
"""Runs algoserver as a user does and checks what comes back.

    run_cli_tests.py ALGOSERVER [NAME...]    the cases whose name holds one of NAMEs, or all
    run_cli_tests.py ALGOSERVER --update     writes the golden files anew from what the program prints

Prints "N passed, N failed"; the exit status is 1 when a case failed.
"""

import bz2
import contextlib
import fcntl
import gzip
import hashlib
import io
import json
import lzma
import math
import os
import pty
import random
import re
import resource
import signal
import sqlite3
import struct
import subprocess
import sys
import tempfile
import termios
import time
import xml.etree.ElementTree
import zipfile

from cases import read_cases

HERE = os.path.dirname(os.path.abspath(__file__))
GOLDEN = os.path.join(HERE, "golden")
EXAMPLES = os.path.join(HERE, "..", "..", "examples")
TIMEOUT = 60

QUOTES = "time,product,bid,bidVolume,ask,askVolume,last,lastVolume,side\n"
END = "\nend         "


FILES, CASES = read_cases("cases.txt")
DAY, TELL = FILES["day.csv"], FILES["tell.lua"]
FILES |= {
    "both.lua": TELL.replace("a:subscribe()", 'a:subscribe() job:getProduct("B"):subscribe()'),
    "failing.lua": TELL.replace('job:logText(name)', 'error("timer " .. name)'),
    "uses_lib.lua": TELL.replace("function OnPrice(price)", "function OnPrice(price) helper(price)"),
    "empty.lua": "",
    "day.csv.gz": gzip.compress(DAY.encode(), mtime=0),
    "empty.csv": "",
    "header.csv": QUOTES,
    "truncated.csv.gz": gzip.compress(DAY.encode(), mtime=0)[:-12],
    "bad.csv": DAY + "20240108:14:30:08,A,98.,x,,,,,\n20240108:14:30:09,A,97,1,,,,,\n",
    "changes.csv.gz": gzip.compress(b"time,parameter,value,tag\n20240108:14:30:03,n,7,T\n", mtime=0),
}
for folder in ("", "data"):
    for name in os.listdir(os.path.join(EXAMPLES, folder)):
        if not name.endswith((".lua", ".toml", ".gz", ".py")):
            continue
        with open(os.path.join(EXAMPLES, folder, name), "rb") as example:
            FILES[name] = example.read()


class Failed(Exception):
    pass


def require(condition, message):
    if not condition:
        raise Failed(message)


def execute(program, arguments, **options):
    options.setdefault("stdout", subprocess.PIPE)
    return subprocess.run([program] + arguments, stdin=subprocess.DEVNULL, stderr=subprocess.PIPE,
                          timeout=TIMEOUT, **options)


def check_text(name, text, expected, update=False):
    """A golden file, parts of the text, or none: then it is empty."""
    if expected and expected[0].startswith("<"):
        path = os.path.join(GOLDEN, expected[0].strip("<>"))
        if update:
            with open(path, "w", newline="") as file:
                file.write(text)
        with open(path, newline="") as file:
            golden = file.read()
        require(text == golden, f"{name} is not {expected}:\n{text}")
        return
    for part in expected:
        require(part in text, f"{name} lacks {part!r}:\n{text}")
    require(expected or not text, f"{name} should be empty:\n{text}")


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


def test_reports_of_script_tests(program):
    """Well-formed whatever files and texts are named, with the counts that are printed."""
    hostile = b'h<&"\xff_test.lua'
    with open(hostile, "w") as file:
        file.write('local function run() script "quiet.lua" market { "09:30:00 1 5 x 2 5" } end\n'
                   'function TestGood() run() expect { orders = 0 } end\n'
                   'function TestBad() run() expect { log = "]]><&\\"\\1" } end\n')
    execute(program, ["run", "--test", hostile, "broken_test.lua", "--junit", "tests.xml", "--json", "tests.json"])
    good, bad = xml.etree.ElementTree.parse("tests.xml").getroot()
    counts = [[suite.get(key) for key in ("name", "tests", "failures", "errors", "skipped")] for suite in (good, bad)]
    require(counts == [['h<&"\ufffd_test.lua', "2", "1", "0", "0"], ["broken_test.lua", "1", "0", "1", "0"]], counts)
    text = good.find("testcase[@name='TestBad']/failure").text
    tests = json.load(open("tests.json"))
    require(text.endswith('_test.lua:3: expected log = "]]><&\\"\\u0001", came none') and tests[1]["faults"] == [{"line": 3, "message": text.split(": ", 1)[1]}], text)
    require([test["state"] for test in tests] == ["passed", "failed", "no tests"], tests)


def test_interrupted_script_tests(program):
    """Those that a Ctrl-C leaves out are named, and the status is that of a failure."""
    process = subprocess.Popen([program, "run", "--test", "cross_test.lua", "no_test.lua", "--filter", "Test[LE]*"], stdout=subprocess.PIPE)
    time.sleep(1)
    process.send_signal(signal.SIGINT)
    out = process.communicate(timeout=TIMEOUT)[0].decode()
    require(process.returncode == 1 and out == "".join(f"-       {name}  not run\n" for name in ("TestLoops", "TestExpectsNothing", "no_test.lua")) +
            "0 tests, 0 failed, 3 not run\n", out)


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


def test_new_folders_run(program):
    """The commands of its page do, for each template; the script trades, and is left as it is by the next new."""
    templates = re.search(r"\{(.*?)\}", execute(program, ["new", "--help"]).stdout.decode())[1].split(",")
    require(len(templates) > 3, templates)
    for template in templates:
        made = execute(program, ["new", "mine_" + template, "-t", template]).stdout.decode()
        os.chdir("mine_" + template)
        with open("README.md") as page:
            check, test, run, sweep = re.findall(r"^    algoserver (.*)$", page.read(), re.M)
        require(made == f"cd mine_{template}\n" + "".join(f"algoserver {command}\n" for command in (check, test, run, sweep)), made)
        tested = execute(program, test.split())
        require(tested.returncode == 0 and b"2 tests, 0 failed" in tested.stdout, tested)
        found = execute(program, check.split() + [f"mine_{template}_test.lua"])
        require((found.returncode, found.stdout, found.stderr) == (0, b"", b""), found)
        out = execute(program, run.split()).stdout.decode()
        fills = int(re.search(r"^orders .* ([\d,]+) fills", out, re.M)[1].replace(",", ""))
        require(fills > 30 and os.path.getsize("result.html") > 10000, out[-1500:])
        result = execute(program, sweep.split())
        require(result.returncode == 0 and b", 0 failed" in result.stdout and b"\nbest " in result.stdout, result)
        os.chdir("..")
    before = sorted(os.listdir())
    again = execute(program, ["new", "mine_bars"])
    require(again.returncode == 2 and b"there is one already" in again.stderr and sorted(os.listdir()) == before, again)


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
        check_text(arguments, out, [f"<{golden}>"])
    status, out, err = pipe("check - --module {}", "uses_lib.lua", "lib.lua")
    require(status == 1 and out.count("price has no property 'nothing' [301]") == 1 and not err, out + err)
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
    for arguments, path, text in (([], "/dev/full", "standard output cannot be written"),
                                  (["--record", "/dev/full"], os.devnull, "/dev/full: the record cannot be written: No space left")):
        with open(path, "wb") as out:
            result = execute(program, ["run", "tell.lua", "--data", "day.csv", *arguments], stdout=out)
        require(result.returncode == 2 and text in result.stderr.decode(), f"{result.returncode}: {result.stderr.decode()}")


def read_record(path):
    with open(path) as file:
        return [json.loads(line) for line in file]


def zipped(method, *names, streamed=False):
    """A zip of day.csv under each name; streamed: its sums stand after the data, as a pipe is written."""
    class Stream(io.BytesIO):
        seekable = lambda self: not streamed  # noqa: E731
    out = Stream()
    with zipfile.ZipFile(out, "w", method) as archive:
        archive.writestr("folder/", "") if not streamed else None
        for name in names:
            with archive.open(zipfile.ZipInfo(name, (2024, 1, 8, 0, 0, 0)), "w") as entry:
                entry.write(DAY.encode())
    return out.getvalue()


def test_data_packed_in_any_way(program):
    """A file, in parts or in an archive, is read as the plain one; what is damaged or ambiguous is told."""
    half = DAY.index("\n", len(DAY) // 2) + 1
    parts = [part.encode() for part in (DAY[:half], DAY[half:])]
    good = [b"".join(map(pack, parts)) for pack in (lzma.compress, bz2.compress, gzip.compress)]
    good += [zipped(zipfile.ZIP_STORED, "day.csv"), zipped(zipfile.ZIP_DEFLATED, "day.csv"),
             zipped(zipfile.ZIP_DEFLATED, "day.csv", streamed=True)]
    plain = execute(program, ["run", "tell.lua", "--data", "day.csv"]).stdout
    for number, content in enumerate(good):
        FILES["packed"] = content
        with open("packed", "wb") as file:
            file.write(content)
        for source in ("packed", "/dev/stdin"):
            with open("packed", "rb") as stdin:
                result = subprocess.run(f"cat | {program} run tell.lua --data {source}", shell=True, stdin=stdin,
                                        capture_output=True, timeout=TIMEOUT)
            require(result.stdout == plain, f"{number}, {source}: {result.stdout.decode()}{result.stderr.decode()}")
        for content in (content[:len(content) // 2], content[:len(content) // 2] + b"\xff\x00" + content[len(content) // 2 + 2:]):
            with open("packed", "wb") as file:
                file.write(content)
            result = execute(program, ["run", "tell.lua", "--data", "packed"])
            require(result.returncode == 2 and b"packed:" in result.stderr, f"{number}: {result.stderr!r}")
    with open("packed", "wb") as file:
        file.write(zipped(zipfile.ZIP_DEFLATED, "day.csv", "other.csv"))
    result = execute(program, ["run", "tell.lua", "--data", "packed"])
    require(b"zip: it holds more than one file; unpack it" in result.stderr, result.stderr.decode())


def test_import(program):
    """What is imported runs as the files did; late and double rows are put right and told; nothing is left half."""
    rows = QUOTES + "".join(f"2024010{day}:14:30:0{second},A,9{second},1.5,,,,,\n" for day in (8, 9) for second in (1, 3, 2, 2))
    bars = "Date;Open;High;Low;Close\n2024-01-08;5;6;4;5\n2024-01-08;5;6;4;5\n2024-01-12;900;900;900;900\n"
    for name, text in (("late.csv", rows), ("B.csv", bars), ("bad_import.csv", QUOTES + "20240108,A,x,1,,,,,\n")):
        with open(name, "w") as file:
            file.write(text)
    result = execute(program, ["import", "late.csv", "B.csv", "day.csv", "depth.csv", "-o", "set"])
    require(result.returncode == 0, result.stderr.decode())
    out = result.stdout.decode()
    for text in ("B.csv: bars of B (by the file's name)", "rows that came late, sorted in: 6, the first late.csv:2",
                 "rows like the one before, kept: 2", "rows that came twice, left out: 1, the first B.csv:3",
                 "weekdays without rows: 3, the first 20240109"):
        require(text in out, f"lacks {text}:\n{out}")
    for name, text in (("set", "quotes"), ("set/data.toml", "depth"), ("set/*.quotes.*", "A: one lot is 0.5")):
        result = execute(program, ["run", "quiet.lua", "--data", name])
        require(result.returncode == 0, result.stderr.decode())
    result = execute(program, ["run", "quiet.lua", "--data", "set"])
    require(b"A: one lot is 0.1 of the recorded size" in result.stdout, result.stdout.decode())
    before = {name: os.stat(os.path.join("set", name)).st_mtime_ns for name in os.listdir("set")}
    result = execute(program, ["import", "day.csv", "bad_import.csv", "-o", "set"])
    after = {name: os.stat(os.path.join("set", name)).st_mtime_ns for name in os.listdir("set")}
    require(result.returncode == 2 and b"bad_import.csv:2:12: bid: not a number" in result.stderr and before == after,
            result.stderr.decode())
    with open("set/B.bars.csv.zst", "ab") as file:
        file.write(b"x")
    result = execute(program, ["run", "quiet.lua", "--data", "set"])
    require(result.returncode == 2 and b"B.bars.csv.zst is not the file that was imported" in result.stderr, result.stderr.decode())


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
    require(len(entries) > 20 and entries[-1]["type"] == "end", repr(entries[-1]))


def test_results_of_the_examples(program):
    """All bytes of their documents, by a hash; the measures are there to see what has changed."""
    lines = []
    for title, arguments, *_ in CASES:
        if title not in ("a market maker", "brackets", "a crossover", "bands over bars", "a spread"):
            continue
        document = execute(program, [*arguments.split(), "--json", "-"]).stdout
        lines.append(f"{title}: {hashlib.sha256(document).hexdigest()}")
        for result in json.loads(document)["results"]:
            lines += [f"  {name} {json.dumps(value)}" for name, value in result["measures"].items()]
            lines += [f"  {sentence}" for sentence in result["verdict"]]
    check_text("results", "\n".join(lines) + "\n", ["<results.txt>"], "--update" in sys.argv)


def test_measures_counted_again(program):
    """Of the days of a record, by a second program: the ratios and the bootstrap to the last digit."""
    chance, price = random.Random(1), 1000
    with open("days.csv", "w") as file:
        file.write(QUOTES)
        for hour in range(1000):
            price += chance.randint(-9, 9)
            file.write(f"{1_700_000_000 + 3600 * hour},SIM,{price / 100},9,{(price + 1) / 100},9,{price / 100},1,BUY\n")
    execute(program, ["run", "moving_average.lua", "--data", "days.csv", "--param", "slow=10", "--param", "fast=3", "--record", "days.jsonl",
                      "--json", "days.json", "--seed", "7"])
    with open("days.json") as file:
        result = json.load(file)
    profits = [entry["profit"] for entry in read_record("days.jsonl") if entry["type"] == "day"]
    # Exact before they are doubles again.
    days = [float(round((b - a) * 100)) / 100 for a, b in zip([0.0] + profits, profits)]
    count, year = len(days), result["run"]["daysPerYear"]

    def mean(numbers):
        total = 0.0
        for number in numbers:
            total += number
        return total / len(numbers)

    def sharpe(numbers):
        middle, squares = mean(numbers), 0.0
        for number in numbers:
            squares += (number - middle) ** 2
        deviation = math.sqrt(squares / (len(numbers) - 1))
        return middle / deviation * math.sqrt(year) if deviation else None

    def interval(statistic):
        state, length, found = 7, max(1, round(count ** (1 / 3))), []

        def draw():
            nonlocal state
            state = mixed = (state + 0x9E3779B97F4A7C15) % 2**64
            mixed = (mixed ^ mixed >> 30) * 0xBF58476D1CE4E5B9 % 2**64
            mixed = (mixed ^ mixed >> 27) * 0x94D049BB133111EB % 2**64
            return ((mixed ^ mixed >> 31) >> 11) / 2**53
        for _ in range(1000):
            place, drawn = int(draw() * count), []
            for _ in range(count):
                drawn.append(days[place])
                place = int(draw() * count) if draw() < 1 / length else (place + 1) % count
            found.append(statistic(drawn))
        found.sort()
        return [found[25], found[-26]]

    tail = sorted(days)[:-(-count // 20)]
    wins = [row[7] for row in result["results"][0]["roundTrips"]["rows"] if row[7] > 0]
    measures = result["results"][0]["measures"]
    for name, again in (("meanDay", mean(days)), ("sharpe", sharpe(days)), ("var95", -tail[-1]), ("es95", -mean(tail)),
                        ("bestDay", max(days)), ("winRate", len(wins) / measures["roundTrips"]), ("netProfit", profits[-1])):
        require(measures[name] == again, f"{name} {measures[name]}, counted again {again}")
    require(result["results"][0]["intervals"] == {"sharpe": interval(sharpe), "meanDay": interval(mean)},
            f"intervals {result['results'][0]['intervals']}, counted again {interval(sharpe)} {interval(mean)}")
    require(count >= 40 and measures["roundTrips"] > 30, f"{count} days, {measures['roundTrips']} round trips")


def test_results_that_cannot_be_written(program):
    arguments = ["run", "moving_average.lua", "--data", "demo_quotes.csv.gz"]
    for option in ("--json", "--report", "--trades", "--equity"):
        result = execute(program, arguments + [option, "/dev/full"])
        require(result.returncode == 2 and b"/dev/full: the " in result.stderr and b" cannot be written: " in result.stderr,
                f"{option}: {result.returncode} {result.stderr}")
    piped = execute(program, arguments + ["--json", "-"])
    require(json.loads(piped.stdout)["result"] == 1 and b"--- summary" in piped.stderr, "the result on standard output differs")


def report(program, content, name="again.jsonl"):
    """Exit status, standard error, and the result as bytes."""
    with open(name, "wb") as file:
        file.write(content)
    result = execute(program, ["report", name, "--json", "-"])
    return result.returncode, result.stderr.decode(), result.stdout


def test_report_is_the_result_of_the_run(program):
    """Of a whole record to the byte, packed or not; of one that was cut or is old what stands in it; else where it is wrong."""
    for arguments in ("market_maker.lua --data demo_quotes.csv.gz --latency 5ms --feed-latency 5ms", "bollinger.lua --data demo_bars.csv.gz --envelope",
                      "moving_average.lua --data demo_quotes.csv.gz --capital 100000"):
        execute(program, ["run", *arguments.split(), "--record", "run.jsonl", "--json", "run.json"])
        with open("run.jsonl", "rb") as record, open("run.json", "rb") as result:
            record, whole = record.read(), result.read()
        require(report(program, record) == report(program, gzip.compress(record)) == (0, "", whole), f"{arguments}: another result")
    lines, known = record.splitlines(True), json.loads(whole)["results"][0]
    entries = [json.loads(line) for line in lines]
    first_end = next(place for place, entry in enumerate(entries) if entry["type"] == "account")
    of_marks = {"maxDrawdown", "maxDrawdownPercent", "maxDrawdownSeconds", "markout1s", "markout10s", "markout1m", "markout10m"}
    for cut in (record[:-2], b"".join(lines[:first_end]), gzip.compress(record)[:-999]):
        status, err, out = report(program, cut)
        result = json.loads(out)
        require((status, result["run"]["complete"], "ends in the middle of the run" in err) == (0, False, True), err)
        measures = result["results"][0]["measures"]
        require({name for name in measures if measures[name] != known["measures"][name]} == of_marks, f"{measures}")
        require(result["results"][0]["roundTrips"] == known["roundTrips"], "other round trips")
    for place in range(1, len(record), len(record) // 40):
        status, err, _ = report(program, record[:place])
        require(status == (0 if place > len(lines[0]) else 2), f"cut at {place}: {status} {err}")
    old = [entry for entry in entries if entry["type"] not in ("run", "trip", "day", "account", "prices", "end")]
    for sequence, entry in enumerate(old, 1):
        entry["sequence"] = sequence
        for key in ("mid", "pointValue"):
            entry.pop(key, None)
    status, err, out = report(program, "".join(json.dumps(entry) + "\n" for entry in old).encode())
    result = json.loads(out)
    require(status == 0 and "is of version 1" in err and any("Slippage" in text for text in result["run"]["missing"]), err)
    for name in ("netProfit", "fees", "roundTrips", "winRate", "expectancy", "makerShare"):
        require(result["results"][0]["measures"][name] == known["measures"][name], name)
    require(result["results"][0]["measures"]["averageMae"] is result["results"][0]["measures"]["slippage"] is None, "guessed")
    for content, text in ((b"", "again.jsonl: holds no record of a run: it is empty"), (DAY.encode(), "again.jsonl:1: is no line of the record"),
                          (lines[0] + b"{}\n" + lines[1], ":2: is no line of the record"), (lines[0] + lines[2], ":2: sequence is 3 and not 2"),
                          (record + record, f":{len(lines) + 1}: sequence is 1 and not {len(lines) + 1}"), (lines[0].replace(b'"record":2', b'"record":3'), "record of version 3")):
        status, err, out = report(program, content)
        require(status == 2 and text in err and not out, f"{text}: {status} {err}")


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
    """Ctrl-C, a service manager's way to stop a process, and a terminal that hangs up: OnShutdown runs, and the summary is printed."""
    for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP):
        process = start_slow_run(program, stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        try:
            first = process.stdout.readline()
            require(first == b"20240108:14:30:00.000  bid 99 ask 101\n", repr(first))
            out, err = interrupt(process, number)
        finally:
            process.kill()
        require(process.returncode == 0, f"exit status {process.returncode}")
        check_text("standard output", out.decode(), ["20240108:14:30:00.000  bye\n", END + "interrupted\n", "\nevents      1 quote\n"])
        check_text("standard error", err.decode(), ["--- speed"])
        require([entry["type"] for entry in read_record("slow.jsonl")] ==
                ["run", "timerStart", "jobStarted", "log", "log", "jobStopped", "end"], "the record is not whole")


# Inside one call of a library function, which nothing interrupts.
ENDLESS_MATCH = "local a = ('a'):rep(40) return a:find(('a?'):rep(40) .. a .. 'a')"
KEEPER = """\
function OnInit() s = job:getDataStore("s", true) job:getProduct("A"):subscribePrice() end
function OnPrice(price) for i = 1, 2000 do job:logText("bid " .. price.bidPrice) end end
function OnShutdown() s:add("bye") end
"""


def test_output_that_closes_or_may_not_grow(program):
    """OnShutdown runs, and what it leaves in the store is saved."""
    with open("keeper.lua", "w") as file:
        file.write(KEEPER)
    command = [program, "run", "keeper.lua", "--data", "day.csv", "--store"]
    process = subprocess.Popen([*command, "closed"], stdout=subprocess.PIPE, stderr=subprocess.PIPE)
    process.stdout.close()
    err = process.stderr.read().decode()
    require(process.wait(timeout=TIMEOUT) == 2, f"exit status {process.returncode}")
    check_text("standard error", err, ["algoserver run: standard output cannot be written\n"])
    limit = lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (40000, 40000))
    with open("grown.txt", "w") as out:
        full = subprocess.run([*command, "full"], stdout=out, stderr=subprocess.PIPE, preexec_fn=limit, timeout=TIMEOUT)
    require(full.returncode == 2, f"exit status {full.returncode}")
    for directory in ("closed", "full"):
        require(rows_of_store(directory) == 1, f"{directory}: nothing is saved")


def test_a_callback_that_does_not_return(program):
    """What it logged is shown while it hangs, and where a Ctrl-C cannot stop it, it tells that another one kills."""
    with open("hang.lua", "w") as file:
        file.write("function OnInit() job:logText('before') " + ENDLESS_MATCH + " end\n")
    process = subprocess.Popen([program, "run", "hang.lua", "--data", "day.csv"], stdout=subprocess.PIPE,
                               stderr=subprocess.PIPE)
    try:
        require(process.stdout.readline() == b"20240108:14:30:00.000  before\n", "the log is not flushed")
        process.send_signal(signal.SIGINT)
        told = process.stderr.readline().decode()
        require("OnInit has not returned for " in told and told.endswith(" s; Ctrl-C again to kill\n"), told)
        process.send_signal(signal.SIGINT)
        require(process.wait(timeout=TIMEOUT) == -signal.SIGINT, f"exit status {process.returncode}")
    finally:
        process.kill()


HARMFUL = (  # what OnPrice does, or the whole script; the status, and what standard error tells
    ("while true do end", 1, "main.lua:1: the main part of the script has run for 1 s\n"),
    ("OnPrice: while true do pcall(function() while true do end end) end", 1, "script.lua:2: OnPrice has run for 1 s\n"),
    ("OnPrice: job:shutdown() end function OnShutdown() while true do end", 1, ".lua:2: OnShutdown has run for 1 s\n"),
    ("OnPrice: " + ENDLESS_MATCH, 1, "script.lua:2: OnPrice has run for 1 s in string.find; the run ended there\n"),
    # All with one hash: where they differ Lua does not look.
    ("OnPrice: local t, x = {}, ('x'):rep(970) for i = 1, 1e9 do t[i] = x .. ('%08d'):format(i) .. ('x'):rep(22) end", 1, " has run for 1 s"),
    ("OnPrice: local x = ('x'):rep(1e6) x:find(('x?'):rep(1e6))", 1, ":2: limit of 65536 bytes of a pattern exceeded\n"),
    ("OnPrice: job:logText(('x'):rep(2 ^ 22))", 1, "limit of 1048576 bytes of a log line exceeded\n"),
    ("os.execute('touch executed') function OnInit() end", 1, "attempt to call field 'execute' (a nil value)\n"),
    ("os.exit(0) function OnInit() end", 1, "attempt to call field 'exit' (a nil value)\n"),
    ("getmetatable(newproxy(true)).__gc = function() while true do end end function OnInit() end", 1, "'newproxy' (a nil value)\n"),
)


def test_harmful_scripts_lose_their_run_alone(program):
    """Each ends by itself, with the place and the reason, and leaves a record that can be read."""
    runs = []
    for number, (script, status, text) in enumerate(HARMFUL):
        os.mkdir(f"harm{number}")
        if script.startswith("OnPrice: "):
            script = "function OnInit() job:getProduct('A'):subscribePrice() end\nfunction OnPrice() " + script[9:] + " end\n"
        with open(f"harm{number}/{'script' if 'OnPrice' in script else 'main'}.lua", "w") as file:
            file.write(script)
        command = [program, "run", file.name, "--data", "day.csv", "--sandbox", "strict", "--callback-limit", "1", "--record", f"harm{number}/record.jsonl"]
        runs.append((script, status, text, subprocess.Popen(command, stdout=subprocess.PIPE, stderr=subprocess.PIPE)))
    for number, (script, status, text, process) in enumerate(runs):
        err = process.communicate(timeout=TIMEOUT)[1].decode()
        require(process.returncode == status and text in err, f"{script}: {process.returncode} {err}")
        require(read_record(f"harm{number}/record.jsonl")[-1]["type"] == "end", f"{script}: the record has no end")
    require(not os.path.exists("executed"), "a program was run")


def test_the_process_of_a_strict_run_ends(program):
    """By a signal to the run, or to the process of the scripts: what was complete is there, and where it was is told."""
    script = ("function OnInit() s = job:getDataStore('s', true) s:add('x') job:getProduct('A'):subscribePrice() end\n"
              "function OnPrice() n = (n or 0) + 1 job:logText('price ' .. n)\nif n == 2 then " + ENDLESS_MATCH + " end end\n")
    with open("stuck.lua", "w") as file:
        file.write(script)
    for number, toChild, text in (
            (signal.SIGTERM, False, "stuck.lua:3: OnPrice has run for "), (signal.SIGHUP, False, " in string.find; the run ended there\n"),
            (signal.SIGSEGV, True, "stuck.lua:3: OnPrice in string.find: the run was ended by signal 11 (Segmentation fault)\n"),
            (signal.SIGKILL, True, "the run was ended by signal 9 (Killed)\n")):
        process = subprocess.Popen([program, "run", "stuck.lua", "--data", "day.csv", "--sandbox", "strict", "--record", "stuck.jsonl",
                                    "--json", "stuck.json", "--store", "stuck"], stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                                   env=os.environ | {"ASAN_OPTIONS": "handle_segv=0"})
        try:
            first = process.stdout.readline() + process.stdout.readline()  # handed on once it is stuck
            pid = process.pid
            if toChild:
                with open(f"/proc/{pid}/task/{pid}/children") as children:
                    pid = int(children.read())
            began = time.monotonic()
            os.kill(pid, number)
            err = process.communicate(timeout=TIMEOUT)[1].decode()
            took = time.monotonic() - began
        finally:
            process.kill()
        require(process.returncode == 1 and text in err and "stuck.json: is not written\n" in err, f"{number}: {process.returncode} {err}")
        require(b"price 1\n" in first and b"price 2\n" in first and took < 2.5, f"{number}: {first} {took} s")
        require([line["type"] for line in read_record("stuck.jsonl")][-3:] == ["log", "log", "end"], "the record is not finished")
        report = execute(program, ["report", "stuck.jsonl", "--json", "-"])
        require(report.returncode == 0 and json.loads(report.stdout)["run"]["end"] + "\n" in err, report.stderr.decode())
        require(rows_of_store("stuck") == 0, "more than the last save")


def test_strict_gives_the_same_bytes(program):
    """Of what the examples print, record and come to."""
    for name, arguments, status, out, _ in CASES:
        if not out or not out[0].startswith("<") or not arguments.startswith("run ") or "--watch" in arguments:
            continue
        told = []
        for sandbox in ("base", "strict"):
            options = arguments.replace("--store ", f"--store {sandbox}_").split() + ["--sandbox", sandbox]
            result = execute(program, options + ["--record", "same.jsonl", "--json", "same.json"])
            with open("same.jsonl", "rb") as record, open("same.json", "rb") as document:
                told.append((result.returncode, result.stdout, record.read(), document.read()))
        require(told[0] == told[1], f"{name}: {told}")


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
    check_text("standard output", out, ["  bye\n", END + "interrupted\n"])


def test_progress_on_a_terminal(program):
    """A line that is drawn over itself, stays one line at any width, and is erased at the end."""
    for columns, shown in ((20, b"100 %, 0 s left"), (40, b"=] 100 %, 0 s left"), (200, b"=] 100 %  1 event, ")):
        check_progress(program, columns, shown)


def check_progress(program, columns, shown):
    terminal, other = pty.openpty()
    fcntl.ioctl(other, termios.TIOCSWINSZ, struct.pack("4H", 24, columns, 0, 0))
    process = start_slow_run(program, stdout=subprocess.PIPE, stderr=other)
    os.close(other)
    drawn = b""
    try:
        deadline = time.monotonic() + TIMEOUT
        while b"left" not in drawn and time.monotonic() < deadline:
            drawn += os.read(terminal, 4096)
        lines = [line for line in drawn.split(b"\r\033[K") if b"left" in line]
        require(shown in lines[0] and all(len(line) < columns for line in lines) and b"\n" not in drawn, repr(drawn))
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
