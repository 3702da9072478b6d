#!/usr/bin/env python3
"""Runs the benchmark programs and prints what they measured as one table; `./dev bench` builds them and calls this.

How a benchmark becomes a row, in whatever program it stands:
  - Its name says the work as it is to stand in the table: BENCHMARK(f)->Name("get integer, cached").
  - Its figure is the time of an iteration: the processor's, or the clock's if the benchmark uses manual or real time.
    One that measures something else sets the counter "figure" and, as its label, the unit ("MB", "x", "us").
  - The argument "others", 0 or 1, is the number of other threads alive: ->Arg(0)->Arg(1)->ArgName("others") gives one row with
    two figures, "alone" and "beside a second thread".
  - The counter "floor" is what the work cannot get below, in the unit of the figure. Where many rows share one floor,
    it is a benchmark of its own and the goals name it.
  - A program called bench_peer_* measures works by the same names with another implementation: the column "peer".
  - All other counters stand behind the row.
Goals stand in goals.json, in the order of the table; '*' stands for any text. A goal is "50 ns", "2 floors",
"floor + 50 us" or ">= 1.9 x"; "counters" are the largest values that counters may have.
"""
import argparse
import fnmatch
import json
import pathlib
import re
import statistics
import subprocess
import sys

kNanoseconds = {"ns": 1, "us": 1e3, "ms": 1e6, "s": 1e9}
kOwnCounters = {"figure", "floor"}
# What Google Benchmark writes beside the counters.
kFixedFields = {"name", "run_name", "run_type", "family_index", "per_family_instance_index", "repetitions",
                "repetition_index", "threads", "iterations", "real_time", "cpu_time", "time_unit", "label",
                "bytes_per_second", "items_per_second", "error_occurred", "error_message"}


def unit_and_factor(unit):
    return ("ns", kNanoseconds[unit]) if unit in kNanoseconds else (unit, 1)


class Row:
    """What all rounds measured of one work."""

    def __init__(self):
        self.unit = "ns"
        self.figures = {0: [], 1: []}  # by the number of other threads
        self.floors = []
        self.counters = {}
        self.error = ""

    def add(self, entry, others):
        self.error = self.error or entry.get("error_message", "")
        if self.error:
            return
        if "figure" in entry:
            self.unit, factor = unit_and_factor(entry.get("label", ""))
            figure = entry["figure"] * factor
        else:
            clock = re.search("/(manual|real)_time", entry["name"])
            factor = kNanoseconds[entry["time_unit"]]
            figure = entry["real_time" if clock else "cpu_time"] * factor
        self.figures[others].append(figure)
        if "floor" in entry:
            self.floors.append(entry["floor"] * (factor if "figure" in entry else 1))
        if others == 0:
            for name, value in entry.items():
                if name not in kFixedFields | kOwnCounters and isinstance(value, (int, float)):
                    self.counters.setdefault(name, []).append(value)

    def figure(self, others=0):
        return statistics.median(self.figures[others]) if self.figures[others] else None

    def floor(self):
        return statistics.median(self.floors) if self.floors else None


def collect(json_file, rows):
    for entry in json.loads(json_file.read_text())["benchmarks"]:
        if entry.get("run_type") == "aggregate":
            continue
        others = re.search(r"/others:([01])(?=/|$)", entry["name"])
        work = re.sub(r"/(others:[01](?=/|$)|manual_time|real_time|process_time|iterations:\d+|repeats:\d+)", "", entry["name"])
        rows.setdefault(work, Row()).add(entry, int(others.group(1)) if others else 0)


def programs(folder):
    found = sorted(path for path in folder.glob("bench_*") if path.is_file())
    if not found:
        sys.exit(f"bench: no programs in {folder}")
    return found


def run(program, json_file, arguments):
    json_file.parent.mkdir(parents=True, exist_ok=True)
    print(f"bench: {program} -> {json_file}", file=sys.stderr, flush=True)
    # Many short rounds tell more than few long ones; whoever wants otherwise says so behind it.
    command = [program, "--benchmark_min_time=0.1", f"--benchmark_out={json_file}", "--benchmark_out_format=json",
               *arguments]
    result = subprocess.run(command, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, text=True)
    if "Failed to match any benchmarks" in result.stderr or result.returncode == 0 and not json_file.stat().st_size:
        return False
    if result.returncode != 0:
        print(f"bench: {program} ended with status {result.returncode}\n{result.stderr}", file=sys.stderr)
        return False
    return True


def number(value):
    if value == int(value):
        return f"{int(value)}"
    return f"{value:.0f}" if abs(value) >= 100 else f"{value:.3g}"


def shown(value, unit):
    if value is None:
        return ""
    if unit != "ns":
        return f"{number(value)} {unit}".strip()
    for name, factor in (("ms", 1e6), ("us", 1e3), ("ns", 1)):
        if value >= 10 * factor or name == "ns":
            return f"{number(float(f'{value / factor:.3g}'))} {name}"


class Goals:
    def __init__(self, file):
        self.goals = json.loads(file.read_text())
        self.works = list(self.goals)
        self.floors = {goal["floor"] for goal in self.goals.values() if "floor" in goal}

    def of(self, work):
        pattern = self._pattern(work)
        return self.goals[pattern] if pattern is not None else {}

    def place(self, work):
        pattern = self._pattern(work)
        return (len(self.works) if pattern is None else self.works.index(pattern), work)

    def _pattern(self, work):
        if work in self.goals:
            return work
        return next((each for each in self.works if "*" in each and fnmatch.fnmatchcase(work, each)), None)


def is_met(goal, figure, floor):
    """None where that cannot be said."""
    if figure is None or not goal:
        return None
    at_least = goal.startswith(">=")
    match = re.fullmatch(r"(?:>= *)?(floor \+ )?([\d.]+) (.*)", goal)
    if not match:
        sys.exit(f"bench: the goal '{goal}' is none")
    beyond, amount, unit = match.groups()
    if (beyond or unit == "floors") and floor is None:
        return None
    limit = float(amount) * (floor if unit == "floors" else unit_and_factor(unit)[1]) + (floor if beyond else 0)
    return figure >= limit if at_least else figure <= limit


def table(rows, peers, goals):
    """Lines of cells; a figure that misses its goal is marked."""
    lines = [["work", "goal", "figure", "beside a thread", "peer", "floor", "ratio", "counted"]]
    for work in sorted(rows, key=goals.place):
        row, goal = rows[work], goals.of(work)
        if work in goals.floors:
            continue
        if row.error:
            lines.append([work, "", row.error, "", "", "", "", ""])
            continue
        named = rows.get(goal.get("floor", ""))
        floor = row.floor() if row.floors else named.figure() if named else None

        def cell(others, wanted):
            text = shown(row.figure(others), row.unit)
            return text + " (!)" if is_met(wanted, row.figure(others), floor) is False else text

        limits = goal.get("counters", {})
        counted = []
        for name, values in row.counters.items():
            value = statistics.median(values)
            missed = " (!)" if name in limits and value > limits[name] else ""
            counted.append(f"{name} {number(value)}{missed}")
        wanted = goal.get("goal", "")
        beside = goal.get("beside", wanted)
        peer = peers.get(work)
        lines.append([work, wanted + (f", {beside} beside" if beside != wanted else ""), cell(0, wanted),
                      cell(1, beside), shown(peer.figure() if peer else None, row.unit), shown(floor, row.unit),
                      number(float(f"{row.figure() / floor:.3g}")) if floor and row.figure() else "",
                      ", ".join(counted)])
    return lines


def comparison(before, after, name):
    lines = [["work", name, "here", "change", "least, " + name, "least, here"]]
    for work in before:
        for others in (0, 1):
            old, new = before[work], after.get(work)
            if new is None or not old.figures[others] or not new.figures[others] or old.unit != new.unit:
                continue
            was, became = old.figure(others), new.figure(others)
            change = f"{(became / was - 1) * 100:+.1f} %" if was else ""
            lines.append([work + (", beside a thread" if others else ""), shown(was, old.unit),
                          shown(became, new.unit), change, shown(min(old.figures[others]), old.unit),
                          shown(min(new.figures[others]), new.unit)])
    return lines


def print_lines(lines):
    widths = [max(len(line[column]) for line in lines) for column in range(len(lines[0]))]
    lines.insert(1, ["-" * width for width in widths])
    for line in lines:
        print("| " + " | ".join(cell.ljust(width) for cell, width in zip(line, widths)) + " |")


def main():
    parser = argparse.ArgumentParser(description="Runs the benchmark programs and prints one table.")
    parser.add_argument("--programs", type=pathlib.Path, required=True, help="folder of the programs")
    parser.add_argument("--json", type=pathlib.Path, required=True, help="folder for what they write")
    parser.add_argument("--against", type=pathlib.Path, help="folder of another revision's programs")
    parser.add_argument("--name", default="before", help="what to call that revision")
    parser.add_argument("--rounds", type=int, default=3, help="how often each program runs; medians are shown")
    options, arguments = parser.parse_known_args()

    rows, peers, before = {}, {}, {}
    for program in programs(options.programs):
        peer = program.name.startswith("bench_peer_")
        other = options.against / program.name if options.against else None
        if other and (peer or not other.exists()):
            continue
        for turn in range(options.rounds):
            # In turn, and each first every other time, so that what changes on the machine hits both.
            pairs = [(program, options.json, peers if peer else rows)]
            if other:
                pairs.insert(turn % 2, (other, options.json / "before", before))
            for each, folder, into in pairs:
                json_file = folder / f"{each.name}.{turn + 1}.json"
                if run(each, json_file, arguments):
                    collect(json_file, into)
    goals = Goals(pathlib.Path(__file__).with_name("goals.json"))
    lines = comparison(before, rows, options.name) if options.against else table(rows, peers, goals)
    (options.json / "table.json").write_text(json.dumps([dict(zip(lines[0], line)) for line in lines[1:]], indent=1))
    print_lines(lines)


if __name__ == "__main__":
    main()
