#!/usr/bin/env python3
"""tools/verify_run finds nothing in runs of the examples and in random ones, and finds each fault that is planted in a record.

    check_verify_run.py ALGOSERVER [SEEDS]

Prints what is wrong; the exit status is 1 when something is. SEEDS: how many rounds of the random runs, 1 without it.
"""
import concurrent.futures
import json
import os
import pathlib
import re
import subprocess
import sys
import tempfile

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
VERIFY = str(ROOT / "tools" / "verify_run")
NOISE = str(ROOT / "tests" / "tools" / "noise.lua")

PRODUCTS = """
[[product]]
name = "A"
tickSize = 0.01
pointValue = 12.5
currency = "USD"
makerFee = -0.35
takerFee = 0.85
[[product]]
name = "B"
tickSize = 0.01
lotSize = 10
pointValue = 3
currency = "USD"
makerFee = 0.0001
takerFee = 0.00023
feeIsRate = true
[[product]]
name = "C"
pointValue = 1000
currency = "EUR"
takerFee = 1.7
dailyVolatility = 0.013
dailyVolume = 40000
minimumFee = 4
feeTiers = [{ from = 20, makerFee = -0.3, takerFee = 1.1 }, { from = 60, takerFee = 0.7 }]
"""

ADJUSTMENTS = """time,product,kind,value
20240108:14:31,A,split,3:2
20240108:14:32,B,funding,-0.0012
20240108:14:32,A,funding,0.0012
20240108:14:33,C,dividend,0.37
20240108:14:34,A,roll,-1.25
20240108:14:35,B,split,1:7
20240108:14:36,C,roll,0.5
"""

# Runs of noise.lua; {n} is the seed of the round.
RUNS = """
a.csv                 --fills queue --self-trade meet
a.csv                 --fills touch --latency 0-40 --param flatten=true --beyond wait
a.csv                 --fills cross --queue-model back --param protected=true --param away=1 --from 20240108:14:32 --warmup 60s
a.depth.csv           --fills queue --latency 5 --queue-model power --self-trade cancel-oldest --late-trades 2000
a.depth.csv           --fills touch --param away=1 --from 20240108:14:33:07 --to 20240108:14:36
a.trades.csv a.depth.csv.gz   --fills queue --param flatten=true
a.depth.csv a.csv     --fills cross --latency 0.5 --jobs --late-trades 5000 --self-trade refuse
a.csv b.csv.gz c.csv  --fills queue --products p.toml --jobs --param flatten=true
a.csv b.csv.gz c.csv  --fills touch --products p.toml --latency 200 --feed-latency 1ms..3s --queue-model power:2
a.csv b.csv.gz c.csv  --products p.toml --jobs --latency 300 --adjustments j.csv --impact 0.7
a.bars.csv            --param chance=0.6 --products p.toml
a.bars.csv            --param chance=0.6 --bar-time start --bar-period 30s --latency 1-50000 --jobs
c.csv a.bars.csv      --param chance=0.6 --participation 20 --products p.toml --latency 7
a.bars.csv            --param chance=0.6 --bar-fills worst --bar-limits through --from 20240108:14:31 --to 20240108:14:37
a.bars.csv            --param chance=0.6 --bar-fills mean --latency 1-90000
""".strip().splitlines()


class Planted:
    """A record whose lines can be changed. Each plant gives what a fault of it must say."""

    def __init__(self, text):
        self.lines = [json.loads(line) for line in text.splitlines()]

    def find(self, kind, skip=0, **wanted):
        found = [line for line in self.lines if line["type"] == kind and all(line[key] == value for key, value in wanted.items())]
        return found[skip]

    def filled_at_once(self):
        kills = {line["order"] for line in self.lines if line["type"] == "order" and line["exec"] == "FOK"}
        return next(line for line in self.lines if line["type"] == "fill" and line["order"] in kills)

    def fill(self, cause, skip=0):
        """A fill and its event."""
        fills = [line for line in self.lines if line["type"] == "fill" and line["cause"] == cause]
        fill = fills[skip]
        number = [line for line in self.lines if line["type"] == "fill" and line["order"] == fill["order"]].index(fill)
        return fill, self.find("orderEvent", number, event="filled", order=fill["order"])

    def text(self, renumber=True):
        if renumber:
            for number, line in enumerate(self.lines, 1):
                line["sequence"] = number
        return "".join(json.dumps(line) + "\n" for line in self.lines)


def add(record, line, key, what, says):
    line[key] += what
    return says


def change_fill(record, of, says, skip=0, /, **changes):
    """Of the fill and of its event alike, so that only the market or the order tells."""
    fill, event = record.fill(of, skip)
    for key, value in changes.items():
        value = value(fill[key]) if callable(value) else value
        fill[key] = event[{"price": "fillPrice", "volume": "fillVolume"}.get(key, key)] = value
    return says


def remove(record, line, says):
    record.lines.remove(line)
    return says


def repeat(record, line, says):
    record.lines.insert(record.lines.index(line), dict(line))
    return says


PLANTS = {
    "fee": lambda r: add(r, r.find("fill"), "fee", 1, "fee"),
    "profit": lambda r: add(r, r.find("fill", 5), "profit", 0.0001, "profit"),
    "position": lambda r: add(r, r.find("fill", 3), "position", -1, "position"),
    "mark": lambda r: add(r, r.find("fill", 2), "mark", 0.01, "mark"),
    "row": lambda r: add(r, r.fill("took")[0], "row", 1, "not between its row and the next"),
    "row of a trade": lambda r: add(r, r.fill("tradedThrough")[0], "row", -1, "tradedThrough, but the row is no event"),
    "side": lambda r: (r.fill("took")[0].update(side="SELL" if r.fill("took")[0]["side"] == "BUY" else "BUY"), "side")[1],
    "beyond its limit": lambda r: change_fill(r, "queue", "beyond its limit", price=lambda p: p + 1) and
        change_fill(r, "queue", "own price|beyond its limit|by a trade at", 1, price=lambda p: p - 1),
    "a price that is not shown": lambda r: change_fill(r, "took", "where nothing is shown", price=lambda p: p + 0.005),
    "more than is shown": lambda r: change_fill(r, "took", "shown were free", volume=500),
    "more than was traded": lambda r: change_fill(r, "tradedThrough", "filled by a trade of", volume=lambda v: v + 50),
    "more than crossed": lambda r: change_fill(r, "crossed", "where the other side has", volume=lambda v: v + 50),
    "maker": lambda r: change_fill(r, "took", "but its cause is took", maker=True),
    "wrong cause": lambda r: change_fill(r, "queue", "by a trade at", cause="tradedThrough"),
    "unknown cause": lambda r: change_fill(r, "queue", "unknown cause 'luck'", cause="luck"),
    "assumed where it was shown": lambda r: change_fill(r, "took", "not whole ticks|for a LIMIT order", cause="assumed"),
    "half of two own orders": lambda r: change_fill(r, "ownOrder", "not its other side", price=lambda p: p + 0.01),
    "a fill twice": lambda r: repeat(r, r.find("fill", 7), "without its orderEvent|is told of"),
    "no fill": lambda r: remove(r, r.find("fill", 7), "never made|is told of"),
    "no event of a fill": lambda r: remove(r, r.fill("queue")[1], "without its orderEvent|is told of"),
    "not accepted": lambda r: remove(r, r.find("orderEvent", event="accepted", order=r.fill("took")[0]["order"]), "before accepted"),
    "never sent": lambda r: remove(r, r.find("order", request="new", order=r.fill("took")[0]["order"]), "was never sent"),
    "executed": lambda r: add(r, r.fill("took", 2)[1], "executed", 1, "executed"),
    "time of an event": lambda r: (r.fill("took")[1].update(exchangeTime="20240108:14:30:00"), "of a fill at|out of order")[1],
    "filled after the end": lambda r: (lambda line: (r.lines.insert(r.lines.index(line), dict(line, event="cancelled", status="DELETED")),
                                                     "though it is DELETED")[1])(r.fill("queue")[1]),
    "drawdown": lambda r: add(r, r.find("money"), "drawdown", -0.0001, "drawdown of"),
    "realised": lambda r: add(r, r.find("money"), "realised", 0.01, "realised of"),
    "orders": lambda r: add(r, r.find("result"), "orders", -1, "orders"),
    "a part of fill or kill": lambda r: add(r, r.filled_at_once(), "volume", -0.5, "fill or kill, but"),
}
OVER_BARS = {
    "outside of the bar": lambda r: change_fill(r, "bar", "outside of", price=lambda p: p + 5),
    "neither open nor own": lambda r: change_fill(r, "bar", "neither its open|beyond its limit|outside of|its close is", 3, price=lambda p: p + 0.003),
    "worst drawdown": lambda r: add(r, r.find("money"), "worstDrawdown", 0.01, "worstDrawdown of"),
}


def run(*arguments):
    return subprocess.run(arguments, capture_output=True, text=True, timeout=300)


def write_data(program):
    """Three products as quotes, depth, trades and bars."""
    pathlib.Path("p.toml").write_text(PRODUCTS)
    pathlib.Path("j.csv").write_text(ADJUSTMENTS)
    for name, seed, *more in (("a", "3"), ("b", "4", "--lot-size", "10"), ("c", "5")):
        for kind, file in (("quotes", f"{name}.csv"), ("depth", f"{name}.depth.csv")):
            run(program, "generate", "--seed", seed, "--duration", "500", "--rate", "10", "--product", name.upper(), "--kind", kind,
                "--output", file, *more)
    subprocess.run(["gzip", "-k", "a.depth.csv", "b.csv"], check=True)
    trades, bars = ["time,product,last,lastVolume,side"], {}
    for row in pathlib.Path("a.csv").read_text().splitlines()[1:]:
        time, product, *_, last, volume, side = row.split(",")
        if last:
            trades.append(f"{time},{product},{last},{volume},{side}")
            bars.setdefault(int(time) // 30_000_000_000 + 1, []).append((float(last), int(volume)))
    pathlib.Path("a.trades.csv").write_text("\n".join(trades) + "\n")
    rows = ["time,product,open,high,low,close,volume"]
    for end, traded in bars.items():
        prices = [price for price, _ in traded]
        cells = prices[0], max(prices), min(prices), prices[-1], sum(volume for _, volume in traded)
        rows.append(f"{end * 30_000_000_000},A," + ",".join(map(str, cells)))
    pathlib.Path("a.bars.csv").write_text("\n".join(rows) + "\n")


def data_of(words):
    data = words[words.index("--data") + 1:]
    return data[:next((place for place, word in enumerate(data) if word.startswith("-")), len(data))]


def check(program, name, words):
    record = f"{name}.jsonl"
    done = run(program, "run", *words, "--record", record)
    if done.returncode:
        return [f"{' '.join(words)}: {done.stderr}"]
    verified = run(sys.executable, VERIFY, record, *data_of(words))
    return [] if verified.returncode == 0 else [f"{' '.join(words)}: {verified.stdout}{verified.stderr}"]


def example_runs():
    """As the examples' own comments tell them."""
    for script in sorted(set((ROOT / "examples").glob("*.lua")) - set((ROOT / "examples").glob("*_test.lua"))):
        command = re.search(r"algoserver run (.*)", re.sub(r"\\\n-- *", "", script.read_text()))
        yield f"example.{script.stem}", command[1].split()


def random_runs(rounds):
    for seed in range(rounds):
        for number, line in enumerate(RUNS):
            data, _, options = line.partition("--")
            options = ("--" + options).split()
            scripts = [NOISE]
            if "--jobs" in options:
                options[options.index("--jobs"):] = options[options.index("--jobs") + 1:] + ["--name", "one", "--name", "two"]
                scripts *= 2
            names = " ".join(product for product in "ABC" if f"{product.lower()}." in data)
            if "--param" not in options or not any("chance" in option for option in options):
                options += ["--param", "chance=0.15"]
            yield f"random.{seed}.{number}", [*scripts, "--data", *data.split(), "--seed", str(seed + 1), "--param",
                                              f"products:text={names}", *options]


def check_plants(base, data, plants):
    text = pathlib.Path(base).read_text()
    for name, plant in plants.items():
        record = Planted(text)
        says = plant(record)
        file = f"planted.{base}.{name.replace(' ', '_')}"
        pathlib.Path(file).write_text(record.text())
        verified = run(sys.executable, VERIFY, file, *data.split())
        if verified.returncode != 1 or not re.search(says, verified.stdout):
            yield f"planted {name}: no fault says {says}: {verified.stdout}{verified.stderr}"


def check_unreadable(base, data):
    text = pathlib.Path(base).read_text()
    lines = text.splitlines(keepends=True)
    rows = pathlib.Path(data).read_text().splitlines(keepends=True)
    cases = {"cut.jsonl": (text[:-20], data, 2, "is no line of a record"),
             "no_end.jsonl": ("".join(lines[:-1]), data, 2, "has no end: .* there is no end"),
             "half.jsonl": ("".join(lines[:len(lines) // 2]), data, 2, "has no end: .* there is no jobStopped"),
             "gap.jsonl": ("".join(lines[:9] + lines[10:]), data, 1, "a line is missing"),
             "few.jsonl": (text, "few.csv", 2, "goes on where the data end"),
             "bad.jsonl": (text, "bad.csv", 2, "bad.csv:5: cannot be read"),
             "none.jsonl": (text, "none.csv", 2, "none.csv: cannot open")}
    pathlib.Path("few.csv").write_text("".join(rows[:len(rows) // 2]))
    pathlib.Path("bad.csv").write_text("".join(rows[:4]) + rows[4].split(",")[0] + ",A,x,,,,,,\n" + "".join(rows[5:]))
    for file, (record, rows_of, status, says) in cases.items():
        pathlib.Path(file).write_text(record)
        verified = run(sys.executable, VERIFY, file, rows_of)
        if verified.returncode != status or not re.search(says, verified.stdout + verified.stderr):
            yield f"{file}: status {verified.returncode}, {verified.stdout}{verified.stderr}"


def main():
    program = os.path.abspath(sys.argv[1])
    rounds = int(sys.argv[2]) if len(sys.argv) > 2 else 1
    with tempfile.TemporaryDirectory() as folder, concurrent.futures.ThreadPoolExecutor(2) as pool:
        os.chdir(folder)
        os.symlink(ROOT / "examples", "examples")
        write_data(program)
        faults = sum(pool.map(lambda case: check(program, *case), [*example_runs(), *random_runs(rounds)]), [])
        plants = [pool.submit(lambda *case: list(case[0](*case[1:])), *case) for case in
                  [(check_plants, "random.0.0.jsonl", "a.csv", {name: plant}) for name, plant in PLANTS.items()] +
                  [(check_plants, "random.0.10.jsonl", "a.bars.csv", {name: plant}) for name, plant in OVER_BARS.items()] +
                  [(check_plants, "random.0.9.jsonl", "a.csv b.csv.gz c.csv", {"cash": lambda r: add(r, r.find("cash"), "amount", 1, "amount")}),
                   (check_unreadable, "random.0.0.jsonl", "a.csv")]]
        faults += sum((plant.result() for plant in plants), [])
        os.chdir("/")
    print("\n".join(faults) or "verify_run finds what is wrong, and nothing else")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
