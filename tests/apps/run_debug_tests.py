#!/usr/bin/env python3
"""Debugs runs as an editor does: the cases of debug_cases.txt, runs without break points against plain ones, and hostile input.

    run_debug_tests.py ALGOSERVER [TITLE]
"""
import json
import os
import socket
import subprocess
import sys
import tempfile

import dap

HERE = os.path.dirname(os.path.abspath(__file__))
ROOT = os.path.dirname(os.path.dirname(HERE))


def read_cases(name):
    files, cases, file = {}, [], None
    with open(os.path.join(HERE, name)) as lines:
        for line in lines.read().splitlines():
            if line.startswith("  "):
                files[file] += line[2:] + "\n"
            elif line.startswith("file "):
                file = line[5:]
                files[file] = ""
            elif line.startswith("== "):
                cases.append((line[3:], []))
            elif line and line[0] != "#":
                cases[-1][1].append(line)
            elif not line and file and not cases:
                files[file] += "\n"
    return files, cases


class Case:
    """One debugging: each operation gives what the case expects behind its =>."""

    def __init__(self, algoserver, folder):
        self.folder = folder
        self.editor = dap.Editor([algoserver, "debug", "--data", "quotes.csv"], folder)
        self.arguments = {}
        self.points, self.functions = {}, []
        self.stop = None

    def program(self, text):
        self.arguments["program"] = text

    def launch(self, text):
        self.arguments.update(json.loads(text))

    def begin(self):
        if self.stop is not None or self.editor.sent:
            return
        assert self.editor.ask("initialize", {"adapterID": "algoserver"})["supportsStepBack"]
        refused = self.editor.ask("launch", self.arguments)
        assert refused == {}, refused
        self.editor.wait("initialized")

    def tell(self, body):
        point = body["breakpoints"][-1]
        return str(point.get("line", "ok")) if point["verified"] else "no " + point["message"]

    def do_break(self, text):
        self.begin()
        place, _, extra = text.partition(" ")
        file, _, line = place.partition(":")
        points = self.points.setdefault(file, [])
        points.append({"line": int(line), **json.loads(extra or "{}")})
        return self.tell(self.editor.ask("setBreakpoints", {"source": {"path": os.path.join(self.folder, file)}, "breakpoints": points}))

    def clear(self, file):
        self.points[file] = []
        self.editor.ask("setBreakpoints", {"source": {"path": os.path.join(self.folder, file)}, "breakpoints": []})

    def event(self, text):
        self.begin()
        name, _, extra = text.partition(" {")
        self.functions.append({"name": name, **json.loads("{" + extra if extra else "{}")})
        return self.tell(self.editor.ask("setFunctionBreakpoints", {"breakpoints": self.functions}))

    def filters(self, names=""):
        self.begin()
        self.editor.ask("setExceptionBreakpoints", {"filters": names.split()})

    def go(self, command):
        self.begin()
        refused = self.editor.ask(command, {"threadId": 1}) if command else None
        if isinstance(refused, str):
            return "no " + refused
        event = self.editor.wait("stopped", "exited")
        if event["event"] == "exited":
            self.editor.wait("terminated")
            return "end %d" % event["body"]["exitCode"]
        self.stop = event["body"]
        frames = self.frames()
        top = next((frame for frame in frames if "source" in frame), frames[0])
        return self.stop["reason"] + " " + (self.place(top) if "source" in top else top["name"])

    def start(self):
        self.begin()
        self.editor.ask("configurationDone")
        self.editor.wait_for_output()

    @staticmethod
    def place(frame):
        return "%s:%d" % (frame["source"]["name"], frame["line"])

    def frames(self):
        return self.editor.ask("stackTrace", {"threadId": 1})["stackFrames"]

    def stack(self):
        return " ".join("%s:%d" % (frame["name"], frame["line"]) for frame in self.frames())

    def frame(self):
        frames = self.frames()
        return next((frame for frame in frames if "source" in frame), frames[0])["id"]

    def evaluate(self, text, context):
        body = self.editor.ask("evaluate", {"expression": text, "frameId": self.frame(), "context": context})
        return "no " + body if isinstance(body, str) else body["result"]

    def children(self, reference):
        return self.editor.ask("variables", {"variablesReference": reference})["variables"]

    def look(self, path):
        """All variables below a path, as NAME=VALUE."""
        scope, *names = path.split(".")
        scopes = self.editor.ask("scopes", {"frameId": self.frame()})["scopes"]
        found = self.children(next(one["variablesReference"] for one in scopes if one["name"] == scope))
        for name in names:
            found = self.children(next(one["variablesReference"] for one in found if one["name"] == name))
        return ["%s=%s" % (one["name"], one["value"]) for one in found]

    def set(self, text):
        name, _, value = text.partition(" = ")
        scopes = self.editor.ask("scopes", {"frameId": self.frame()})["scopes"]
        body = self.editor.ask("setVariable", {"variablesReference": scopes[0]["variablesReference"], "name": name, "value": value})
        return "no " + body if isinstance(body, str) else body["value"]

    def run_line(self, line):
        """None, or what came in place of what was expected."""
        action, _, expected = line.partition(" => ")
        verb, _, text = action.partition(" ")
        if verb == "variables":
            found = self.look(text)
            missing = [one for one in expected.split() if one not in found]
            return f"{missing} are not among {found}" if missing else None
        commands = {"run": "configurationDone", "continue": "continue", "next": "next", "in": "stepIn", "out": "stepOut",
                    "back": "stepBack", "reverse": "reverseContinue", "pause": "pause", "terminate": "terminate", "wait": None}
        if verb in commands:
            got = self.go(commands[verb])
        elif verb in ("eval", "repl"):
            got = self.evaluate(text, "repl" if verb == "repl" else "watch")
        elif verb == "printed":
            got = str("".join(self.editor.printed.values()).count(text))
        elif verb == "exception":
            got = self.editor.ask("exceptionInfo", {"threadId": 1})["description"]
        else:
            arguments = [text] if text else []
            got = {"break": self.do_break}.get(verb, getattr(self, verb, None))(*arguments)
        isShort = expected.startswith("no ") and (got or "").startswith(expected)
        return None if (got or "") == expected or isShort else f"got {got}"


def run_cases(algoserver, title):
    files, cases = read_cases("debug_cases.txt")
    faults = []
    for name, lines in cases:
        if title and title not in name:
            continue
        with tempfile.TemporaryDirectory() as folder:
            for file, text in files.items():
                with open(os.path.join(folder, file), "w") as out:
                    out.write(text)
            case = Case(algoserver, folder)
            try:
                for line in lines:
                    fault = case.run_line(line)
                    if fault:
                        faults.append(f"{name}: {line}: {fault}")
                        break
                status, err = case.editor.end()
                if status != 0 or err:
                    faults.append(f"{name}: status {status}, {err}")
            except Exception as error:
                faults.append(f"{name}: {line}: {type(error).__name__}: {error}")
                case.editor.process.kill()
    return faults


# Script, data and options: each is run, and debugged without break points.
RUNS = [["market_maker.lua", "demo_quotes.csv.gz", "--latency", "5ms", "--seed", "7"],
        ["bollinger.lua", "demo_bars.csv.gz", "--capital", "1000"],
        ["spread.lua", "calendar_quotes.csv.gz", "--products", os.path.join(ROOT, "examples/products.toml")],
        ["hello.lua", "demo_quotes.csv.gz", "--sandbox", "strict", "--from", "20240108:15:00", "--warmup", "10m"]]


def go_back_and_forth(editor, program):
    """Steps back and forth around some stops, and leaves the run where it goes on to its end."""
    editor.ask("setBreakpoints", {"source": {"path": program}, "breakpoints": [{"line": 42, "hitCondition": "% 700"}]})
    editor.ask("configurationDone")
    for command in "continue continue stepBack stepBack next reverseContinue reverseContinue continue stepIn".split():
        editor.wait("stopped")
        editor.ask("evaluate", {"expression": "quote(nil, 'BUY', 1, 1)", "frameId": 1, "context": "watch"})
        editor.ask(command)
    editor.wait("stopped")
    editor.ask("setBreakpoints", {"source": {"path": program}, "breakpoints": []})
    editor.ask("continue")


def compare_with_runs(algoserver):
    """A debugged run prints and records what a plain one does, to the byte; the first of them also where it goes back."""
    faults = []
    for number, (script, data, *options) in enumerate([RUNS[0], *RUNS]):
        with tempfile.TemporaryDirectory() as folder:
            record = os.path.join(folder, "record.jsonl")
            options += ["--record", record]
            program, data = os.path.join(ROOT, "examples", script), os.path.join(ROOT, "examples/data", data)
            plain = subprocess.run([algoserver, "run", program, "--data", data, *options], capture_output=True, text=True)
            with open(record, "rb") as file:
                expected = file.read()
            editor = dap.Editor([algoserver, "debug"], folder)
            editor.ask("initialize")
            isPlain = number > 2  # run without debugging
            refused = editor.ask("launch", {"program": program, "data": [data], "args": options, "noDebug": isPlain, "stopOnEntry": isPlain})
            if number == 0:
                go_back_and_forth(editor, program)
            editor.ask("configurationDone")
            status = refused or editor.wait("exited")["body"]["exitCode"]
            editor.end()
            with open(record, "rb") as file:
                got = file.read()
            if (status, editor.printed["stdout"]) != (plain.returncode, plain.stdout) or got != expected:
                faults.append(f"{script} {number}: debugged it comes to something else: {status} {plain.stderr}")
    return faults


def launch_as_documented(algoserver):
    """The launch.json of the page, over a port, as an editor sends it."""
    with open(os.path.join(ROOT, "docs/debugging.md")) as page:
        text = next(block for block in page.read().split("```json\n") if '"configurations"' in block[:80]).partition("```")[0]
    launch = json.loads(text.replace("${workspaceFolder}", ROOT))["configurations"][0]
    server = subprocess.Popen([algoserver, "debug", "--port", "0"], stdout=subprocess.PIPE, text=True)
    host, _, port = server.stdout.readline().rpartition(" ")[2].partition(":")
    with socket.create_connection((host, int(port))) as stream:
        editor = dap.Editor(None, None, stream)
        editor.ask("initialize")
        refused = editor.ask("launch", launch)
        editor.ask("setExceptionBreakpoints", {"filters": ["failed"]})
        editor.ask("configurationDone")
        reason = refused or editor.wait("stopped")["body"]["description"]
        editor.ask("disconnect")
    status = server.wait(dap.PATIENCE)
    return [] if (host, status, reason[:5]) == ("127.0.0.1", 0, "trade") else [f"as documented: {host}, {status}, {reason}"]


def frame(text):
    return b"Content-Length: %d\r\n\r\n" % len(text) + text


# What an editor would not send, and what is said to it: on standard error with status 2, or as a refusal with status 0.
HOSTILE = [
    (b'{"seq": 1, "type": "request", "command": "initialize"}\n', 2, "it has no header"),
    (b"Content-Length: 99999999999999999999\r\n\r\n", 2, "is no number up to 16777216"),
    (b"Content-Length: -1\r\n\r\n{}", 2, "is no number up to 16777216"),
    (b"Content-Length: 16777217\r\n\r\n{}", 2, "is no number up to 16777216"),
    (b"Content-Type: text\r\n\r\n{}", 2, "has no Content-Length"),
    (b"A" * 70000, 2, "it has no header"),
    (b"Content-Length: 100\r\n\r\n{", 0, ""),
    (b"", 0, ""),
    (frame(b"{nonsense"), 0, "no JSON object"),
    (frame(b"\xff\xfe\x00"), 0, "no JSON object"),
    (frame(b"[" * 100000), 0, "too deep"),
    (frame(b"[]") + frame(b"{}"), 0, "has not the form"),
    (frame(b'{"type": "request", "seq": 1, "command": 7}'), 0, "has not the form"),
    (frame(b'{"type": "request", "seq": 1e99, "command": "format"}'), 0, "no request format is known"),
    (frame(b'{"type": "request", "seq": 1, "command": "next", "arguments": []}'), 0, "arguments are no object"),
    (frame(b'{"type": "request", "seq": 1, "command": "evaluate", "arguments": {"expression": "1"}}'), 0, "the run is not stopped"),
    (frame(b'{"type": "request", "seq": 1, "command": "configurationDone"}'), 0, "no run has been launched"),
    (frame(b'{"type": "request", "seq": 1, "command": "launch", "arguments": {"program": {"a": 1}}}'), 0, "program is neither"),
    (frame(b'{"type": "request", "seq": 1, "command": "launch", "arguments": {"program": "no.lua", "data": "no.csv"}}'), 0, "no.lua"),
    (frame(b'{"type": "request", "seq": 1, "command": "launch", "arguments": {"program": "a.lua", "data": "-"}}'), 0, "is a pipe"),
    (frame(b'{"type": "request", "seq": 1, "command": "launch", "arguments": {"args": ["--speed", "1"]}}'), 0, "--speed"),
]


def send_hostile(algoserver, folder):
    faults = []
    for data, status, text in HOSTILE:
        done = subprocess.run([algoserver, "debug"], input=data, capture_output=True, cwd=folder, timeout=dap.PATIENCE)
        said = (done.stderr if status else done.stdout).decode(errors="replace")
        if done.returncode != status or text not in said:
            faults.append(f"{data[:90]}: status {done.returncode}, {said[-300:]}")
    return faults


def main():
    algoserver = os.path.abspath(sys.argv[1])
    faults = run_cases(algoserver, sys.argv[2] if len(sys.argv) > 2 else "")
    if len(sys.argv) < 3:
        with tempfile.TemporaryDirectory() as folder:
            faults += compare_with_runs(algoserver) + launch_as_documented(algoserver) + send_hostile(algoserver, folder)
    for fault in faults:
        print(fault)
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
