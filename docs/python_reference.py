#!/usr/bin/env python3
"""Writes the reference of the Python package from its docstrings: python_reference.py PAGE"""

import enum
import inspect
import re
import sys

import oxgenapi

MADE_BY_CALLERS = {"Camera", "NodeMap", "FirmwareUpdater", "SimulatedCamera", "Error"}
HIDDEN = {"Code": "The result codes, see [errors](errors.md)."}


def paragraph(text):
    """A docstring for Markdown: indented examples stay code."""
    lines = inspect.cleandoc(text or "").split("\n")
    return "\n".join(line if line.startswith("    ") else line.replace("<", "\\<") for line in lines).strip("\n") + "\n\n"


def signature(name, function):
    text = re.sub(r"(: |-> )'([^']*)'", r"\1\2", str(inspect.signature(function)))
    return name + text.replace("(self, ", "(").replace("(self)", "()").replace("''", '""')  # '' would end the code


def members(kind):
    """Name, heading and docstring of what the class itself has."""
    for name, member in vars(kind).items():
        if name.startswith("_"):
            continue
        if isinstance(member, property):
            result = inspect.signature(member.fget).return_annotation
            typed = "" if result is inspect.Signature.empty else f": {result}"
            yield name + typed + ("" if member.fset is None else ", can be set"), member.__doc__
        elif isinstance(member, (classmethod, staticmethod)):
            yield signature(name, member.__func__).replace("(cls: type[Map], ", "("), member.__doc__
        elif inspect.isfunction(member):
            yield signature(name, member), member.__doc__


def class_text(name, kind):
    base = next((base.__name__ for base in kind.__mro__[1:] if base.__name__ in oxgenapi.__all__), "")
    text = f"## {name}" + (f" ({base})" if base else "") + "\n\n" + paragraph(kind.__doc__)
    if "__init__" in vars(kind) and name in MADE_BY_CALLERS:
        text += f"`{signature(name, kind.__init__).replace(' -> None', '')}`\n\n"
    if issubclass(kind, enum.IntEnum):
        return text + ", ".join(f"`{item.name}`" for item in kind) + "\n\n"
    if issubclass(kind, tuple):
        return text + ", ".join(f"`{field}`" for field in kind._fields) + "\n\n"
    inherited = vars(kind.__mro__[1]) if kind.__mro__[1].__name__.startswith("_") else {}
    for heading, about in members(type(name, (), {**inherited, **vars(kind)}) if inherited else kind):
        text += f"`{heading}`\n\n" + paragraph(about)
    return text


def main():
    text = f"# The Python package oxgenapi {oxgenapi.__version__}\n\n" + paragraph(oxgenapi.__doc__)
    for name in sorted(oxgenapi.__all__):
        item = getattr(oxgenapi, name)
        if name in HIDDEN:
            text += f"## {name}\n\n{HIDDEN[name]}\n\n"
        elif inspect.isclass(item):
            text += class_text(name, item)
        else:
            text += f"## {name}\n\n`{signature(name, item)}`\n\n" + paragraph(item.__doc__)
    with open(sys.argv[1], "w") as page:
        page.write(re.sub("\n{3,}", "\n\n", text))


main()
