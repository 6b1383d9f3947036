#!/usr/bin/env python3
"""Edits the files of algoserver run --watch as editors do, and reads what it says.

    run_watch_tests.py ALGOSERVER

Prints what is wrong; the exit status is 1 when something is.
"""
import os
import pathlib
import queue
import re
import signal
import subprocess
import sys
import tempfile
import threading
import time

TIMEOUT = 60
END = "--- watching"
DATA = "time,product,bid,bidVolume,ask,askVolume,last,lastVolume,side\n" + "".join(
    f"20240108:14:30:0{second},A,{99 + second},5,{100 + second},5,,,\n" for second in range(6))
SCRIPT = """function OnInit()
  product = job:getProduct("A")
  product:subscribePrice()
end
function OnPrice(price)
  count = (count or 0) + 1
  local side = count == 1 and "BUY" or count == 4 and "SELL"
  if side then product:createOrder{side = side, type = "MARKET"}:work{volume = LOTS} end
end
"""
# What is done to the folder, and what the runs say that come of it; - is what they must not say.
STEPS = (
    ("a save", lambda: write("trade.lua", SCRIPT.replace("LOTS", "2")),
     (r"run \d+: trade.lua has changed", r"run \d+ against run 1", r"Net profit +2 +4 +\+2\n", r"-\nRound trips")),
    ("a save by rename, in a burst", lambda: [exchange("trade.lua", SCRIPT.replace("LOTS", "2") + "\n" * n) for n in range(5)],
     (r"run \d+: trade.lua has changed", r"\nno change\n")),
    ("a broken script", lambda: write("trade.lua", "x = = 2\n"),
     (r"run \d+.*\nfailed: trade.lua:1: unexpected symbol near '='",)),
    ("a missing script", lambda: os.rename("trade.lua", "away.lua"), (r"\nfailed: trade.lua: ", "-against")),
    ("a script that loops, and the save that ends it",
     lambda: (write("trade.lua", "while true do end\n"), time.sleep(1), write("trade.lua", SCRIPT.replace("LOTS", "1"))),
     (r"run \d+ was ended", r"run \d+: trade.lua has changed", r"Net profit +4 +2 +-2\n")),
    ("a row of the data", lambda: write("day.csv", DATA + "20240108:14:30:06,A,90,5,91,5,,,\n"), (r"run \d+: day.csv", r"Time in the market +60.0% +50.0% +-10.0%\n")),
    ("the folder of a module", lambda: (os.rename("lib", "gone"), time.sleep(1), os.rename("gone", "lib")),
     (r"run \d+: lib", r"failed: ", r"run \d+: lib", "no change")),
    ("files of no interest", lambda: (write("other.lua", ""), write("trade.lua", SCRIPT.replace("LOTS", "3"))),
     (r"run \d+: trade.lua", "-other.lua")),
)


def write(path, text):
    pathlib.Path(path).write_text(text)


def exchange(path, text):
    write(path + ".new", text)
    os.rename(path + ".new", path)


class Watch:
    """The command, and what it has printed on either stream."""

    def __init__(self, *command):
        self.process = subprocess.Popen(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
        self.lines = queue.Queue()
        threading.Thread(target=lambda: [self.lines.put(line) for line in self.process.stdout], daemon=True).start()

    def read(self, *wanted):
        """Up to the end of the run by which all that was said, or of what comes; a busy machine may take a burst for two."""
        text = ""
        try:
            while not text.rpartition("\n--")[2].startswith(END[2:]) or not all(re.search(part, text) for part in wanted):
                text += self.lines.get(timeout=TIMEOUT)
        except queue.Empty:
            pass
        return text

    def end(self):
        self.process.send_signal(signal.SIGINT)
        return self.process.wait(TIMEOUT)


def check_steps(program):
    write("trade.lua", SCRIPT.replace("LOTS", "1"))
    write("day.csv", DATA)
    os.mkdir("lib")
    write("lib/lib.lua", "")
    watch = Watch(program, "run", "--watch", "trade.lua", "--module", "lib/lib.lua", "--data", "day.csv", "--trades", "trades.csv")
    watch.read()
    for name, change, expected in STEPS:
        change()
        text = watch.read(*(part for part in expected if part[0] != "-"))
        for part in expected:
            if bool(re.search(part.lstrip("-"), text)) == part.startswith("-"):
                yield f"{name}: {part!r}:\n{text}"
    write("trade.lua", "broken(\n")
    watch.read("failed: ")
    if (status := watch.end()) != 1:
        yield f"after a failed run the status is {status}"


def check_end(program):
    """Ctrl-C during a run ends that one properly, in either sandbox, and its status is the command's."""
    for sandbox in ("base", "strict"):
        write("slow.lua", 'function OnInit() job:getProduct("A"):subscribePrice() end\nfunction OnPrice() end\n'
                          'function OnShutdown() job:logText("bye") end\n')
        watch = Watch(program, "run", "--watch", "slow.lua", "--data", "day.csv", "--speed", "0.1", "--sandbox", sandbox)
        time.sleep(2)
        status = watch.end()
        text = "".join(iter(lambda: watch.lines.get(timeout=TIMEOUT) if not watch.lines.empty() else "", ""))
        if status != 0 or "bye" not in text or "--- watching" in text:
            yield f"{sandbox}: status {status}:\n{text}"


def main():
    program = os.path.abspath(sys.argv[1])
    with tempfile.TemporaryDirectory() as folder:
        os.chdir(folder)
        faults = [*check_steps(program), *check_end(program)]
        os.chdir("/")
    for fault in faults:
        print(fault)
    return 1 if faults else 0


sys.exit(main())
