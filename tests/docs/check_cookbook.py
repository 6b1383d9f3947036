#!/usr/bin/env python3
"""Runs the recipes of docs/cookbook and holds their pages against what comes of it.

    check_cookbook.py ALGOSERVER [--update]

A page NN-name.md shows its script NN-name.lua in a block `lua`, commands in blocks `sh`, and what they print, standard error left
out, in a block `text` after each that prints something. The script is the source: --update writes it, and the outputs, into the
pages. Prints what is wrong, a line each; the exit status is 1 when something is.
"""
import concurrent.futures
import os
import pathlib
import re
import subprocess
import sys
import tempfile

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
COOKBOOK = ROOT / "docs" / "cookbook"
COMMAND = re.compile(r"```sh\n(.*?)```\n(?:\n```text\n(.*?)```\n)?", re.S)
STRICT = "algoserver run --sandbox strict"


def run(text, folder, program):
    """What the commands of a block print; the blocks of a page share the folder."""
    environment = dict(os.environ, PATH=f"{folder}:{os.environ['PATH']}")
    if not os.path.lexists(f"{folder}/algoserver"):
        for name, target in (("algoserver", program), ("docs", ROOT / "docs"), ("examples", ROOT / "examples")):
            os.symlink(target, f"{folder}/{name}")
        os.mkdir(f"{folder}/build")
    done = subprocess.run(["sh", "-ec", text], cwd=folder, env=environment, stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                          text=True, timeout=300)
    return done.stdout + (f"{done.stderr}exit status {done.returncode}\n" if done.returncode else "")


def fill(text, script, program):
    """The text of a page as it should be."""
    with tempfile.TemporaryDirectory() as folder:
        def show(block):
            printed = run(block[1], folder, program)
            return f"```sh\n{block[1]}```\n" + (f"\n```text\n{printed}```\n" if printed else "")
        text = re.sub(r"```lua\n.*?```", lambda _: f"```lua\n{script}```", text, count=1, flags=re.S)
        return COMMAND.sub(show, text)


def check(page, program, update):
    script, text = page.with_suffix(".lua").read_text(), page.read_text()
    wanted = fill(text, script, program)
    if update:
        page.write_text(wanted)
        text = wanted
    for number, (real, shown) in enumerate(zip(wanted.splitlines(), text.splitlines()), 1):
        if real != shown:
            yield f"{page.name}:{number}: is now: {real}"
            break
    else:
        if wanted != text:
            yield f"{page.name}: another number of lines now"
    if len(script.splitlines()) >= 60:
        yield f"{page.name}: the script has {len(script.splitlines())} lines; they are to be fewer than 60"
    if "**Not good for**" not in text:
        yield f"{page.name}: does not say what it is not good for"
    if "algoserver run" in text and not re.search(r"[1-9][\d,]* fills?, volume", text):
        yield f"{page.name}: no run in it trades"
    strict = fill(text.replace("algoserver run", STRICT), script, program).replace(STRICT, "algoserver run")
    if strict != wanted:
        yield f"{page.name}: prints something else under --sandbox strict"


def main():
    program, pages = os.path.abspath(sys.argv[1]), sorted(COOKBOOK.glob("[0-9]*.md"))
    faults = []
    if {page.stem for page in pages} != {script.stem for script in COOKBOOK.glob("*.lua")}:
        faults.append("scripts and pages are not the same recipes")
    index = re.findall(r"^\| (\d+) \| \[.*?\]\((.*?)\)", (COOKBOOK / "README.md").read_text(), re.M)
    if index != [(str(int(page.name[:2])), page.name) for page in pages]:
        faults.append("README.md: its table is not that of the pages")
    scripts = sorted(str(script) for script in COOKBOOK.glob("*.lua"))
    faults += subprocess.run([program, "check", "--sandbox", "strict", *scripts], capture_output=True, text=True).stdout.splitlines()
    with concurrent.futures.ThreadPoolExecutor(2) as pool:
        for found in pool.map(lambda page: list(check(page, program, "--update" in sys.argv)), pages):
            faults += found
    print("\n".join(faults) or f"{len(pages)} recipes hold")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
