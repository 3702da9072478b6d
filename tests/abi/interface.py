"""The binary interface that abidw wrote about a library, one line a function, type or value, sorted.

usage: interface.py FILE
"""

import sys
import xml.etree.ElementTree as xml

corpus = xml.parse(sys.argv[1]).getroot()
types = {each.get("id"): each for each in corpus.iter() if each.get("id")}


def signature(function):
    returned = function.find("return")
    parameters = ["..." if each.get("is-variadic") else name(each.get("type-id")) for each in function.iter("parameter")]
    return f"{name(returned.get('type-id'))}({', '.join(parameters)})"


def name(number):
    """A type as one would write it; what has no name of its own is spelt out."""
    what = types[number]
    if what.tag == "pointer-type-def":
        target = types[what.get("type-id")]
        return signature(target) if target.tag == "function-type" else name(what.get("type-id")) + "*"
    if what.tag == "reference-type-def":
        return name(what.get("type-id")) + "&"
    if what.tag == "qualified-type-def":
        return name(what.get("type-id")) + " const"
    if what.tag == "function-type":
        return signature(what)
    if what.tag == "array-type-def":
        return f"{name(what.get('type-id'))}[{what.get('size-in-bits')} bits]"
    return what.get("name")


lines = {f"symbol {each.get('name')}" for each in corpus.iter("elf-symbol")}
for function in corpus.iter("function-decl"):
    symbol = function.get("mangled-name")
    if f"symbol {symbol}" in lines:
        lines.remove(f"symbol {symbol}")  # the function says more
    lines.add(f"function {symbol or function.get('name')} {signature(function)}")
for alias in corpus.iter("typedef-decl"):
    lines.add(f"type {alias.get('name')} {name(alias.get('type-id'))}")
for basic in corpus.iter("type-decl"):
    lines.add(f"type {basic.get('name')} {basic.get('size-in-bits')} bits")
for enumeration in corpus.iter("enum-decl"):
    for value in enumeration.iter("enumerator"):
        lines.add(f"value {enumeration.get('name')} {value.get('name')} {value.get('value')}")
for record in corpus.iter("class-decl"):
    members = [f"{name(each.find('var-decl').get('type-id'))} {each.find('var-decl').get('name')} at "
               f"{each.get('layout-offset-in-bits')}" for each in record.iter("data-member")]
    virtual = [f"{each.find('function-decl').get('name')} virtual {each.get('vtable-offset')}"
               for each in record.iter("member-function") if each.get("vtable-offset")]
    lines.add(f"struct {record.get('name')} {record.get('size-in-bits', '?')} bits: {'; '.join(members + virtual)}")
print("\n".join(sorted(lines)))
