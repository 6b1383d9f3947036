#!/usr/bin/env python3
"""Runs `algoserver check` over the scripts beside this file.

    run_check_tests.py ALGOSERVER             check/NAME.lua must give the lines of check/NAME.txt, or none at all
    run_check_tests.py ALGOSERVER --update    writes the .txt files anew from what the program prints

Prints "N passed, N failed"; the exit status is 1 when a case failed.
"""

import glob
import json
import os
import subprocess
import sys
import tempfile

HERE = os.path.dirname(os.path.abspath(__file__))
FOLDER = os.path.join(HERE, "check")
ROOT = os.path.dirname(os.path.dirname(HERE))
SYNTAX = "syntax.lua:4:3: ')' expected (to close '(' at line 3) near 'end'\n"
MISSING = "the Debian package lua-check has it: apt-get install lua-check\n"

FILES = {
    "lib.lua": "function helper(product)\n  return product.limit + width\nend\n",
    "uses_lib.lua": "width = 1\nfunction OnInit()\n  helper(job:getProduct('A'))\nend\n",
    "fails.lua": "local x = nil + 1\n",
    "exits.lua": "print('loud') io.write('loud') io.stdout:write('loud'):flush() os.exit(3)\nfunction OnInit() end\n",
    "writes.lua": "io.open('made', 'w') os.rename('exits.lua', 'gone')\nfunction OnInit() end\n",
    "asks.lua": "function OnInit() local m = job:getParameter('n') + 1 job:logText(m) end\n",
    "deep.lua": "function OnInit()\n" + "do\n" * 5000 + "end\n" * 5000 + "end\n",
    "long.lua": "function OnInit() job:logText(1" + " + 1" * 20000 + ") end\n",
    "hungry.lua": "function OnInit() local t = {} for i = 1, 1e9 do t[i] = { i } end end\n",
    "broken\xe9.lua".encode("latin-1"): "function OnInit() jop() end\n",
}

# Arguments (run in a folder with FILES and the scripts), exit status, standard output, part of standard error.
CASES = [
    ("check", 2, "", "script is required"),
    ("check --frob syntax.lua", 2, "", "not expected: --frob"),
    ("check . syntax.lua", 2, SYNTAX, ".: is a directory, not a Lua script"),
    ("check syntax.lua --module none.lua", 2, "", "none.lua: cannot open: "),
    ("check syntax.lua syntax.lua clean.lua", 1, SYNTAX, ""),
    ("check run_error.lua --no-run", 0, "", ""),
    ("check no_oninit.lua --no-run", 1, None, ""),
    ("check uses_lib.lua --module lib.lua", 1,
     "lib.lua:2:0: OnInit fails: attempt to perform arithmetic on field 'limit' (a nil value)\n", ""),
    ("check uses_lib.lua", 1, "uses_lib.lua:3:3: unknown global 'helper'\n", ""),
    ("check fails.lua", 1,
     "fails.lua:1:0: loading fails: attempt to perform arithmetic on a nil value\n"
     "fails.lua:1:1: the script defines no global function OnInit, so it cannot be started\n", ""),
    ("check exits.lua", 1, "exits.lua:1:0: loading fails: os.exit would end the host, not the script\n", ""),
    ("check writes.lua", 0, "", ""),
    ("check hungry.lua", 1, "hungry.lua:0:0: OnInit fails: not enough memory\n", ""),
    ("check asks.lua --param asks/n=5", 0, "", ""),
    ("check asks.lua", 1, "asks.lua:1:0: OnInit fails: attempt to perform arithmetic on a nil value\n", ""),
    ("check asks.lua --param n:uint=x", 2, "", "--param n:uint=x: parameter n: "),
    ("check deep.lua", 1, "deep.lua:199:1: chunk has too many syntax levels\n", ""),
    ("check long.lua", 2, "", "long.lua: is too deep to be checked: it has thousands of operators, calls or blocks "),
    ("check clean.lua --json", 0, "[]\n", ""),
]


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
    for arguments, status, out, err in CASES:
        given = execute(program, arguments.split())
        good = given[0] == status and out in (None, given[1]) and err in given[2] and (err or not given[2])
        yield arguments, good, given
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
            with open(name, "wb") as file:
                file.write(content if isinstance(content, bytes) else content.encode())
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
