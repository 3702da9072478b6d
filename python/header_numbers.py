#!/usr/bin/env python3
"""Prints the module oxgenapi._numbers from the public headers:

    python3 python/header_numbers.py include/OxGenApi/Types.h camera/include/OxCamera/CameraTypes.h \\
        camera/include/OxCamera/ImageTypes.h >python/oxgenapi/_numbers.py

A test compares the two, so that no number is written twice by hand."""

import re
import sys

CODES = {"Code": re.compile(r"#define OXGENAPI_E_(\w+)[\s\\]+UINT32_C\((\w+)\)"),
         "CameraCode": re.compile(r"#define OXCAMERA_E_(\w+)[\s\\]+UINT32_C\((\w+)\)")}
ENUMERATION = re.compile(r"OX_ENUM\((\w+), \w+\)\{(.*?)\n\};", re.S)
ITEM = re.compile(r"\b([A-Z]+)_(\w+) = (-?\d+),")
SHOWN = {"TNodeType": "NodeType", "TNodeInfo": "NodeInfo", "TNodeList": "NodeList", "TNodeMapInfo": "NodeMapInfo",
         "TVerifyMode": "VerifyMode", "TFirmwareUpdateInfo": "FirmwareUpdateInfo", "TCameraState": "CameraState", "TCameraReach": "Reach",
         "TCameraInfo": "CameraInfo", "TImageState": "ImageState", "TPayloadKind": "PayloadKind", "TPartKind": "PartKind",
         "TByteOrder": "ByteOrder"}
ABOUT = {"Code": "Result codes; Error.code is one of them, or another number that a port gave.",
         "CameraCode": "Result codes of cameras, besides those of Code.",
         "Reach": "Whether a listed camera can be opened.",
         "ByteOrder": "How words of four bytes are moved: old network cameras mean registers, newer ones memory.",
         "VerifyMode": "Which value calls of a node are checked against its limits."}
RENAMED = {"None": "Nothing"}  # what Python does not take as a name


def enumeration(name, items):
    about = f'    """{ABOUT[name]}"""\n\n' if name in ABOUT else ""
    return f"class {name}(enum.IntEnum):\n{about}" + "".join(f"    {item} = {number}\n" for item, number in items)


def module(header):
    parts = ['"""Numbers of the flat interfaces, made from their headers by header_numbers.py."""\n\nimport enum\n']
    parts += [enumeration(name, codes.findall(header)) for name, codes in CODES.items()]
    for name, body in ENUMERATION.findall(header):
        if name in SHOWN:
            parts.append(enumeration(SHOWN[name], [(RENAMED.get(item, item), number) for _, item, number in ITEM.findall(body)
                                                   if item != "Invalid"]))
    return "\n\n".join(parts)


if __name__ == "__main__":
    print(module("".join(open(path, encoding="utf-8").read() for path in sys.argv[1:])), end="")
