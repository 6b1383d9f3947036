#!/usr/bin/env python3
"""Stands in for `algoserver sweep`: the runs of a plan with one range, each of which takes as long as a script would that counts as far as
this one says. What a run comes to follows from its number and the texts of script and data."""

import argparse
import contextlib
import hashlib
import re
import signal
import sqlite3
import sys
import time
import tomllib

LOOPS_A_SECOND = 1e8


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("script")
    for name in ("--data", "--plan", "--slice", "--jobs"):
        parser.add_argument(name)
    parser.add_argument("-o", "--output", default="sweep.db")
    parser.add_argument("--take", action="append", default=[])
    parser.add_argument("--count", action="store_true")
    options = parser.parse_args(sys.argv[2:])
    with open(options.plan, "rb") as file:
        first, last, step = map(int, next(iter(tomllib.load(file)["parameters"].values())).split(":"))
    count = (last - first) // step + 1
    if options.count:
        print(count)
        return 0
    text = b"".join(open(name, "rb").read() for name in (options.script, options.data, options.plan))
    identity = hashlib.sha256(text).hexdigest()
    seconds = int(re.search(rb"1, (\d+) do", text)[1]) / LOOPS_A_SECOND
    ended = []
    for number in (signal.SIGTERM, signal.SIGINT):
        signal.signal(number, lambda *_: ended.append(True))
    with contextlib.closing(sqlite3.connect(options.output)) as database:
        database.executescript("CREATE TABLE IF NOT EXISTS plan (hash TEXT); CREATE TABLE IF NOT EXISTS runs (number INTEGER PRIMARY KEY, value TEXT);"
                               "CREATE TABLE IF NOT EXISTS best (number INTEGER);")
        for (other,) in database.execute("SELECT hash FROM plan"):
            if other != identity:
                print(f"{options.output}: of another sweep", file=sys.stderr)
                return 2
        database.execute("DELETE FROM plan")
        database.execute("INSERT INTO plan VALUES (?)", (identity,))
        for name in options.take:
            with contextlib.closing(sqlite3.connect(f"file:{name.replace('%', '%25').replace('?', '%3f').replace('#', '%23')}?mode=ro", uri=True)) as other:
                if other.execute("SELECT hash FROM plan").fetchall() != [(identity,)]:
                    print(f"{name}: of another sweep", file=sys.stderr)
                    return 2
                database.executemany("INSERT OR IGNORE INTO runs VALUES (?, ?)", other.execute("SELECT * FROM runs"))
        database.commit()
        part, parts = map(int, (options.slice or "0/1").split("/"))
        done = {number for (number,) in database.execute("SELECT number FROM runs")}
        for number in range(part, count, parts):
            if number in done:
                continue
            time.sleep(seconds)
            if ended:
                return 1
            print(f"run {number}", flush=True)
            database.execute("INSERT INTO runs VALUES (?, ?)", (number, hashlib.sha256(text + b"%d" % number).hexdigest()))
            database.commit()
        if not options.slice:
            database.execute("DELETE FROM best")
            database.execute("INSERT INTO best SELECT number FROM runs ORDER BY value DESC LIMIT 1")
            database.commit()
    return 0


if __name__ == "__main__":
    sys.exit(main())
