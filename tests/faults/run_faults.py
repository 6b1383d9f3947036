#!/usr/bin/env python3
"""Makes each fault of a table at every step of a command in turn, and checks what is left.

Whatever happens, the program ends by itself with a text and a status that is not 0 when something is lost; the store holds a complete save;
results are whole or absent, the record has whole lines; what is told up to the fault is what a run without it tells.
"""

import argparse
import concurrent.futures
import contextlib
import gzip
import json
import os
import re
import shutil
import signal
import sqlite3
import subprocess
import sys
import tempfile

from rows import ROWS

SCRIPT = """\
function OnInit()
  store, product, count = job:getDataStore("s", true), job:getProduct("A"), 0
  product:subscribePrice()
end
function OnPrice(price)
  count = count + 1
  job:logText("price " .. count .. string.rep("x", 2000))
  store:add(tostring(count))
  if count % 3 == 0 then product:createOrder{side = count % 2 == 0 and "BUY" or "SELL", type = "MARKET"}:work{volume = 1} end
end
"""
# Takes no notice of errors.
DEAF = SCRIPT.replace("OnPrice(price)", "OnPrice(...) pcall(follow, ...) end\nfunction follow(price)")
DAY = "time,product,bid,bidVolume,ask,askVolume,last,lastVolume,side\n" + "".join(
    f"20240108:14:30:{second:02},A,{99 + second % 4},5,{101 + second % 4},5,,,\n" for second in range(40))
# The results of a command: a file, and what of it is no part of the result.
RUN = "run trade.lua --data day.csv.gz --store store --store-every 5"
COMMANDS = {
    "run": (RUN + " --record run.jsonl --json run.json --report run.html --trades trades.csv --equity equity.csv",
            ["run.json", "run.html", "trades.csv", "equity.csv"]),
    "deaf": ("run deaf.lua --on-error continue --data day.csv.gz --store store --record run.jsonl --json run.json --trades trades.csv", ["run.json", "trades.csv"]),
    "envelope": ("run trade.lua --data day.csv.gz --store store --envelope --json run.json", ["run.json"]),
    "check": ("check trade.lua --json", []),
    "report": ("report whole.jsonl --json again.json -o again.html", ["again.json", "again.html"]),
    "import": ("import trades_of_b.csv -o set", ["set/B.trades.csv.zst", "set/data.toml"]),
    "new": ("new mine", []),
    "generate": ("generate --duration 600 --output made.csv", ["made.csv"]),
}
TIMEOUT = 60


class Failed(Exception):
    pass


def require(condition, message):
    if not condition:
        raise Failed(message)


def read(path):
    with contextlib.suppress(FileNotFoundError), open(path, "rb") as file:
        return re.sub(rb'"meanNanoseconds":[0-9.e+]+', b"", file.read())
    return b""


def read_store(folder):
    """The texts of its rows, in their order; SQLite finds the database whole."""
    path = os.path.join(folder, "stores.sqlite")
    if not os.path.exists(path):
        return []
    with contextlib.closing(sqlite3.connect(path)) as database:
        require(database.execute("PRAGMA integrity_check").fetchall() == [("ok",)], "the store is damaged")
        if not database.execute("SELECT 1 FROM sqlite_schema").fetchone():
            return []
        return [value for (value,) in database.execute("SELECT value FROM columns ORDER BY row")]


def is_begin(part, whole):
    return whole[:len(part)] == part


def get_log(out):
    return re.findall(rb"^2024.*\n", out, re.MULTILINE)


def is_stopped(process):
    """Waits until it stops, or ends."""
    event = os.waitid(os.P_PID, process.pid, os.WSTOPPED | os.WEXITED | os.WNOWAIT)
    return event.si_code == os.CLD_STOPPED


def remove(_, folder):
    shutil.rmtree(os.path.join(folder, "store"))


def move(_, folder):
    os.rename(os.path.join(folder, "store"), os.path.join(folder, "elsewhere"))


def replace(bench, folder):
    move(bench, folder)
    shutil.copytree(os.path.join(bench.inputs, "store"), os.path.join(folder, "store"))


def start_another(bench, folder):
    with tempfile.TemporaryFile() as out:
        result = subprocess.run([bench.program, *RUN.split()], cwd=folder, stdout=out, stderr=subprocess.PIPE, timeout=TIMEOUT)
    require(result.returncode == 2 and b"these data stores are in use" in result.stderr, f"a second server runs: {result.stderr}")


# What is done while the program is stopped at a step.
ACTS = {"removed": remove, "moved": move, "replaced": replace, "shared": start_another}


class Bench:
    """Where a command is run, in a folder of its own each time; what it comes to without a fault."""

    def __init__(self, program, injector, folder):
        self.program, self.injector, self.folder = program, injector, folder
        self.inputs = os.path.join(folder, "inputs")
        os.mkdir(self.inputs)
        for name, content in (("trade.lua", SCRIPT), ("deaf.lua", DEAF), ("trades_of_b.csv", "time,price,size\n" + "".join(
                f"2024-01-08T14:{minute:02}:{second:02}Z,{100 + second % 7},{second + 1}\n" for minute in range(5) for second in range(60)))):
            with open(os.path.join(self.inputs, name), "w") as file:
                file.write(content)
        with gzip.open(os.path.join(self.inputs, "day.csv.gz"), "wt") as file:
            file.write(DAY)
        # What an earlier run has left, which no fault may touch; and its record.
        self.execute(self.inputs, (RUN + " --record whole.jsonl").split())
        self.saved = read_store(os.path.join(self.inputs, "store"))
        require(self.saved, "the run saves nothing")
        os.remove(os.path.join(self.inputs, "out.txt"))
        self.expected = {name: self.run(name)[2] for name in COMMANDS}

    def execute(self, folder, arguments, faults=None, act=None):
        environment = {name: value for name, value in os.environ.items() if not name.startswith("NX_FAULT")}
        if faults:
            environment |= {"LD_PRELOAD": self.injector} | {f"NX_FAULT_{name}": value for name, value in faults.items()}
        with open(os.path.join(folder, "out.txt"), "wb") as out:
            process = subprocess.Popen([self.program, *arguments], cwd=folder, env=environment, stdin=subprocess.DEVNULL, stdout=out,
                                       stderr=subprocess.PIPE)
        try:
            if act and is_stopped(process):
                act(self, folder)
                process.send_signal(signal.SIGCONT)
            err = process.communicate(timeout=TIMEOUT)[1]
        finally:
            process.kill()
        return process.returncode, err.decode(errors="replace")

    def run(self, command, faults=None, act=None):
        """Whether it was struck, its status and standard error, and what is left."""
        arguments, results = COMMANDS[command]
        with tempfile.TemporaryDirectory(dir=self.folder) as folder:
            shutil.copytree(self.inputs, folder, dirs_exist_ok=True)
            status, err = self.execute(folder, arguments.split(), faults, act)
            left = {name: read(os.path.join(folder, name)) for name in ["out.txt", "run.jsonl", *results]}
            left["store"] = read_store(os.path.join(folder, "store"))
            # What an import could not clear away goes with the next one.
            left["set"] = sorted(set(os.listdir(folder + "/set")) - {".import.part"}) if os.path.exists(folder + "/set") else []
            made = os.walk(folder)
            left["new"] = sorted(os.path.join(os.path.relpath(at, folder), name) for at, _, names in made for name in names if "mine" in at or ".algoserver" in at)
            return read(os.path.join(folder, "mark")) == b"1", (status, err), left


def check(bench, row, ending, left):
    status, err = ending
    whole = bench.expected[row.command]
    require("terminate called" not in err and "Assertion" not in err, "it crashes")
    killed = row.deed == f"signal {signal.SIGKILL}"
    require(status in (0, 1, 2) or killed or (row.is_signal and not get_log(left["out.txt"])), "it ends by a signal")
    is_cut = row.is_signal and b"end         interrupted" in left["out.txt"]
    if status == 0 and not is_cut:
        for name, content in left.items():
            require(content == whole[name], f"status 0, and {name} is another")
        return
    is_finding = row.command == "check" and b"not enough memory" in left["out.txt"]  # of the script, which was tried
    require(err or killed or status < 0 or is_finding, "no text")
    # Without memory for good, or killed, it cannot clear away what it began under another name.
    is_cleared = left["new"] in ([], whole["new"]) or (killed or row.lasts) and not any(path.startswith("mine") for path in left["new"])
    require(is_cleared, "a folder is half written")
    require(is_begin(bench.saved, left["store"]) or row.act in ("removed", "moved"), "what was saved is lost")
    require(is_begin(left["store"], whole["store"]), "the store is another")
    require(is_begin(get_log(left["out.txt"]), get_log(whole["out.txt"])), "the log is another")
    check_record(left["run.jsonl"], whole["run.jsonl"])
    for name in COMMANDS[row.command][1]:
        check_result(name, left, whole)


def check_record(record, whole):
    require(not record or record.endswith(b"\n"), "the record ends within a line")
    lines = [json.loads(line) for line in record.splitlines()]
    require([line["sequence"] for line in lines] == list(range(1, len(lines) + 1)), "a line of the record is missing")
    for kind in ("log", "orderFill"):
        told = [[line for line in map(json.loads, text.splitlines()) if line["type"] == kind] for text in (record, whole)]
        require(all({**a, "sequence": 0} == {**b, "sequence": 0} for a, b in zip(*told)), f"the record has another {kind}")


def check_result(name, left, whole):
    content = left[name]
    if not content or content == whole[name]:
        return
    if name.endswith(".json"):
        require(json.loads(content.splitlines()[-1]), f"{name} is not whole")
    elif name.endswith(".html"):
        require(content.endswith(b"</html>\n"), f"{name} is not whole")
    elif name.endswith(".zst"):
        require(False, f"{name} is not whole")
    elif name == "trades.csv" and b'"type":"end"' in left["run.jsonl"]:
        trips = left["run.jsonl"].count(b'"type":"trip"')
        require(content.count(b"\n") == trips + 1, f"{name} is not whole")
    else:
        require(content.endswith(b"\n"), f"{name} is not whole")


def make_steps(every, place):
    """All of them, each that is so many further, or with 0 ever fewer of them."""
    step = 1
    while True:
        yield step
        step = step + every if every else step * 2 + place % 2


def run_row(bench, row, steps, pool):
    """Steps that were struck, and faults found."""
    struck, faults = 0, {}
    is_over = False

    def make(step):
        settings = {"CALLS": row.calls, "PATH": row.path, "AT": str(step), "DO": row.deed, "MARK": "mark"} | ({"LASTS": "1"} if row.lasts else {})
        try:
            was_struck, ending, left = bench.run(row.command, settings, ACTS.get(row.act))
        except (subprocess.TimeoutExpired, Failed, sqlite3.Error) as error:
            return step, True, str(error)
        try:
            check(bench, row, ending, left)
        except (Failed, ValueError) as error:
            return step, was_struck, f"{error}; status {ending[0]}: {ending[1][-600:]}"
        return step, was_struck, None

    while not is_over:
        batch = [next(steps) for _ in range(os.cpu_count())]
        for step, was_struck, fault in pool.map(make, batch):
            struck += was_struck
            is_over = is_over or not was_struck
            if fault:
                faults.setdefault(fault, []).append(step)
    return struck, faults


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("program")
    parser.add_argument("injector")
    parser.add_argument("names", nargs="*", help="only rows whose name holds one of them")
    parser.add_argument("--every", type=int, default=1, help="steps from one to the next; 0 takes 1, 2, 4, 8 and so on")
    parser.add_argument("--no-memory", action="store_true", help="without faults of memory: the allocator is that of a sanitizer")
    parser.add_argument("--no-lua", action="store_true", help="without faults of Lua's memory: LuaJIT itself crashes when there is none while it opens a state")
    options = parser.parse_intermixed_args()
    failed = steps = 0
    with tempfile.TemporaryDirectory() as folder, concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        bench = Bench(os.path.abspath(options.program), os.path.abspath(options.injector), folder)
        for place, row in enumerate(ROWS):
            if options.names and not any(part in row.name for part in options.names):
                continue
            if row.is_memory and options.no_memory:
                print(f"{row.name}: left out, the allocator is that of a sanitizer")
                continue
            if row.calls == "lua" and options.no_lua:
                print(f"{row.name}: left out, the engine itself would crash")
                continue
            struck, faults = run_row(bench, row, make_steps(options.every, place), pool)
            steps += struck
            print(f"{row.name}: {struck} steps, {sum(map(len, faults.values()))} faults", flush=True)
            if not struck:
                faults["it strikes nothing"] = [0]
            for text, places in list(faults.items())[:12]:
                print(f"FAILED {row.name} at {len(places)} steps such as {places[:5]}: {text}\n", flush=True)
            failed += len(faults)
    print(f"{steps} steps, {failed} failed")
    return 1 if failed or not steps else 0


if __name__ == "__main__":
    sys.exit(main())
