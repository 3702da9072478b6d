#!/usr/bin/env python3
"""Plants the faults of mutants.txt, one at a time, and says which of them the tests catch.

All faults are compiled into one scratch copy of the tree as choices at run time, (oxMutant(17) ? (new) : (old)), so that
one build serves them all; the environment variable OX_MUTANT chooses. A program catches a fault when a test fails, when it
crashes, or when it takes far longer than without a fault.

usage: tests/mutants/run.py [--tree FOLDER] [--jobs N] [WORD...]    only faults whose file or text holds one of the words
"""

import argparse
import concurrent.futures
import os
import re
import shutil
import subprocess
import sys
import time

HERE = os.path.dirname(os.path.abspath(__file__))
ROOT = os.path.dirname(os.path.dirname(HERE))
# Who looks for a fault in the files below a folder, in this order: the nearest and fastest first.
PROGRAMS = [
    ("platform/genapi/", ["genapi", "library", "simulation", "tool"]),
    ("platform/base/", ["base", "library", "memory"]),
    ("platform/telemetry/", ["telemetry", "library"]),
    ("src/", ["library", "memory", "tool"]),
    ("tools/", ["tool"]),
    ("camera/", ["camera", "tool"]),
]
CHOICE = """#pragma once
#ifdef __cplusplus
#include <cstdlib>
inline bool oxMutantChosen(int number) {
  static const int chosen = [] { const char* text = std::getenv("OX_MUTANT"); return text ? std::atoi(text) : 0; }();
  return chosen == number;
}
constexpr bool oxMutant(int number) { return __builtin_is_constant_evaluated() ? false : oxMutantChosen(number); }
#endif
"""


class Mutant:
    def __init__(self, number, file, line):
        old, new = line.split(" ==>", 1)
        self.number, self.file, self.line, self.new = number, file, line, new[1:]
        before, mark, rest = old.partition("[[")
        self.piece, marked = old, old
        if mark:
            marked, _, after = rest.rpartition("]]")
            self.piece = before + marked + after
        self.offset, self.old = len(before) if mark else 0, marked


def read_mutants():
    mutants, file = [], ""
    with open(os.path.join(HERE, "mutants.txt"), encoding="utf-8") as table:
        for line in table.read().split("\n"):
            if not line or line.startswith("#"):
                continue
            if " ==>" in line:
                mutants.append(Mutant(len(mutants) + 1, file, line))
            else:
                file = line
    return mutants


def is_there(mutant):
    path = os.path.join(ROOT, mutant.file)
    text = open(path, encoding="utf-8").read() if os.path.exists(path) else ""
    if text.count(mutant.piece) == 1:
        return True
    print(f"{'NOT THERE':20} {mutant.number:3} {mutant.file}: {mutant.line}")  # its line has changed since
    return False


def masked(text):
    """The text with literals and comments blanked, so that brackets and commas in them do not count."""
    literal = re.compile(r'//[^\n]*|"(?:[^"\\\n]|\\.)*"|(?<![0-9a-fA-F])\'(?:[^\'\\\n]|\\.)+\'')
    return literal.sub(lambda found: found[0][0] + "_" * (len(found[0]) - 2) + found[0][-1], text)


def expression_around(code, start, end):
    """The whole expression that holds code[start:end]: up to a bracket, a comma, an assignment or a return."""
    depth = 0
    while start > 0:
        c, two = code[start - 1], code[max(0, start - 2):start]
        if c in ")]}":
            depth += 1
        elif c in "([{":
            if depth == 0:
                break
            depth -= 1
        elif depth == 0:
            assigns = c == "=" and two not in ("==", "<=", ">=", "!=") and code[start] != "="
            if c in ",;" or assigns or code[:start].endswith("return "):
                break
        start -= 1
    while end < len(code):
        c = code[end]
        if c in "([{":
            depth += 1
        elif c in ")]}":
            if depth == 0:
                break
            depth -= 1
        elif depth == 0 and c in ",;":
            break
        end += 1
    return start, end


def regions(text, mutants):
    """Where each mutant changes the text: (start, end, is a statement, what stands there with the fault)."""
    code = masked(text)
    for mutant in mutants:
        start = text.index(mutant.piece) + mutant.offset
        end = start + len(mutant.old)
        if mutant.old.endswith(";") and (not mutant.new or mutant.new.endswith(";")):
            yield start, end, True, mutant.new
            continue
        old, new = mutant.old, mutant.new  # what both begin and end with does not belong to the change
        while old and new and old[0] == new[0]:
            old, new, start = old[1:], new[1:], start + 1
        while old and new and old[-1] == new[-1]:
            old, new, end = old[:-1], new[:-1], end - 1
        first, last = expression_around(code, start, end)
        yield first, last, False, text[first:start] + new + text[end:last]


def planted(text, mutants):
    """The text with all mutants in it, as choices."""
    found = sorted(zip(regions(text, mutants), mutants), key=lambda each: (each[0][0], -each[0][1]))
    result, at = "", 0
    while found:
        (start, end, statement, _), _ = found[0]
        inside = [each for each in found if each[0][0] < end]
        found = found[len(inside):]
        if any(each[0][1] > end for each in inside):
            sys.exit(f"mutate: overlapping faults: {inside[-1][1].line}")
        choice, close = "", ""
        for (first, last, _, new), mutant in inside:
            whole = text[start:first] + new + text[last:end]
            choice += f"{{ if (oxMutant({mutant.number})) {{ {whole} }} else " if statement else \
                f"(oxMutant({mutant.number}) ? ({whole}) : "
            close += "}" if statement else ")"
        old = text[start:end]
        result += text[at:start] + choice + ("{ " + old + " }" if statement else f"({old})") + close
        at = end
    return result + text[at:]


def build(tree, mutants):
    files = subprocess.run(["git", "-C", ROOT, "ls-files", "--cached", "--others", "--exclude-standard"],
                           check=True, capture_output=True, text=True).stdout.split("\n")
    by_file = {}
    for mutant in mutants:
        by_file.setdefault(mutant.file, []).append(mutant)
    choice = os.path.join(tree, "OxMutant.h")
    contents = {choice: CHOICE}
    for name in files:
        if not os.path.isfile(os.path.join(ROOT, name)):
            continue
        target = os.path.join(tree, name)
        os.makedirs(os.path.dirname(target), exist_ok=True)
        if name in by_file:
            with open(os.path.join(ROOT, name), encoding="utf-8") as source:
                contents[target] = planted(source.read(), by_file[name])
        elif not os.path.exists(target) or os.path.getmtime(os.path.join(ROOT, name)) > os.path.getmtime(target):
            shutil.copy(os.path.join(ROOT, name), target)
    for target, content in contents.items():
        known = open(target, encoding="utf-8").read() if os.path.exists(target) else ""
        if content != known:
            with open(target, "w", encoding="utf-8") as planted_file:
                planted_file.write(content)
    subprocess.run(["cmake", "--preset", "dev", f"-DCMAKE_CXX_FLAGS=-w -Wno-error -O1 -include {choice}"],
                   cwd=tree, check=True, stdout=subprocess.DEVNULL)
    targets = ["test_" + name for name in sorted({name for _, names in PROGRAMS for name in names})]
    subprocess.run(["cmake", "--build", "--preset", "dev", "--target", *targets], cwd=tree, check=True)


def run(tree, program, mutant, limit):
    """Whether the program fails, and the seconds it takes. Its own network: fake cameras answer one address."""
    folder = os.path.join(tree, "build/dev")
    environment = dict(os.environ, OX_SOURCE_DIR=tree, OX_BUILD_DIR=folder, OX_MUTANT=str(mutant))
    started = time.monotonic()
    command = f"ip link set lo up; exec {folder}/bin/test_{program} --gtest_fail_fast --gtest_brief=1"
    process = subprocess.Popen(["unshare", "-n", "bash", "-c", command], env=environment, stdout=subprocess.DEVNULL,
                               stderr=subprocess.DEVNULL, stdin=subprocess.DEVNULL, start_new_session=True)
    try:
        failed = process.wait(limit) != 0
    except subprocess.TimeoutExpired:
        os.killpg(process.pid, 9)
        process.wait()
        failed = True
    return failed, time.monotonic() - started


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n")[0])
    parser.add_argument("--tree", default=os.path.join(ROOT, "build/mutants"), help="scratch copy (default: %(default)s)")
    parser.add_argument("--jobs", type=int, default=1, help="faults looked at together")
    parser.add_argument("words", nargs="*", metavar="WORD", help="only faults whose file or text holds one of these")
    options = parser.parse_args()
    mutants = [each for each in read_mutants() if is_there(each)]
    build(options.tree, mutants)
    chosen = [each for each in mutants
              if not options.words or any(word in each.file + " " + each.line for word in options.words)]
    programs = {each.number: next(names for folder, names in PROGRAMS if each.file.startswith(folder)) for each in chosen}
    limits = {}
    for name in sorted({name for each in chosen for name in programs[each.number]}):
        failed, seconds = run(options.tree, name, 0, 600)
        if failed:
            sys.exit(f"mutate: test_{name} fails without any fault")
        limits[name] = 3 * seconds + 20
        print(f"test_{name}: {seconds:.0f} s")

    def look(mutant):
        for name in programs[mutant.number]:
            if run(options.tree, name, mutant.number, limits[name])[0]:
                return mutant, name
        return mutant, ""

    survivors = 0
    with concurrent.futures.ThreadPoolExecutor(options.jobs) as pool:
        for mutant, name in pool.map(look, chosen):
            survivors += not name
            print(f"{'caught by ' + name if name else 'SURVIVED':20} {mutant.number:3} {mutant.file}: {mutant.line}",
                  flush=True)
    print(f"mutate: {len(chosen) - survivors} of {len(chosen)} faults caught")


main()
