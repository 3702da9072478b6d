#!/usr/bin/env python3
"""Compiles each C program of documents with the line below it that begins with "cc", and runs it against what is printed
between the two. usage: shown_programs.py DOCUMENT... FOLDER LIBRARIES"""

import os
import re
import subprocess
import sys
from pathlib import Path

*documents, folder, libraries = sys.argv[1:]
SHOWN = re.compile(r"^```c\n((?:(?!^```).)*?)^```\n+```text\n(.*?)^```\n+    (cc (\S+\.c) -o (\S+) [^\n]*)$", re.M | re.S)
Path(folder).mkdir()
count = 0
for document in documents:
    for code, expected, line, source, program in SHOWN.findall(Path(document).read_text()):
        Path(folder, source).write_text(code)
        environment = dict(os.environ, LD_LIBRARY_PATH=libraries)
        subprocess.run(line, shell=True, check=True, cwd=folder, env=environment)
        printed = subprocess.run(["./" + program], check=True, cwd=folder, env=environment, capture_output=True, text=True).stdout
        if printed != expected:
            sys.exit(f"{document}: {source} prints {printed}instead of {expected}")
        count += 1
if count < 2:
    sys.exit(f"{count} programs were found")
