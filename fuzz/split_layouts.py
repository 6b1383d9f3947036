"""Makes a corpus of the examples of publishers' files: split_layouts.py LAYOUTS.txt FOLDER. The first line of each
file is the name and options of an example, the rest its content."""
import pathlib
import sys

folder = pathlib.Path(sys.argv[2])
folder.mkdir(parents=True, exist_ok=True)
examples = []
for line in pathlib.Path(sys.argv[1]).read_text(encoding="utf-8").splitlines():
    if line.startswith("file "):
        examples.append(line[5:] + "\n")
    elif line.startswith("  "):
        examples[-1] += line[2:] + "\n"
for number, example in enumerate(examples):
    (folder / f"{number:03}").write_text(example, encoding="utf-8", newline="\n")
