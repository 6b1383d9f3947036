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
        refused = self.editor.ask(command, {"threadId": 1})
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
                    "back": "stepBack", "reverse": "reverseContinue", "pause": "pause"}
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


def main():
    algoserver = os.path.abspath(sys.argv[1])
    faults = run_cases(algoserver, sys.argv[2] if len(sys.argv) > 2 else "")
    for fault in faults:
        print(fault)
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
