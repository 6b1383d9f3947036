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
import urllib.parse

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
        said = given[1].split("\n\n[")[0]
        yield name, (given[0], said if said in ("", given[1]) else said + "\n") == (status, "".join(out)) and (all(part in given[2] for part in err) if err else not given[2]), given
    given = execute(program, ["check", "deep.lua"])  # LuaJIT's limit lies one block deeper
    yield "deep.lua", given[0] == 1 and re.match(r"deep.lua:(199|200):1: chunk has too many syntax levels \[101\]\n\n\[101\] ", given[1]), given
    yield "nothing is written", os.path.exists("exits.lua") and not os.path.exists("made"), os.listdir()
    given = execute(program, ["check", "clean.lua"], LUA_PATH="/nowhere/?.lua")
    yield "without luacheck", given[:2] == (2, "") and given[2].endswith(MISSING), given
    status, out, _ = execute(program, ["check", "--json", "orders.lua", b"broken\xe9.lua"])
    findings = json.loads(out)
    first = {"file": "orders.lua", "line": 5, "column": 11, "endColumn": 60, "number": 308, "code": "table-key",
             "message": "createOrder needs the key 'side'"}
    told = [{key: value for key, value in finding.items() if key not in ("why", "silence")} for finding in findings]
    yield "json", status == 1 and first in told and findings[0]["file"] == "broken\ufffd.lua", out
    status, log, _ = execute(program, ["check", "--sarif", "orders.lua", b"broken\xe9.lua"])
    yield "sarif", status == 1 and sarif_fault(json.loads(log), findings) is None, sarif_fault(json.loads(log), findings)
    yield "json without a column", "endColumn" not in json.loads(
        execute(program, ["check", "--json", "run_error.lua"])[1])[0], ""


def sarif_fault(log, findings):
    """What of a log is not as SARIF 2.1.0 has it, or tells something else than --json."""
    if (log["version"], len(log["runs"]), "sarif-schema-2.1.0" in log["$schema"]) != ("2.1.0", 1, True):
        return "the log"
    driver, results = log["runs"][0]["tool"]["driver"], log["runs"][0]["results"]
    ids = [rule["id"] for rule in driver["rules"]]
    if not driver["name"] or len(set(ids)) != len(ids) or not all(rule["shortDescription"]["text"] and rule["help"]["text"] for rule in driver["rules"]):
        return "the rules"
    for result, finding in zip(results, findings, strict=True):
        place = result["locations"][0]["physicalLocation"]
        region = {"startLine": finding["line"], "startColumn": finding["column"], "endColumn": finding.get("endColumn", -1) + 1}
        region = {key: value for key, value in region.items() if value > 0}
        if ids[result["ruleIndex"]] != result["ruleId"] or result["ruleId"] != str(finding["number"]) or result["level"] != "warning":
            return result
        uri = place["artifactLocation"]["uri"]
        if not re.fullmatch(r"[\w.%/-]+", uri, re.A) or urllib.parse.unquote(uri) != finding["file"] or result["message"]["text"] != finding["message"] \
                or place.get("region", {}) != region:
            return result


# What is found in the scripts of other tests, by the title of the scenario or the name of the file. All of it is meant.
MEANT = {
    "An order that is changed twice shows what it was changed to last": {207},
    "Bars of days make weeks and months, with the dates of the file's rows": {406},
    "Jobs that do not start leave the others alone; a failing callback ends the run": {102, 311, 401},
    "cross_test.lua": {308, 311, 401}, "no_test.lua": {104}, "broken_test.lua": {101}, "twice_test.lua": {203},
    "broken.lua": {101}, "lib.lua": {102}, "silent.lua": {201, 401},
}


def scripts_of_tests():
    """Of the scenarios of runs, each with what stands in front of it, and of the command line's cases."""
    for path in sorted(glob.glob(os.path.join(ROOT, "tests/data/runs/*.txt"))):
        for scenario in open(path).read().split("\n== ")[1:]:
            for number, script in enumerate(re.findall(r"^script[^:\n]*: ?(.*(?:\n  .*)*)", scenario, re.M)):
                yield scenario.split("\n")[0], ["--module", os.path.join(ROOT, "tests/data/runs/prelude.lua")], script + "\n"
    for name, text in read_cases("cases.txt")[0].items():
        if name.endswith(".lua"):
            yield name, [], text


def check_own_scripts(program):
    """What the project itself shows is clean, and so is what its tests run."""
    for script in sorted(glob.glob(os.path.join(ROOT, "examples", "*.lua")) + glob.glob(os.path.join(ROOT, "host/author/templates/*.lua"))):
        given = execute(program, ["check", script])
        yield os.path.relpath(script, ROOT), given == (0, "", ""), given
    found = {}
    for title, modules, text in scripts_of_tests():
        name = "its_test.lua" if title.endswith("_test.lua") else "its.lua"
        with open(name, "w") as file:
            file.write(text)
        _, out, err = execute(program, ["check", "--no-run", "--json", *modules, name])
        found.setdefault(title, set()).update(finding["number"] for finding in json.loads(out))
        yield title, not err, err
    found = {title: numbers for title, numbers in found.items() if numbers}
    yield "scripts of tests", found == MEANT, found


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
