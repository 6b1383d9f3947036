#!/usr/bin/env python3
"""What algoserver gives the shell: completions, manual pages, what doctor finds, colours.

    run_shell_tests.py ALGOSERVER

Prints what is wrong, a line each; the exit status is 1 when something is.
"""
import os
import pathlib
import pty
import re
import shutil
import subprocess
import sys
import tempfile

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
# A line as it is typed, and what it may go on with; of a set with "..." in it a part.
LINES = (
    ("algoserver rep", {"report"}),
    ("algoserver run --fills ", {"queue", "cross", "touch"}),
    ("algoserver run --fills c", {"cross"}),
    ("algoserver run --queue-model ", {"even", "back", "power"}),
    ("algoserver run a.lua --data b.csv --on-error s", {"stop"}),
    ("algoserver run --bar-l", {"--bar-limits"}),
    ("algoserver run --seed ", set()),
    ("algoserver run own.lua --param ", {"fast=", "slow="}),
    ("algoserver sweep own.lua --data x.csv --param s", {"slow="}),
    ("algoserver run ", {"own.lua", "..."}),
    ("algoserver run own.lua --data sub/", {"sub/day.csv"}),
    ("algoserver run --test ow", {"own.lua"}),
    ("algoserver check --module s", {"sub"}),
    ("algoserver sweep s", {"status", "sub", "..."}),
    ("algoserver sweep status --js", {"--json"}),
    ("algoserver completion ", {"bash", "zsh", "fish"}),
    ("algoserver help gen", {"generate"}),
)
# Completes the line of its arguments, and ends with what completes algoserver.
BASH = """
source "$1"; shift
COMP_WORDS=("$@") COMP_CWORD=$(($# - 1)) COMPREPLY=()
_algoserver
printf '%s\\n' "${COMPREPLY[@]}"
complete -p algoserver
"""


def run(*arguments, **options):
    return subprocess.run(arguments, stdin=subprocess.DEVNULL, capture_output=True, text=True, timeout=60, **options)


def differ(line, wanted, offered):
    return not wanted - {"..."} <= offered or "..." not in wanted and wanted != offered


def check_completion(program):
    for shell in ("bash", "zsh", "fish"):
        pathlib.Path(shell).write_text(run(program, "completion", shell).stdout)
        if shutil.which(shell) and (fault := run(shell, "-n", shell).stderr):
            yield f"{shell}: {fault}"
    for line, wanted in LINES:
        words = line.split(" ")
        *offered, last = run("bash", "--norc", "-c", BASH, "bash", "bash", *words).stdout.splitlines()
        if last != "complete -F _algoserver algoserver" or differ(line, wanted, set(offered) - {""}):
            yield f"bash: {line!r}: {offered}, {last}"
        # Where fish is, it answers without a terminal. What it makes of files is its own.
        if shutil.which("fish") and not line.endswith(("sub/", "run ", "--seed ", "sweep s", "--test ow", "--module s")):
            offered = run("fish", "-c", "source fish; complete -C $argv[1]", line, env=dict(os.environ, HOME=os.getcwd())).stdout
            offered = {entry.split("\t")[0] for entry in offered.splitlines()}
            if differ(line, wanted, offered):
                yield f"fish: {line!r}: {offered}"


def check_manual(program):
    """Each command has a page, and each option and its help stand there as --help has them."""
    run(program, "man", "-o", "man")
    pages = {path.stem: path for path in pathlib.Path("man").glob("*.1")}
    commands = [[]]
    for command in commands:
        help_text = run(program, *command, "--help").stdout
        part = re.search(r"^Subcommands:\n(.*?)\n\n", help_text + "\n\n", re.M | re.S)
        commands += [command + [name] for name in re.findall(r"^  (\S+) ", part[1], re.M)] if part else []
        page = pages.pop("-".join(["algoserver", *command]), None)
        if not page:
            yield f"no manual page of {command}"
            continue
        text = page.read_text().replace("\\-", "-").replace("\\e", "\\").replace("\\&", "")
        for names, value in re.findall(r"^  (-[\w,-]+)(?: (\S+))?", help_text, re.M):
            value = re.sub(r"^(TEXT:\{|Excludes:|Needs:).*|=.*|(?<=INT):.*", "", value)
            shown = ", ".join(f"\\fB{name}\\fR" for name in names.split(",")) + (f" \\fI{value}" if value else "")
            if "\n" + shown not in text:
                yield f"{page}: no {shown}"
        for about in re.findall(r"^(?:  -.{26} | {30})(\S.*)$", help_text, re.M):
            if about not in text:
                yield f"{page}: does not say: {about}"
        if shutil.which("groff") and (fault := run("groff", "-man", "-ww", "-z", str(page)).stderr):
            yield f"{page}: {fault}"
    yield from (f"{name}: of no command" for name in pages)


def check_doctor(program):
    os.makedirs("stores", exist_ok=True)
    pathlib.Path("file").write_text("")
    for store, status, text in (("stores", 0, "stores can be written"), ("stores/new", 0, "new can be written"),
                                ("file", 1, "file is no directory"), ("none/new", 1, "cannot be written: No such file")):
        done = run(program, "doctor", "--store", store)
        if done.returncode != status or not re.search(rf"^stores +{'missing' if status else 'ok'} .*{text}", done.stdout, re.M):
            yield f"doctor --store {store}: {done.returncode}\n{done.stdout}"
    if list(pathlib.Path("stores").iterdir()):
        yield "doctor left something behind"
    done = run(program, "doctor", env=dict(os.environ, LUA_PATH="none"))
    if done.returncode != 0 or not re.search(r"^check +without +.*lua-check", done.stdout, re.M):
        yield f"doctor without luacheck: {done.returncode}\n{done.stdout}"


def check_colours(program):
    for wanted, changes in ((True, {"TERM": "xterm"}), (False, {"TERM": "xterm", "NO_COLOR": "1"}), (False, {"TERM": "dumb"})):
        terminal, other = pty.openpty()
        environment = {name: value for name, value in os.environ.items() if name != "NO_COLOR"} | changes
        subprocess.run([program, "doctor"], stdout=other, env=environment, timeout=60)
        os.close(other)
        if (b"\033[32mok" in os.read(terminal, 65536)) != wanted:
            yield f"colours on a terminal with {changes}: should be {wanted}"
        os.close(terminal)
    if "\033" in run(program, "doctor").stdout:
        yield "colours without a terminal"


def main():
    program = os.path.abspath(sys.argv[1])
    with tempfile.TemporaryDirectory() as folder:
        os.chdir(folder)
        os.symlink(program, "algoserver")
        os.environ["PATH"] = f"{folder}:{os.environ['PATH']}"
        pathlib.Path("own.lua").write_text("local fast\nfunction OnInit() fast = job:getParameter('fast') job:getParameter('slow') end\n")
        os.mkdir("sub")
        pathlib.Path("own.txt").write_text("")
        pathlib.Path("sub/day.csv").write_text("")
        faults = [fault for check in (check_completion, check_manual, check_doctor, check_colours) for fault in check(program)]
        os.chdir("/")
    print("\n".join(faults) or "the shell is served")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
