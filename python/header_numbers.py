#!/usr/bin/env python3
"""Prints the module oxgenapi._numbers from the public header: header_numbers.py include/OxGenApi/Types.h

    python3 python/header_numbers.py include/OxGenApi/Types.h >python/oxgenapi/_numbers.py

A test compares the two, so that no number is written twice by hand."""

import re
import sys

CODES = re.compile(r"#define OXGENAPI_E_(\w+)[\s\\]+UINT32_C\((\w+)\)")
ENUMERATION = re.compile(r"OX_ENUM\((\w+), \w+\)\{(.*?)\n\};", re.S)
ITEM = re.compile(r"\b([A-Z]+)_(\w+) = (-?\d+),")
SHOWN = {"TNodeType": "NodeType", "TNodeInfo": "NodeInfo", "TNodeList": "NodeList", "TNodeMapInfo": "NodeMapInfo",
         "TVerifyMode": "VerifyMode", "TFirmwareUpdateInfo": "FirmwareUpdateInfo"}
ABOUT = {"Code": "Result codes; Error.code is one of them, or another number that a port gave.",
         "VerifyMode": "Which value calls of a node are checked against its limits."}
RENAMED = {"None": "Nothing"}  # what Python does not take as a name


def enumeration(name, items):
    about = f'    """{ABOUT[name]}"""\n\n' if name in ABOUT else ""
    return f"class {name}(enum.IntEnum):\n{about}" + "".join(f"    {item} = {number}\n" for item, number in items)


def module(header):
    parts = ['"""Numbers of the flat interface, made from Types.h by header_numbers.py."""\n\nimport enum\n',
             enumeration("Code", CODES.findall(header))]
    for name, body in ENUMERATION.findall(header):
        if name in SHOWN:
            parts.append(enumeration(SHOWN[name], [(RENAMED.get(item, item), number) for _, item, number in ITEM.findall(body)
                                                   if item != "Invalid"]))
    return "\n\n".join(parts)


if __name__ == "__main__":
    with open(sys.argv[1], encoding="utf-8") as file:
        print(module(file.read()), end="")
