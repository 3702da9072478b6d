// How a node's value, type and access mode are shown, in text and in JSON.
#pragma once

#include <string>

#include "NodeMap.h"
#include "Output.h"

namespace tool {

// "integer", "float", "enumeration", ...
std::string typeName(TNodeType type);
// "NI", "NA", "RO", "WO", "RW"
std::string accessName(int64_t access);

// True for nodes that have a value of their own: not for categories, commands, ports and plain nodes.
bool hasValue(TNodeType type);

// The value in the JSON type that fits: a boolean, an integer with all its bits, a number, else a string; a register's
// bytes as hexadecimal text; for a command whether it is done. Throws Failure.
Json valueJson(const Node& node);
// The same for people: with its unit, hexadecimal where the description asks for it, a string in quotes.
std::string valueText(const Node& node);

}  // namespace tool
