"""Reads the cases of the command line; the top of cases.txt tells their form."""
import os


def read_cases(name):
    """The files and the cases of a text beside this one, of which each is [name, arguments, exit status, texts of out, of err]."""
    files, cases, file = {}, [], None
    with open(os.path.join(os.path.dirname(os.path.abspath(__file__)), name)) as lines:
        for line in lines.read().splitlines():
            key, _, text = line.partition(" ")
            if line.startswith("  "):
                files[file] += line[2:] + "\n"
            elif key == "file":
                file = text
                files[file] = ""
            elif key == "==":
                title, _, command = text.rpartition(": ")
                arguments, _, status = command.partition("=>")
                cases.append([title or arguments, arguments, int(status), [], []])
            elif key in ("out", "err"):
                cases[-1][3 if key == "out" else 4].append(text.replace("\\n", "\n"))
            elif line and key != "#":
                raise ValueError(line)
    return files, cases
