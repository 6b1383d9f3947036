"""The roads that tools/measure_road times and tools/instruction_counts counts: runs of algoserver over data made here, the
same on every machine."""

import os
import random
import subprocess

TOP = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..")
BARE = os.path.join(TOP, "bench", "bare")
MAKER = os.path.join(TOP, "examples", "market_maker.lua")


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
