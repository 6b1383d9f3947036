"""The roads that tools/measure_road and tools/bench_check time and tools/instruction_counts counts: runs of algoserver over
data made here, the same on every machine."""

import os
import random
import subprocess
import sys
import tempfile
import time

TOP = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..")
BARE = os.path.join(TOP, "bench", "bare")
MAKER = os.path.join(TOP, "examples", "market_maker.lua")
BARS = 1_000_000
JOBS = {"ten_jobs": 10, "hundred_jobs": 100}
PACKERS = {"gz": "gzip", "zst": "zstd", "xz": "xz", "bz2": "bzip2"}
DEAF = "function OnInit() job:getProduct(job:getParameter('product')) end\n"
SAYS = ("quotes ", "crossings ", "orders ")
AGREE = ("quotes", "bars", "orders")  # of these the floor runs the same script


def script(name):
    return os.path.join(BARE, name + ".lua")


def write_bars(path, count):
    chance = random.Random(1)
    price = 400  # in quarters, whose sums are exact, so that all who add them up see the same crossings
    with open(path, "w") as file:
        file.write("time,product,open,high,low,close,volume\n")
        for minute in range(1, count + 1):
            close = max(10, price + chance.randint(-10, 10))
            high = max(price, close) + chance.randint(0, 5)
            low = min(price, close) - chance.randint(0, 5)
            file.write(f"{1_577_836_800 + 60 * minute}000000000,SIM,{price / 4:.2f},{high / 4:.2f},{low / 4:.2f},"
                       f"{close / 4:.2f},{chance.randint(1, 5000)}\n")
            price = close


def cut(source, path, rows):
    """The first rows of a file, with its header."""
    with open(source) as whole, open(path, "w") as part:
        for _ in range(rows + 1):
            line = whole.readline()
            if not line:
                return
            part.write(line)


def generate(program, kind, path, seconds, rate=60):
    subprocess.run([program, "generate", "--kind", kind, "--rate", str(rate), "--duration", str(seconds), "-o", path], check=True, stderr=subprocess.DEVNULL)


def count_rows(path):
    with open(path, "rb") as file:
        return sum(block.count(b"\n") for block in iter(lambda: file.read(1 << 20), b"")) - 1


def run_once(command):
    """Seconds, KiB at the peak, and what the script's last words count, if it says so."""
    with tempfile.TemporaryFile("w+") as errors:
        begin = time.perf_counter()
        process = subprocess.Popen(command, stdout=subprocess.PIPE, stderr=errors, text=True)
        text = process.stdout.read()
        _, status, usage = os.wait4(process.pid, 0)
        seconds = time.perf_counter() - begin
        process.returncode = os.waitstatus_to_exitcode(status)
        if process.returncode != 0:
            errors.seek(0)
            sys.exit(f"{' '.join(command)} failed: {errors.read().strip()}")
    said = [word + line.split(word)[1].split()[0] for line in text.splitlines() for word in SAYS if line.split("  ")[-1].startswith(word)]
    return seconds, usage.ru_maxrss, said[:1]


def time_silent(command):
    begin = time.perf_counter()
    subprocess.run(command, stdout=subprocess.DEVNULL, check=True)
    return time.perf_counter() - begin


class Roads:
    """What is run for each, over data that are made in a folder; book: a recorded one in place of a made one."""

    def __init__(self, build, folder, book=None):
        self.folder, self.recorded = folder, book
        self.program = f"{build}/apps/algoserver/algoserver"
        self.bare = f"{build}/bench/nx_bare_run"

    def path(self, name):
        return os.path.join(self.folder, name)

    def write(self, name, text):
        with open(self.path(name), "w") as file:
            file.write(text)
        return self.path(name)

    def run(self, *arguments):
        return [self.program, "run", *arguments]

    def bars(self):
        if not os.path.exists(self.path("bars.csv")):
            write_bars(self.path("bars.csv"), BARS)
        return self.path("bars.csv")

    def quotes(self):
        if not os.path.exists(self.path("quotes.csv")):
            generate(self.program, "quotes", self.path("quotes.csv"), 900, 6000)
        return self.path("quotes.csv")

    def book(self):
        if self.recorded:
            depth, quotes, products, product = self.recorded
            return [depth, quotes], ["--products", products, "--param", f"product={product}"]
        if not os.path.exists(self.path("depth.csv")):
            generate(self.program, "depth", self.path("depth.csv"), 900, 600)
        return [self.path("depth.csv")], ["--param", "product=SIM"]

    def packed(self, packer):
        plain = self.quotes()
        with open(f"{plain}.{packer}", "wb") as file:
            subprocess.run([PACKERS[packer], "-c", plain], stdout=file, check=True)
        return f"{plain}.{packer}"

    def get(self, name):
        """Its rows, its floor, and itself."""
        if name in ("quotes", "bars", "orders"):
            data = self.quotes() if name == "quotes" else self.bars()
            algorithm = script("crossover" if name == "bars" else name)
            return count_rows(data), [self.bare, data, algorithm], self.run(algorithm, "--data", data)
        if name == "depth":
            data, arguments = self.book()
            return (sum(map(count_rows, data)), self.run(self.write("deaf.lua", DEAF), "--data", *data, *arguments), self.run(MAKER, "--data", *data, *arguments))
        data = self.quotes()
        if name in JOBS:
            jobs = [script("quotes")] * JOBS[name] + [argument for number in range(JOBS[name]) for argument in ("--name", f"job{number}")]
            return count_rows(data), self.run(script("quotes"), "--data", data), self.run(*jobs, "--data", data)
        return count_rows(data), self.run(script("quotes"), "--data", data), self.run(script("quotes"), "--data", self.packed(name))

    def race(self, name, rounds):
        """Its rows, the times of "floor" and "own" in turns, and the peak of the latter in MiB. Of packed data also those of "unpacker", the packer's own
        program: nothing that reads them is faster."""
        rows, floor, own = self.get(name)
        unpacker = [PACKERS[name], "-dc", own[-1]] if name in PACKERS else None
        times = {"floor": [], "own": []} | ({"unpacker": []} if unpacker else {})
        peak, said = 0, set()
        for _ in range(rounds):
            for which, command in (("floor", floor), ("own", own)):
                seconds, memory, words = run_once(command)
                times[which].append(seconds)
                said.update(words)
                peak = max(peak, memory) if which == "own" else peak
            if unpacker:
                times["unpacker"].append(time_silent(unpacker))
        if name in AGREE and len(said) != 1:
            sys.exit(f"{name}: they do not agree: {', '.join(sorted(said))}")
        return rows, times, peak / 1024
