#!/usr/bin/env python3
"""docs/limits.md and the code agree: every named limit has a row with its value and a test that exists."""
import re
import subprocess
import sys

UNITS = {"KiB": 1 << 10, "MiB": 1 << 20, "GiB": 1 << 30}
# Bounds of texts and buffers that follow from other limits, or only shorten a quotation or a diagnosis.
NOT_LIMITS = {"kMaxFloatText", "kMaxSignificantDigits", "kMaxQuotedToken", "kMaxQuotedFormula", "kMaxTagBrackets",
              "kMaxAnswerNotes"}
# What protocols, file formats and other libraries set, and the length of an array that is always long enough.
NOT_LIMITS |= {"kMaxPacket", "kMaxMemoryBlock", "kMostClassic", "kMostPixels", "kMostKept", "kMostChannels"}


def files(*patterns):
    listed = subprocess.run(["git", "ls-files", "--cached", "--others", "--exclude-standard", "--", *patterns],
                            capture_output=True, text=True, check=True)
    return listed.stdout.split()


def constants():
    """Name to value; a value in terms of another constant is computed from that."""
    found = {}
    pattern = re.compile(r"constexpr\s+[\w:]+\s+(kM(?:ax|ost)\w+|kQuarantined\w+)\s*=\s*([^;]+);")
    for name in files("src/*.h", "src/*.cpp", "platform/*.h", "platform/*.cpp", "camera/*.h", "camera/*.cpp"):
        with open(name, encoding="utf-8") as source:
            for constant, expression in pattern.findall(source.read()):
                if constant not in NOT_LIMITS and "::" + constant not in expression and "sizeof" not in expression:
                    found[constant] = expression
    values = {}
    for _ in range(3):
        for constant, expression in found.items():
            text = re.sub(r"\b\w+_t\{(\d+)\}", r"\1", expression).replace("'", "")
            text = re.sub(r"(?<=[0-9a-f])u\b", "", text)
            try:
                values[constant] = eval(text, {"__builtins__": {}}, values)
            except NameError:
                pass
    return values, set(found)


def number(text):
    digits, _, unit = text.replace(",", "").partition(" ")
    return int(digits) * UNITS.get(unit, 1)


def main():
    problems = []
    values, named = constants()
    tests = ""
    for name in files("tests/*.cpp"):
        with open(name, encoding="utf-8") as source:
            tests += source.read()
    rows = {}
    with open("docs/limits.md", encoding="utf-8") as table:
        for row in re.findall(r"^\| `(k\w+)` \| ([^|]+) \| [^|]+ \| ([^|]+) \|$", table.read(), re.M):
            rows[row[0]] = row
    for constant in sorted(named - rows.keys()):
        problems.append(f"{constant} has no row")
    for constant, (_, value, test) in rows.items():
        if constant not in named:
            problems.append(f"{constant} is not in the code")
        elif values.get(constant) != number(value):
            problems.append(f"{constant} is {values.get(constant)} in the code, {value} in the table")
        suite, _, case = test.partition(".")
        if not re.search(rf"TEST(_F|_P)?\(\s*{suite}\w*,\s*{case}", tests):
            problems.append(f"{constant}: there is no test {test}")
    print("\n".join(problems))
    return 1 if problems else 0


sys.exit(main())
