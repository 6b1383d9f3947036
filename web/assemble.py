#!/usr/bin/env python3
"""Puts page, styles and scripts together into one HTML file, run by the build.

    assemble.py PAGE OUTPUT DYGRAPHS

PAGE is one of PAGES. DYGRAPHS is the folder of dygraph.min.js and dygraph.min.css. What remains to be filled in is @DATA@. The policy names each
style and script by its hash, so a browser runs nothing else and asks the network for nothing.
"""
import base64
import hashlib
import pathlib
import re
import sys

FOLDER = pathlib.Path(__file__).resolve().parent
# What pages have.
TABLES = ["format", "dom", "frame", "grid", "series", "bars"]
SHARED = [*TABLES, "panel", "stack"]  # with charts over time, by dygraphs
# Of each page: its file, its styles, and its scripts in the order in which they are put together into one.
PAGES = {
    "result": ("page", ["page"], [*SHARED, "sections", "trades", "compare", "main"]),
    "profile": ("profile", ["page", "profile"], [*TABLES, "profile_data", "profile_flame", "profile_main"]),
    "sweep": ("sweep", ["page", "sweep"], [*SHARED, "sweep_expression", "sweep_data", "sweep_drawing", "sweep_map", "sweep_parallel", "sweep_scatter",
                                           "sweep_runs", "sweep_sections", "sweep_main"]),
}


def library(path):
    """A minified file without the name of its source map, which a browser's tools would fetch."""
    return re.sub(r"(//[#@] sourceMappingURL=.*|/\*[#@] sourceMappingURL=.*?\*/)\s*$", "", path.read_text(encoding="utf-8"))


def inline(tag, texts):
    """The elements that hold the texts, and their hashes for the policy."""
    for text in texts:
        if f"</{tag}" in text or "<!--" in text:
            raise SystemExit(f"assemble.py: a {tag} would end within its text")
    hashes = (base64.b64encode(hashlib.sha256(text.encode()).digest()).decode() for text in texts)
    return "\n".join(f"<{tag}>{text}</{tag}>" for text in texts), " ".join(f"'sha256-{value}'" for value in hashes)


def main(name, output, dygraphs):
    file, sheets, modules = PAGES[name]
    own = "\n".join((FOLDER / f"{module}.js").read_text(encoding="utf-8") for module in modules)
    page = (FOLDER / f"{file}.html").read_text(encoding="utf-8")
    has_charts = "@LICENCE@" in page
    of_others = lambda name: [library(dygraphs / name)] if has_charts else []
    scripts, script_hashes = inline("script", [*of_others("dygraph.min.js"), f'"use strict";\n(() => {{\n{own}}})();\n'])
    styles, style_hashes = inline("style", [*of_others("dygraph.min.css"),
                                            *((FOLDER / f"{sheet}.css").read_text(encoding="utf-8") for sheet in sheets)])
    parts = {
        "@POLICY@": f"default-src 'none'; script-src {script_hashes}; style-src {style_hashes}; img-src data:; base-uri 'none'; "
                    "form-action 'none'",
        "@STYLES@": styles,
        "@LICENCE@": (FOLDER / "dygraphs_licence.txt").read_text(encoding="utf-8").strip(),
        "@SCRIPTS@": scripts,
    }
    page = re.sub("|".join(parts), lambda match: parts[match[0]], page)
    pathlib.Path(output).write_text(page, encoding="utf-8")


main(sys.argv[1], sys.argv[2], pathlib.Path(sys.argv[3]))
