#!/usr/bin/env python3
"""Runs `algoserver check` over the scripts beside this file.

    run_check_tests.py ALGOSERVER             check/NAME.lua must give the lines of check/NAME.txt, or none at all
    run_check_tests.py ALGOSERVER --update    writes the .txt files anew from what the program prints

Prints "N passed, N failed"; the exit status is 1 when a case failed.
"""

import glob
import json
import os
import re
import subprocess
import sys
import tempfile

from cases import read_cases

HERE = os.path.dirname(os.path.abspath(__file__))
FOLDER = os.path.join(HERE, "check")
ROOT = os.path.dirname(os.path.dirname(HERE))
MISSING = "the Debian package lua-check has it: apt-get install lua-check\n"

FILES, CASES = read_cases("check_cases.txt")
FILES |= {
    "deep.lua": "function OnInit()\n" + "do\n" * 5000 + "end\n" * 5000 + "end\n",
    "long.lua": "function OnInit() job:logText(1" + " + 1" * 20000 + ") end\n",
    "broken\xe9.lua".encode("latin-1"): "function OnInit() jop() end\n",
}


def execute(program, arguments, **environment):
    result = subprocess.run([program] + arguments, stdin=subprocess.DEVNULL, capture_output=True, timeout=120,
                            env={**os.environ, "LUA_PATH": ";;", **environment})
    return result.returncode, result.stdout.decode(errors="replace"), result.stderr.decode(errors="replace")


def check_scripts(program, update):
    """Each script beside this file, run where the scripts lie, so that their names are short."""
    for script in sorted(glob.glob("*.lua", root_dir=FOLDER)):
        path = os.path.join(FOLDER, script[:-4] + ".txt")
        os.chdir(FOLDER)
        status, out, err = execute(program, ["check", script])
        if update and out:
            with open(path, "w") as file:
                file.write(out)
        expected = open(path).read() if os.path.exists(path) else ""
        yield script, (status, out, err) == (1 if expected else 0, expected, ""), out + err


def check_cases(program):
    for name, arguments, status, out, err in CASES:
        given = execute(program, arguments.split())
        yield name, given[:2] == (status, "".join(out)) and (all(part in given[2] for part in err) if err else not given[2]), given
    given = execute(program, ["check", "deep.lua"])  # LuaJIT's limit lies one block deeper
    yield "deep.lua", given[0] == 1 and re.fullmatch(r"deep.lua:(199|200):1: chunk has too many syntax levels\n", given[1]), given
    yield "nothing is written", os.path.exists("exits.lua") and not os.path.exists("made"), os.listdir()
    given = execute(program, ["check", "clean.lua"], LUA_PATH="/nowhere/?.lua")
    yield "without luacheck", given[:2] == (2, "") and given[2].endswith(MISSING), given
    status, out, _ = execute(program, ["check", "--json", "orders.lua", b"broken\xe9.lua"])
    findings = json.loads(out)
    first = {"file": "orders.lua", "line": 5, "column": 11, "endColumn": 60, "code": "table-key",
             "message": "createOrder needs the key 'side'"}
    yield "json", status == 1 and first in findings and findings[0]["file"] == "broken\ufffd.lua", out
    yield "json without a column", "endColumn" not in json.loads(
        execute(program, ["check", "--json", "run_error.lua"])[1])[0], ""


def check_own_scripts(program):
    """What the project itself shows is clean."""
    for script in sorted(glob.glob(os.path.join(ROOT, "examples", "*.lua"))):
        if script.endswith("_test.lua"):
            continue
        given = execute(program, ["check", script])
        yield os.path.relpath(script, ROOT), given == (0, "", ""), given


def main():
    program = os.path.abspath(sys.argv[1])
    results = list(check_scripts(program, "--update" in sys.argv))
    with tempfile.TemporaryDirectory() as folder:
        os.chdir(folder)
        for script in glob.glob("*.lua", root_dir=FOLDER):
            os.symlink(os.path.join(FOLDER, script), script)
        for name, content in FILES.items():
            with open(name, "w") as file:
                file.write(content)
        results += list(check_cases(program)) + list(check_own_scripts(program))
        os.chdir("/")
    for name, good, given in results:
        if not good:
            print(f"FAILED {name}: {given}")
    failed = sum(not good for _, good, _ in results)
    print(f"{len(results) - failed} passed, {failed} failed")
    return 1 if failed or not results else 0


if __name__ == "__main__":
    sys.exit(main())
