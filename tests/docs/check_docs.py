#!/usr/bin/env python3
"""Holds README.md, CONTRIBUTING.md, CHANGELOG.md and docs/ against the program and the sources.

    check_docs.py ALGOSERVER

Prints what is wrong, a line each; the exit status is 1 when something is. What is bound to scripts is compared by
nxScriptingPage_test.cpp.
"""
import json
import os
import pathlib
import re
import subprocess
import sys
import tempfile

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
PAGES = [ROOT / name for name in ("README.md", "CONTRIBUTING.md", "CHANGELOG.md")] + sorted((ROOT / "docs").rglob("*.md"))
SOURCES = ("apps", "base", "bench", "indicators", "quant", "api", "scriptFramework", "host", "tests", "fuzz", "examples")

# Leaves one line of each type in the record of a run, jobs one and two.
RECORD = {
    "one.lua": """
function OnInit()
  product = job:getProduct("SIM")
  product:subscribePrice() product:setFlattenOnExit(true)
  job:sendUserState("WARN", "x") job:sendUserText1("x") job:sendUserText2("x") job:sendUserText3("x")
  job:sendUserLog{x = 1} job:setChartLine("x", "y", 1, 2) job:removeChartLine("x", "y")
  job:setOutputParameter("x", "y") job:publish("x", "y") job:sendParameter("x", "y", "z")
  job:startTimer("x", 60000) job:stopTimer("x") job:setEnablePandL(true) job:setReference("x") job.tag = "x"
  job:setOrderUserString("x") job:setOrderUserString2("x") job.selectedPrice = 1 job:logText("x")
end
local count = 0
function OnPrice()
  count = count + 1
  if count == 2 then product:createOrder("BUY", "MARKET"):work{volume = 1} end
  if count == 3 then job:getVorantJobs():getVorantJob(1):stop() error("x") end
  if count == 4 then job:shutdown() end
end
""",
    "two.lua": "function OnInit() job:getProduct('SIM'):subscribePrice() end",
    "fees.toml": '[[product]]\nname = "SIM"\nminimumFee = 1\ndailyVolatility = 0.01\ndailyVolume = 1000\n',
    "cash.csv": "time,product,kind,value\n20240108:14:30:01,SIM,dividend,1\n",
    "keys_test.lua": "local function try(x) script 'two.lua' market { '09:30:00 1 1 x 2 1' } expect(x) end\n"
                     "function TestKeys() try { x = 1 } end\nfunction TestTimeKeys() try { { '09:30:00', x = 1 } } end",
    "keys.toml": '[[product]]\nx = 1\n',
    "leg_keys.toml": '[[product]]\nname = "SIM"\nlegs = [{ x = 1 }]\n',
}


def read(path):
    return (ROOT / path).read_text()


def section(page, heading):
    """The text below a heading of a page, up to the next of its level or above."""
    level = heading.index(" ")
    match = re.search(rf"^{re.escape(heading)}\n(.*?)(?=^#{{1,{level}}} |\Z)", read(page), re.M | re.S)
    return match[1] if match else ""


def first_cells(text):
    """What stands in back quotes in the first cells of the tables of a text."""
    return {name for row in re.findall(r"^\| (.*?) \|", text, re.M) for name in re.findall(r"`([^`]+)`", row)}


def compare(what, documented, real):
    return [f"{what}: described, but not there: {name}" for name in sorted(documented - real)] + \
           [f"{what}: there, but not described: {name}" for name in sorted(real - documented)]


def run(program, *arguments):
    return subprocess.run([program, *arguments], capture_output=True, text=True, errors="replace", timeout=120)


def check_options(program):
    for command, text in (("run", section("docs/algoserver.md", "## Running a script")),
                          ("report", section("docs/results.md", "## From a record")),
                          ("generate", section("docs/algoserver.md", "## Generating data")),
                          ("import", section("docs/data.md", "## Importing")),
                          ("completion", section("docs/algoserver.md", "### Completion")),
                          ("doctor", section("docs/algoserver.md", "### The doctor")),
                          ("new", section("docs/algoserver.md", "## A new script")),
                          ("types", section("docs/algoserver.md", "## Types for editors")),
                          ("check", read("docs/checking.md"))):
        names = re.findall(r"^ +((?:-\w,)?--[\w-]+)", run(program, command, "--help").stdout, re.M)
        real = {name for entry in names for name in entry.split(",")}
        documented = {cell.split()[0] for cell in first_cells(text) if cell.startswith("-")}
        yield from compare(f"algoserver {command}", documented | {"-h", "--help"}, real)
    get = lambda command: {name for entry in re.findall(r"^ +((?:-\w,)?--[\w-]+)", run(program, command, "--help").stdout, re.M) for name in entry.split(",")}
    documented = {cell for cell in first_cells(read("docs/testing.md")) if cell.startswith("-")}
    yield from compare("testing.md", documented, documented & get("run"))
    # Of the runs of a sweep it takes what a run takes.
    documented = {cell.split()[0] for text in (section("docs/sweep.md", "### Options"), section("docs/cluster.md", "## Options"))
                  for cell in first_cells(text) if cell.startswith("-")} - {"--finish", "--json"}
    yield from compare("algoserver sweep", documented, get("sweep") - get("run"))
    # A debugged run, too, but for what docs/debugging.md takes away.
    documented = {cell.split()[0] for cell in first_cells(read("docs/debugging.md")) if cell.startswith("-")}
    yield from compare("algoserver debug", documented - {"--callback-limit", "--store", "--sandbox"}, (get("debug") ^ get("run")) - {"-s"})


TYPES = {"object": dict, "array": list, "string": str, "number": (int, float), "integer": int, "boolean": bool, "null": type(None)}


def misfits(value, schema, path=""):
    """Where a value is not as a schema of docs/ has it; of JSON Schema the part that they use."""
    if "oneOf" in schema:
        schema = next((one for one in schema["oneOf"] if one["properties"]["type"]["const"] == value.get("type")), {"enum": []})
    types = schema.get("type", [])
    allowed = [TYPES[name] for name in ([types] if isinstance(types, str) else types)]
    if allowed and not any(isinstance(value, kind) and (kind is bool or not isinstance(value, bool)) for kind in allowed) or \
            value not in schema.get("enum", [value]) or value != schema.get("const", value) or \
            isinstance(value, str) and not re.search(schema.get("pattern", ""), value):
        yield f"{path}: {str(value)[:40]}"
    elif isinstance(value, dict):
        known, others = schema.get("properties", {}), schema.get("additionalProperties", {})
        yield from (f"{path}: no {key}" for key in schema.get("required", []) if key not in value)
        for key, part in value.items():
            yield from misfits(part, known.get(key, others or {"enum": []}), f"{path}.{key}")
    elif isinstance(value, list):
        if not schema.get("minItems", 0) <= len(value) <= schema.get("maxItems", len(value)):
            yield f"{path}: {len(value)} items"
        for part in value:
            yield from misfits(part, schema.get("items", {}), path)


def check_schemas(program):
    """What the documented runs of the examples write is as the schemas say, and the page has the measures that there are."""
    forms = {name: json.loads(read(f"docs/{name}.schema.json")) for name in ("result", "run-record")}
    for script in [None, *sorted(set((ROOT / "examples").glob("*.lua")) - set((ROOT / "examples").glob("*_test.lua")))]:
        if script:
            command = re.search(r"algoserver run (.*)", re.sub(r"\\\n-- *", "", script.read_text()))[1].split()
            run(program, "run", *command, "--record", "record.jsonl", "--json", "result.json", "--capital", "1000000")
            result = json.loads(pathlib.Path("result.json").read_text())
            yield from (f"{script.name}, result{fault}" for fault in misfits(result, forms["result"]))
        lines = pathlib.Path("record.jsonl").read_text().splitlines()
        for line in lines[:500] + lines[-500:]:
            yield from (f"{script and script.name}, record{fault}" for fault in misfits(json.loads(line), forms["run-record"]))
    data = ["--data", "examples/data/noise_bars.csv.gz", "--param", "slow=20", "--vary", "fast=5:15:5"]
    form = json.loads(read("docs/sweep.schema.json"))
    for options in (["--walk", "2y:1y", "--holdout", "10%", "--capital", "1000"], ["--vary-option", "bar-fills=open,worst"], ["--constraint", "roundTrips > 1000000"]):
        run(program, "sweep", "examples/moving_average.lua", *data, *options, "--restart", "-o", "sweep.db")
        run(program, "report", "sweep.db", "--json", "sweep.json")
        yield from (f"{options}, sweep{fault}" for fault in misfits(json.loads(pathlib.Path("sweep.json").read_text()), form))
    real = {" | ".join((f"`{m['name']}`", m["title"], m["unit"], m["formula"])) for m in result["definitions"]}
    rows = re.findall(r"^\| (`.*) \| [^|]*\|$", section("docs/results.md", "## The measures"), re.M)
    yield from compare("measures", set(rows), real)


def check_rules(program):
    """The number, the code and the order of each rule of the checker."""
    log = json.loads(run(program, "check", "--no-run", "--sarif", "two.lua").stdout)
    real = {f"{rule['id']} {rule['name']}" for rule in log["runs"][0]["tool"]["driver"]["rules"]}
    documented = {" ".join(row) for row in re.findall(r"^\| (\d+) \| `([\w-]+)` \|", read("docs/checking.md"), re.M)}
    yield from compare("checking.md", documented, real)


def check_record(program):
    run(program, "run", "one.lua", "two.lua", "--data", str(ROOT / "examples/data/demo_quotes.csv.gz"),
        "--products", "fees.toml", "--adjustments", "cash.csv", "--impact", "1", "--on-error", "continue", "--record", "record.jsonl",
        "--equity-step", "0.01", "--envelope")
    real = set()
    for line in pathlib.Path("record.jsonl").read_text().splitlines():
        entry = json.loads(line)
        keys = list(entry)
        real |= {f"{entry['type']}.{key}" for key in keys[4:]} | {entry["type"]} | set(keys[:4])
    page = read("docs/run-record.md")
    documented = first_cells(section("docs/run-record.md", "## Every line"))
    for types, example in re.findall(r'^\| (`.*?) \|.*`("type":.*)` \|$', page, re.M):
        types = re.findall(r"`(\w+)`", types)
        keys = set(re.findall(r'"(\w+)":', example))
        documented |= {f"{name}.{key}" for name in types for key in keys - {"type"}} | set(types)
    for name in ("run", "end", "account", "prices", "envelope", "order", "orderEvent", "exchange", "product", "fees", "fill", "impact", "adjustment", "cash", "trip",
                 "day", "equity", "result", "money"):
        keys = first_cells(section("docs/run-record.md", f"### `{name}`"))
        documented |= {f"{name}.{key}" for key in keys} | {name}
    documented -= {"userLog.price", "userLog.why", "end.isCut"}  # the example's fields; of a run that was killed
    yield from compare("record", documented, real)


def check_product_keys(program):
    run(program, "types", "-o", "types")
    fields = lambda table: set(re.findall(r"^---@field (\w+)", pathlib.Path("types/algoserver.lua").read_text().split(f"---@class algo.{table}.table\n")[1].split("\n\n")[0], re.M))
    for file, heading in (("keys.toml", "## Keys of a product"), ("leg_keys.toml", "## Strategies")):
        text = run(program, "run", "one.lua", "--products", file, "--data", "none.csv").stderr
        real = set(text.split("known are ")[-1].strip().split(", "))
        yield from compare(f"products.md, {heading}", first_cells(section("docs/products.md", heading)), real)
        if file == "keys.toml":
            yield from compare("a test's market", fields("testMarket") - {"product", "barPeriod"}, real - {"name"})
    said = run(program, "run", "--test", "keys_test.lua").stdout
    for table, keys in zip(("testExpect", "testMoment"), re.findall(r"there are (.*)", said), strict=True):
        yield from compare(f"a test's {table}", fields(table), set(keys.split(", ")))


def check_embedding(_):
    """The entries of a job, and the operations that a host is asked."""
    page = read("docs/embedding.md")
    entries = first_cells(page[page.index("| Entry |"):page.index("The library does not check subscriptions")])
    yield from compare("entry", entries, set(re.findall(r" (On\w+)\(", read("scriptFramework/job/nxAlgoJobObject.h"))))
    operations = {cell.split("(")[0] for cell in first_cells(section("docs/embedding.md", "## What the library asks of the host"))}
    real = set(re.findall(r"virtual .*?(\w+)\(", read("scriptFramework/job/nxAlgoJobInterface.h")))
    yield from compare("operation", operations - {"Unsubscribe..."}, operations & real)


def anchors(text):
    headings = re.findall(r"^#+ (.*)$", text, re.M)
    return {re.sub(r"[^\w\- ]", "", heading.lower()).replace(" ", "-") for heading in headings}


def check_references(_):
    """Links, paths in back quotes, and the names of classes."""
    sources = "".join(path.read_text(errors="replace") for folder in SOURCES for path in (ROOT / folder).rglob("*")
                      if path.suffix in (".h", ".cpp", ".lua", ".txt"))
    known = set(re.findall(r"\bnx\w+", sources)) | {"nxFoo"}
    for page in PAGES:
        text = page.read_text()
        name = page.relative_to(ROOT)
        for target, anchor in set(re.findall(r"\]\(([^)#:]*)(?:#([^)]*))?\)", text)):
            file = page.parent / target if target else page
            if not file.exists():
                yield f"{name}: link to nowhere: {target}"
            elif anchor and anchor not in anchors(file.read_text()):
                yield f"{name}: link to nowhere: {target}#{anchor}"
        for path in re.findall(rf"`((?:{'|'.join(SOURCES + ('docs', 'cmake', 'tools'))})/[\w./*-]+)`", text):
            if not list(ROOT.glob(path.rstrip("/"))):
                yield f"{name}: no such file: {path}"
        for word in set(re.findall(r"\b(nx[A-Z]\w+)\b(?!\.)", text)) - known:
            yield f"{name}: no such name: {word}"


def check_quotations(program):
    """Lines quoted from a file stand in it; runs over files of the project print what the page shows."""
    yield from compare("README.md", set(re.findall(r"`(?:examples/)?(\w+\.lua)`", read("README.md"))),
                       {path.name for path in (ROOT / "examples").glob("*.lua")})
    for page in PAGES:
        text = page.read_text()
        for path, block in re.findall(r"`(examples/[\w./]+)`[^`\n]*:\n\n```\w+\n(.*?)```", text, re.S):
            lines = {line.strip() for line in read(path).splitlines()}
            for line in block.splitlines():
                if line.strip() and line.strip() not in lines:
                    yield f"{page.name}: not in {path}: {line}"
        for block in re.findall(r"(?:```console\n|\n(?=    \$))( *\$ .*?)(?:\n```|\n\n)", text, re.S):
            for part in re.split(r"^ *\$ ", block, flags=re.M)[1:]:
                command, _, expected = part.partition("\n")
                if not re.fullmatch(r"\S*algoserver run( examples/\S+)+ --data examples/\S+.*", command):
                    continue
                words = command.replace("2>/dev/null", "").split()[1:]
                shell = " ".join([program, *words]) + " 2>/dev/null"
                printed = subprocess.run(shell, shell=True, capture_output=True, text=True).stdout
                indent = "    " if block.startswith("    ") else ""
                if printed != re.sub(f"^{indent}", "", expected.rstrip("\n"), flags=re.M) + "\n":
                    yield f"{page.name}: another output now: {command}"
        for arguments, block in re.findall(r"is `algoserver (run examples/[^`]*)`:\n\n```\n(.*?)```", text, re.S):
            if block not in run(program, *arguments.split()).stdout:
                yield f"{page.name}: another output now: {arguments}"


def main():
    program = os.path.abspath(sys.argv[1])
    with tempfile.TemporaryDirectory() as folder:
        os.chdir(folder)
        os.symlink(ROOT / "examples", "examples")
        for name, text in RECORD.items():
            pathlib.Path(name).write_text(text)
        faults = [fault for check in (check_options, check_record, check_product_keys, check_embedding, check_rules, check_references, check_quotations,
                                       check_schemas)
                  for fault in check(program)]
        os.chdir("/")
    print("\n".join(faults) or "the docs hold")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
