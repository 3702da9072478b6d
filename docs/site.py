#!/usr/bin/env python3
"""Makes the site of the documentation: the guides, a page of the tool's commands and one of the Python package, pictures
that the tool draws, and Doxygen's reference of the C and C++ headers with a search. A warning of Doxygen fails it.

usage: site.py SOURCE_DIRECTORY BUILD_DIRECTORY VERSION"""

import html
import os
import re
import subprocess
import sys
from pathlib import Path

SOURCE, BUILD, VERSION = Path(sys.argv[1]).resolve(), Path(sys.argv[2]).resolve(), sys.argv[3]
MADE = BUILD / "docs/made"
TREE = ["tree", "ImageFormatControl", "--values", "--visibility", "beginner"]


def tool(*arguments):
    return subprocess.run([BUILD / "bin/oxgenapi", *arguments], stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, check=True,
                          text=True, cwd=MADE).stdout


def screen(command, text):
    """A terminal with the coloured text that a command prints, as SVG."""
    styles = {"1": "font-weight='bold'", "2": "fill='#8b98a9'", "31": "fill='#ff7b72'", "32": "fill='#7ee787'"}
    lines = ["\x1b[2m$ " + command + "\x1b[0m", *text.rstrip("\n").split("\n")]
    width = 20 + 8 * max(len(re.sub("\x1b.*?m", "", line)) for line in lines)
    body = ""
    for number, line in enumerate(lines):
        parts = ["0", *re.split("\x1b\\[(\\d+)m", line)]  # a style, its text, and so on
        spans = "".join(f"<tspan {styles.get(style, '')}>{html.escape(part)}</tspan>"
                        for style, part in zip(parts[::2], parts[1::2]) if part)
        body += f"<text x='10' y='{24 + 18 * number}' xml:space='preserve'>{spans}</text>\n"
    return (f"<svg xmlns='http://www.w3.org/2000/svg' width='{width}' height='{20 + 18 * len(lines)}' font-size='13.3' "
            f"font-family='monospace' fill='#e6edf3'><rect width='100%' height='100%' rx='6' fill='#0d1117'/>\n{body}</svg>\n")


def command_page():
    names = re.findall(r"^\.SS (.*)$", tool("__man").replace("\\-", "-"), re.M)
    text = "# The tool's commands\n\nWhat `oxgenapi help` and `oxgenapi help COMMAND` print, version " + VERSION + ".\n\n"
    text += "```text\n" + tool("--help") + "```\n"
    for name in names:
        text += f"\n## {name}\n\n```text\n{tool(*name.split(), '--help')}```\n"
    return text


def run(*command, **arguments):
    subprocess.run(command, check=True, **arguments)


def main():
    MADE.mkdir(parents=True, exist_ok=True)
    python = dict(os.environ, PYTHONPATH=str(SOURCE / "python"), OXGENAPI_LIBRARY_PATH=str(BUILD / "lib"), PYTHONDONTWRITEBYTECODE="1")
    (MADE / "tool-reference.md").write_text(command_page())
    run(sys.executable, SOURCE / "docs/python_reference.py", MADE / "python-reference.md", env=python)
    # Copies of both pictures stand in docs/, for those who read the documents there.
    (MADE / "tree.svg").write_text(screen("oxgenapi " + " ".join(TREE), tool("--color", "always", *TREE)))
    run("dot", "-Tsvg", "-o", MADE / "dependencies.svg", input=tool("nodes", "--graph", "PixelFormat"), text=True)
    tool("doc", "-o", str(MADE / "camera.html"))
    settings = (SOURCE / "docs/Doxyfile").read_text() + f"""
PROJECT_NUMBER    = {VERSION}
OUTPUT_DIRECTORY  = {BUILD}/docs
INPUT            += {MADE}
IMAGE_PATH        = {MADE}
STRIP_FROM_PATH  += {SOURCE}/docs {MADE} {SOURCE}
HTML_EXTRA_FILES  = {MADE}/camera.html
"""
    run("doxygen", "-", input=settings, text=True, cwd=SOURCE)


main()
