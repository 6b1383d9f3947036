#!/usr/bin/env python3
"""tools/verify_result finds no difference in runs of the examples and in random ones over many days, and finds every figure
of a result that is changed by as little as a double can be.

    check_verify_result.py ALGOSERVER

Prints what is wrong; the exit status is 1 when something is.
"""
import concurrent.futures
import gzip
import json
import math
import os
import pathlib
import re
import sys
import tempfile

from check_verify_run import NOISE, ROOT, data_of, run, write_data

VERIFY = str(ROOT / "tools" / "verify_result")
EXAMPLES = ("bracket", "market_maker", "bollinger", "spread")

# Runs of noise.lua, as one job or two. The data of 500 seconds take 46 days here, and have fills in the nights between.
RUNS = {
    "quotes": "a.csv b.csv c.csv --products p.toml --capital 250000 --jobs --param one/chance=0.9 --param two/chance=0.4",
    "average": "a.csv c.csv --products p.toml --round-trips average --latency 1-50000 --jobs --param flatten=true --param chance=0.9",
    "meet": "b.csv --capital 1 --self-trade meet --fills touch --feed-latency 1s..60s --param chance=0.9",
    "bars": "bars.csv --products p.toml --capital 1000000 --param chance=0.9 --bar-fills mean --seed 5",
}


def stretch(rows, factor):
    """The same rows with the times between them so much longer."""
    header, *rows = rows
    begin = int(rows[0].split(",", 1)[0])
    pairs = (row.split(",", 1) for row in rows)
    return "\n".join([header] + [f"{begin + (int(time) - begin) * factor},{rest}" for time, rest in pairs]) + "\n"


def write_days():
    for name in ("a.csv", "b.csv", "c.csv"):
        pathlib.Path(name).write_text(stretch(pathlib.Path(name).read_text().splitlines(), 8000))
    bars = gzip.decompress((ROOT / "examples" / "data" / "demo_bars.csv.gz").read_bytes()).decode()
    pathlib.Path("bars.csv").write_text(stretch(bars.replace("SIM", "A").splitlines(), 100))


def cases():
    for name in EXAMPLES:
        command = re.search(r"algoserver run (.*)", re.sub(r"\\\n-- *", "", (ROOT / "examples" / f"{name}.lua").read_text()))
        yield name, command[1].split()
    for name, line in RUNS.items():
        data, _, options = line.partition(" --")
        words = ("--" + options).replace("--jobs", f"{NOISE} --name one --name two").split()
        products = " ".join(word[0].upper() for word in data.replace("bars", "a").split())
        yield name, [NOISE, "--data", *data.split(), "--param", f"products:text={products}", *words]


def verify(result, record, *data):
    return run(sys.executable, VERIFY, result, record, *data)


def check(program, name, words):
    done = run(program, "run", *words, "--record", f"{name}.jsonl", "--json", f"{name}.json")
    if done.returncode:
        return [f"{name}: {done.stderr}"]
    verified = verify(f"{name}.json", f"{name}.jsonl", *data_of(words))
    return [] if verified.returncode == 0 else [f"{name}: {verified.stdout}{verified.stderr}"]


def change(part):
    """Each figure of a part changed a little, and how many there are."""
    if isinstance(part, (dict, list)):
        changed = [(key, change(value)) for key, value in (part.items() if isinstance(part, dict) else enumerate(part))]
        values = [value for _, (value, _) in changed]
        whole = dict(zip(part, values)) if isinstance(part, dict) else values
        return whole, sum(count for _, (_, count) in changed)
    if part is None or isinstance(part, str):
        return f"{part}.", 1
    return math.nextafter(part, math.inf), 1


def check_changed(name, *data):
    document, planted = json.loads(pathlib.Path(f"{name}.json").read_text()), 0
    for result in document["results"]:
        for key in ("measures", "intervals", "observations", "benchmark", "months", "breakdowns", "drawdowns"):
            result[key], count = change(result[key])
            planted += count
        result["roundTrips"]["rows"], count = change(result["roundTrips"]["rows"])
        planted += count
    pathlib.Path("changed.json").write_text(json.dumps(document))
    verified = verify("changed.json", f"{name}.jsonl", *data)
    if verified.returncode != 1 or f"\n{planted:,} differences\n" not in verified.stdout:
        yield f"{planted:,} figures of {name} are changed: {verified.stdout[-200:]}{verified.stderr}"


def check_refused(name, other, *data):
    """Status 1 where something is missing, 2 where the files do not fit or cannot be read."""
    document, record = json.loads(pathlib.Path(f"{name}.json").read_text()), pathlib.Path(f"{name}.jsonl").read_text()
    pathlib.Path("few.json").write_text(json.dumps(document | {"results": document["results"][1:]}))
    pathlib.Path("cut.jsonl").write_text("".join(record.splitlines(keepends=True)[:-1]))
    trips = [line for line in record.splitlines() if '"trip"' in line]
    pathlib.Path("trip.jsonl").write_text(record.replace(trips[5], trips[5].replace('"mae":', '"mae":1')))
    for file, of, status, says in (("few.json", f"{name}.jsonl", 1, "is not in the result"), (f"{name}.json", "trip.jsonl", 1, "trip.mae"),
                                   (f"{name}.json", "cut.jsonl", 2, "has no end"), (f"{other}.json", f"{name}.jsonl", 2, "not of one run"),
                                   (f"{name}.jsonl", f"{name}.jsonl", 2, "is no result document")):
        verified = verify(file, of, *data)
        if verified.returncode != status or says not in verified.stdout + verified.stderr:
            yield f"{file} and {of}: status {verified.returncode}, {verified.stdout}{verified.stderr}"


def main():
    program = os.path.abspath(sys.argv[1])
    with tempfile.TemporaryDirectory() as folder, concurrent.futures.ThreadPoolExecutor(2) as pool:
        os.chdir(folder)
        os.symlink(ROOT / "examples", "examples")
        write_data(program)
        write_days()
        faults = sum(pool.map(lambda case: check(program, *case), cases()), [])
        faults += [*check_changed("quotes", "a.csv", "b.csv", "c.csv"), *check_changed("bars", "bars.csv"),
                   *check_refused("bars", "meet", "bars.csv")]
        os.chdir("/")
    print("\n".join(faults) or "verify_result finds what differs, and nothing else")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
