#!/usr/bin/env python3
"""Sweeps on a real Slurm of one node: what comes out is what one machine makes, whatever happens to tasks, files and the node on the way."""

import argparse
import concurrent.futures
import contextlib
import glob
import json
import os
import re
import shutil
import signal
import sqlite3
import subprocess
import sys
import tempfile
import time
import traceback

from slurm import Impossible, Slurm, wait_for

CORES = 8
MAX_ARRAY = 3  # so that sweeps of more slices need several arrays
PATIENCE = 150  # seconds
SWEEP = ("script.lua", "--data", "data.csv", "--plan", "plan.toml", "--callback-limit=100")
LOOPS = 2.3e8  # that a script makes in a second, about


def require(condition, message):
    if not condition:
        raise AssertionError(message)


def read_results(path):
    """What must be the same however a sweep was made: all but times, memory and the command."""
    with contextlib.closing(sqlite3.connect(path)) as database:
        columns = [name for _, name, *_ in database.execute("PRAGMA table_info(runs)") if name not in ("seconds", "memory", "calendar")]
        quoted = ", ".join(f'"{name}"' for name in columns)
        return [database.execute(f"SELECT {what} ORDER BY 1, 2").fetchall()
                for what in ("* FROM points", "* FROM parts", f"{quoted} FROM runs", "* FROM facts WHERE name != 'command'")]


def read_times(folder):
    """What each run took, by slice, of the slices that nobody holds: one that is made again takes another time."""
    times = {}
    for path in glob.glob(os.path.join(glob.escape(folder), "slice-*.db")):
        with contextlib.closing(sqlite3.connect(path)) as database, contextlib.suppress(sqlite3.OperationalError):
            name = os.path.basename(path)
            times |= {(name, *key): seconds for *key, seconds in database.execute("SELECT point, part, seconds FROM runs")}
    return times


class Case:
    """A sweep in a folder of its own: `runs` of `seconds` each."""

    def __init__(self, cluster, program, folder, runs, seconds):
        self.cluster, self.program, self.folder = cluster, program, folder
        self.place = os.path.join(folder, "sweep.db.slurm")
        os.makedirs(folder)
        self.write_plan(runs)
        files = {"script.lua": f"function OnInit()\n  local x = job:getParameter('x') for i = 1, {int(seconds * LOOPS)} do end\nend\n",
                 "data.csv": "time,product,bid,bidVolume,ask,askVolume,last,lastVolume,side\n20240108:14:30:00,A,99,5,101,5,,,\n"}
        for name, text in files.items():
            with open(os.path.join(folder, name), "w") as file:
                file.write(text)

    def write_plan(self, runs):
        with open(os.path.join(self.folder, "plan.toml"), "w") as file:
            file.write(f'[parameters]\nx = "1:{runs}:1"\n')

    def call(self, *arguments, status=0, environment=None):
        result = subprocess.run([self.program, "sweep", *arguments], cwd=self.folder, env=environment or self.cluster.environment, capture_output=True, text=True,
                                timeout=PATIENCE)
        require(result.returncode == status, f"{arguments}: status {result.returncode}: {result.stdout}{result.stderr}")
        return result.stdout + result.stderr

    def submit(self, *options, status=0, environment=None):
        return self.call(*SWEEP, "--slurm", *options, status=status, environment=environment)

    def status(self):
        return json.loads(self.call("status", self.place, "--json"))

    def wait_until(self, condition, what):
        def look():
            status = self.status()
            return status if condition(status) else None
        try:
            return wait_for(look, PATIENCE, what)
        except TimeoutError as error:
            raise AssertionError(f"{error}: {self.status()}") from error

    def wait_for_end(self):
        return self.wait_until(lambda status: not status["jobs"] and not status["merge"]["job"], "the end of its jobs")

    def get_log(self):
        return "".join(open(name, errors="replace").read() for name in glob.glob(os.path.join(glob.escape(self.place), "*.log")))

    def check_results(self):
        status = self.wait_for_end()
        require(status["merge"]["state"] == "done", status)
        require("results are in" in status["next"], status)
        alone = os.path.join(self.folder, "alone.db")
        with contextlib.suppress(FileNotFoundError):
            os.remove(alone)
        self.call(*SWEEP, "-o", alone)
        require(read_results(os.path.join(self.folder, "sweep.db")) == read_results(alone), "the results are others than those of one machine")

    def find_sweep(self, slice_):
        """The process that makes a slice, once some slice has made a run."""
        name = os.path.join(self.place, f"slice-{slice_}.db").encode()

        def look():
            for path in glob.glob("/proc/[0-9]*/cmdline"):
                with contextlib.suppress(OSError):
                    process = int(path.split("/")[2])
                    if is_sweep(process) and not is_sweep(get_parent(process)):
                        return process
            return None

        def is_sweep(process):
            with open(f"/proc/{process}/cmdline", "rb") as file:
                words = file.read().split(b"\0")
            return name in words and b"--slice" in words

        process = wait_for(look, PATIENCE, f"a process that makes slice {slice_}")
        wait_for(lambda: os.path.exists(name) and os.path.getsize(name) > 0, PATIENCE, "a results file")
        time.sleep(2.5)  # some runs are done by then
        return process


def get_parent(process):
    with open(f"/proc/{process}/stat", "rb") as file:
        return int(file.read().rpartition(b")")[2].split()[1])


def check_whole(case):
    """From the submission to the results, under names that no shell may see; more slices than an array may have."""
    out = case.submit("--slices=7", "--time=5", "--throttle=2", "--slurm-arg=--comment=a b$x")
    require(re.findall(r"slices (\S+) of 7", out) == ["0-2", "3-5", "6"], out)
    case.check_results()
    require("all is done" in case.submit("--slices=7"), "it is submitted again")
    status = case.status()
    require(status["slices"] == {"total": 7, "done": 7, "running": 0, "pending": 0, "failed": 0, "lost": 0}, status)


def check_killed(case):
    """A sweep killed, a task killed, a results file lost: these slices alone are made again, and what they had done is kept."""
    case.submit("--slices=5")
    os.kill(case.find_sweep(1), signal.SIGKILL)
    sweep = case.find_sweep(2)
    os.kill(get_parent(sweep), signal.SIGKILL)
    status = case.wait_for_end()
    require((status["slices"]["failed"], status["slices"]["lost"], status["missing"], status["merge"]["state"]) == (1, 1, [1, 2], "failed"), status)
    require(status["failure"] == "ended by signal 9" and "same command again" in status["next"], status)
    require("2 of 5 slices are missing: 1-2" in case.call("merge", case.place, status=2), "it merges what is not there")
    os.remove(os.path.join(case.place, "slice-3.db"))
    before = read_times(case.place)
    require({name for name, *_ in before} >= {f"slice-{slice_}.db" for slice_ in (0, 2, 4)}, f"nothing was kept: {before}")
    out = case.submit("--slices=4")
    require(re.findall(r"slices (\S+) of (\d+)", out) == [("1-2", "5"), ("3", "5")], out)
    case.check_results()
    require(before.items() <= read_times(case.place).items(), "a run was made twice")


def check_late(case):
    """A task whose time is over keeps what it has done, and Slurm starts it again."""
    case.submit("--slices=1", "--time=1")
    case.check_results()
    require("goes on later" in case.get_log(), "its time was not over: " + case.get_log())


def check_cancelled(case):
    case.submit("--slices=2")
    case.find_sweep(1)
    require("0-1 of 2" not in case.submit(), "what is in the queue is submitted again")
    require("cancelled" in case.call("cancel", case.place), "nothing is cancelled")
    status = case.wait_for_end()
    require(status["slices"]["done"] == 0 and status["merge"]["state"] == "none", status)
    require("no job" in case.call("cancel", case.place), "there is something to cancel")
    before = read_times(case.place)
    require(before, "nothing was kept")
    require(re.findall(r"slices (\S+) of", case.submit()) == ["0-1"], "it is not submitted again")
    case.check_results()
    require(before.items() <= read_times(case.place).items(), "a run was made twice")


def check_refusals(case):
    """Whatever cannot be done is told with what helps."""
    tools = os.path.join(case.folder, "tools")
    os.mkdir(tools)
    os.symlink(sys.executable, os.path.join(tools, "python3"))
    require("no scontrol in PATH" in case.submit(status=2, environment=case.cluster.environment | {"PATH": tools}), "a machine without Slurm")
    require("invalid partition" in case.submit("--partition=nowhere", status=2).lower(), "a partition that is not there")
    require("cannot be written" in case.submit("--slurm-dir=plan.toml/x", status=2), "no place for the folder")
    require("with a \\ in its path" in case.submit("--slurm-dir=a\\b", status=2), "a folder that Slurm cannot write to")
    require("no sweep was submitted" in case.call("status", "elsewhere", status=2), "an empty folder")
    # What failed so far has left a folder with which it goes on.
    case.submit()
    case.check_results()
    require("another sweep" in case.submit("-o", "other.db", "--slurm-dir=sweep.db.slurm", status=2), "another sweep in the folder")
    case.write_plan(8)
    case.submit("--restart", "--slices=3")
    case.check_results()
    require(case.status()["slices"]["total"] == 3, "it does not begin anew")


def check_node(case):
    """The node goes down and comes back."""
    case.submit("--slices=2")
    case.find_sweep(1)
    node = case.cluster.run("sinfo", "-h", "-o", "%n").strip()
    case.cluster.run("scontrol", "update", f"nodename={node}", "state=down", "reason=test")

    def come_back():
        with contextlib.suppress(subprocess.CalledProcessError):  # it may have come back by itself
            case.cluster.run("scontrol", "update", f"nodename={node}", "state=resume")
        return case.cluster.is_up()

    wait_for(come_back, PATIENCE, "the node")
    case.check_results()


# Each with its runs, and the seconds of one. What changes the node comes by itself, at the end.
CASES = [(check_whole, 20, 0.1), (check_killed, 40, 0.8), (check_late, 12, 4), (check_cancelled, 40, 0.5), (check_refusals, 6, 0.1)]
ALONE = [(check_node, 10, 0.5)]
HOSTILE = "it's \"so\" $HOME `x` 100%a é; *"


def run_case(cluster, program, folder, check, runs, seconds):
    case = Case(cluster, program, os.path.join(folder, check.__name__, HOSTILE), runs, seconds)
    try:
        check(case)
    except Exception as error:
        told = "" if isinstance(error, AssertionError) else traceback.format_exc()
        return f"FAILED {check.__name__}: {error}\n{told}{case.get_log()}"
    return None


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("program")
    parser.add_argument("names", nargs="*", help="only cases whose name holds one of them")
    parser.add_argument("--keep", action="store_true", help="leave all files there")
    options = parser.parse_intermixed_args()
    program = os.path.abspath(options.program)
    chosen = [[case for case in cases if not options.names or any(name in case[0].__name__ for name in options.names)] for cases in (CASES, ALONE)]
    folder = tempfile.mkdtemp()
    failed = []
    try:
        with Slurm(os.path.join(folder, "slurm"), cpus=CORES, max_array=MAX_ARRAY) as cluster, concurrent.futures.ThreadPoolExecutor(len(CASES)) as pool:
            for cases in chosen:
                results = pool.map(lambda case: run_case(cluster, program, folder, *case), cases)
                for case, fault in zip(cases, results):
                    print(fault or f"{case[0].__name__}: good", flush=True)
                    failed += [fault] if fault else []
    except Impossible as error:
        print(f"no Slurm can be started here: {error}")
        return 1
    finally:
        if options.keep:
            print(f"kept: {folder}")
        else:
            shutil.rmtree(folder, ignore_errors=True)
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
