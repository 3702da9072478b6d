#!/usr/bin/env python3
"""Compiles and runs every code block of README.md and docs/*.md, and compares what it prints.

A block of c or cpp with a main function is a program; any other stands for the middle of one: in C after `map` (a node
map connected to the simulated camera `camera`), in C++ and Python `camera` or `cam` is that node map and `device` the
simulated camera. A block of sh finds the tool `oxgenapi`; one of xml must be well-formed. All run in one empty folder per document that holds the
description, camera.xml. A block of text right behind is what the one before prints; "..." in it stands for anything.
Also checks that links between documents lead somewhere, that programs shown are those of examples/ where a comment says
so, and that docs/errors.md explains every result code.

usage: run.py SOURCE_DIRECTORY BUILD_DIRECTORY"""

import os
import re
import subprocess
import sys
import tempfile
import xml.etree.ElementTree
from pathlib import Path

SOURCE, BUILD = Path(sys.argv[1]).resolve(), Path(sys.argv[2]).resolve()
INCLUDES = ["include", "platform/base/include", "camera/include",
            "camera/transports/simulated/library/include"]
FLAGS = {"c": ["cc", "-x", "c", "-std=c11", "-I" + str(SOURCE / "examples/c")],
         "cpp": ["c++", "-x", "c++", "-std=c++17", "-I" + str(SOURCE / "examples/cpp")]}
BLOCK = re.compile(r"^```(\w+)\n(.*?)^```$(?:\n+```text\n(.*?)^```$)?", re.M | re.S)
SAME = re.compile(r"^<!-- the same as (\S+) -->\n```\w+\n(.*?)^```$", re.M | re.S)
MADE = {"tree.svg", "dependencies.svg", "camera.html", "tool-reference.md", "python-reference.md"}  # by docs/site.py
PROGRAM = re.compile(r"\bint main\(")

C_FRAME = """%s
static void block(NODEMAP map, OxSimulatedCamera* camera) {
  (void)map; (void)camera;
#line 1 "%s"
%s
}
int main(void) {
  OxSimulatedCamera* camera = OxSimulatedCameraCreate();
  NODEMAP map = openCamera(camera);
  block(map, camera);
  closeCamera(map, camera);
  return 0;
}
"""
CPP_FRAME = """%s
int main() {
  const Camera simulated;
  const oxgenapi::NodeMap& camera = simulated.map;
  OxSimulatedCamera* const device = simulated.device.get();
  (void)camera; (void)device;
#line 1 "%s"
%s
}
"""
PYTHON_FRAME = """import oxgenapi
with oxgenapi.SimulatedCamera() as device, oxgenapi.NodeMap.of(device) as cam:
%s
"""


class Block:
    def __init__(self, document, language, code, expected, line):
        self.place = f"{document.relative_to(SOURCE)}:{line}"
        self.document, self.language, self.code, self.expected = document, language, code, expected

    def source(self):
        """The whole program that the block stands for. #include lines go to its top."""
        if self.language == "python":
            return self.code if "import oxgenapi" in self.code else PYTHON_FRAME % re.sub("^(?=.)", "    ", self.code, flags=re.M)
        if PROGRAM.search(self.code):
            return self.code
        includes = "".join(re.findall(r"^#include.*\n", self.code, re.M))
        body = re.sub(r"^#include.*$", "", self.code, flags=re.M)
        if self.language == "c":
            return C_FRAME % ('#include "Camera.h"\n#include <string.h>\n' + includes, self.place, body)
        return CPP_FRAME % ('#include "Camera.h"\n#include <iostream>\n#include <string>\n#include <thread>\n' + includes,
                            self.place, body)

    def command(self, folder, program):
        if self.language == "sh":
            return ["bash", "-euc", self.code]
        if self.language == "python":
            return [sys.executable, "-B", "-c", self.source()]
        source = program.with_suffix("." + self.language)
        source.write_text(self.source())
        command = FLAGS[self.language] + ["-Wall", "-Wextra", "-pedantic", "-Werror"]
        command += ["-I" + str(SOURCE / include) for include in INCLUDES]
        command += [str(source), "-o", str(program), f"-L{BUILD}/lib", "-lOxCamera", "-lOxSimulatedCamera",
                    "-lOxGenApi", "-lOxBase"]
        compiled = subprocess.run(command, capture_output=True, text=True)
        if compiled.returncode != 0:
            raise AssertionError("does not compile:\n" + compiled.stderr)
        return [str(program)]


def blocks_of(document):
    text = document.read_text()
    for match in BLOCK.finditer(text):
        if match[1] != "text":
            yield Block(document, match[1], match[2], match[3], text.count("\n", 0, match.start()) + 2)


def run(block, folder, program):
    if block.language == "xml":
        xml.etree.ElementTree.fromstring(block.code.encode())
        return
    if block.language not in ("c", "cpp", "python", "sh"):
        raise AssertionError(f"a block of {block.language} cannot be run: use c, cpp, python, sh, xml or text")
    environment = dict(os.environ, LD_LIBRARY_PATH=str(BUILD / "lib"), OXGENAPI_LIBRARY_PATH=str(BUILD / "lib"),
                       PYTHONPATH=str(SOURCE / "python"), PATH=f"{BUILD}/bin:{os.environ['PATH']}")
    result = subprocess.run(block.command(folder, program), cwd=folder, env=environment, capture_output=True, text=True,
                            timeout=60)
    if result.returncode != 0:
        raise AssertionError(f"status {result.returncode}:\n{result.stdout}{result.stderr}")
    if block.expected is not None:
        pattern = ".*?".join(re.escape(part) for part in block.expected.strip().split("..."))
        if not re.fullmatch(pattern, result.stdout.strip(), re.S):
            raise AssertionError(f"prints\n{result.stdout}instead of\n{block.expected}")


def check_links(document, text):
    text = re.sub(r"^```.*?^```$", "", text, flags=re.M | re.S)
    for target in re.findall(r"\]\(([^)#:]+)(?:#[^)]*)?\)", text):
        if target not in MADE and not (document.parent / target).exists():
            yield f"{document.relative_to(SOURCE)}: link to {target}, which is not there"


def check_copies(document, text):
    for file, code in SAME.findall(text):
        if (SOURCE / file).read_text() != code:
            yield f"{document.relative_to(SOURCE)}: the program is not {file}"


def check_codes():
    header = (SOURCE / "include/OxGenApi/Types.h").read_text()
    page = (SOURCE / "docs/errors.md").read_text()
    codes = re.findall(r"#define OXGENAPI_E_(\w+)[\s\\]+UINT32_C\((0x\w+)\)", header)
    if not codes:
        yield "include/OxGenApi/Types.h: no result codes found"
    for name, code in codes:
        row = re.search(rf"^\| `{code}` \| `{name}` \| [^|]+ \| [^|]+ \|$", page, re.M)
        if not row:
            yield f"docs/errors.md: no row with cause and cure for {name} ({code})"


def main():
    failures, count = list(check_codes()), 0
    for document in [SOURCE / "README.md", *sorted((SOURCE / "docs").glob("*.md"))]:
        failures += check_links(document, document.read_text())
        failures += check_copies(document, document.read_text())
        with tempfile.TemporaryDirectory() as work:
            folder = Path(work, "run")
            folder.mkdir()
            (folder / "camera.xml").write_bytes((SOURCE / "simulation/camera.xml").read_bytes())
            for block in blocks_of(document):
                count += 1
                try:
                    run(block, folder, Path(work, "program"))
                except (AssertionError, subprocess.TimeoutExpired, xml.etree.ElementTree.ParseError) as failure:
                    failures.append(f"{block.place}: {failure}")
    print("\n".join(failures))
    print(f"{count} blocks, {len(failures)} failures")
    sys.exit(1 if failures else 0)


main()
