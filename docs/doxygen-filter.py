"""Lets Doxygen read the C headers' comments: prints a header with each comment in Doxygen's form. A declaration without a
comment of its own (the wide twin of a function) shares the one above it."""

import re
import sys

DECLARATION = re.compile(r"(OXGENAPI_EXPORT|OXBASE_API|typedef|OX_ENUM)\b")
ITEM = re.compile(r"^ \*  ? ?(\w+(?:, \w+)*)  +(\S.*)$")


def documented(comment):
    """The lines of a comment for Doxygen: names in the first column become a list, other indented text is kept as it is."""
    lines, listing = [], False
    for number, line in enumerate(comment):
        line = line.replace("/*", "/**", 1) if number == 0 else line
        item = ITEM.match(line)
        if item:
            line = f" * - **{item[1]}**: {item[2]}"
            listing = True
        elif listing and re.match(r"^ \* {6,}\S", line):
            line = " *   " + line[2:].strip()
        elif number > 0 and listing and line.strip() not in ("*", "*/"):
            lines.append(" *")
            listing = False
        if re.match(r"^ \* *(Errors|Returns)\b", line):
            lines.append(" *")
        lines.append(re.sub(r"(?<![\w`])([<>@#\\])", r"\\\1", line) if "**" not in line[:6] else line)
    return lines


def main(path):
    comment, collecting, last, fresh = [], False, [], False
    text = open(path).read().split("\n")
    for number, line in enumerate(text):
        if not collecting and line.startswith("/*") and not line.startswith("/* ----"):
            collecting, comment = True, []
        if collecting:
            comment.append(line)
            if "*/" in line:
                collecting, fresh = False, True
                last = documented(comment)
                if number < 40 and text[0].startswith("/*") and len(comment) > number:
                    last[0] = last[0].replace("/**", "/** @file\n *", 1)
                print("\n".join(last))
            continue
        if DECLARATION.match(line) and not fresh and last:
            print("\n".join(last))
        fresh = False
        if re.match(r"^(/\* ----|#|$|typedef struct \w+\* )", line):
            last = []
        print(re.sub(r"(\S.*)/\* (.*?\*/)$", r"\1/**< \2", line))


main(sys.argv[1])
