// What can be asked about a node, in four forms.
#pragma once
#include <cstdint>
#include <string>

#include "TypedNode.h"

namespace orxGenApi {

// Each throws orx_error for an item that is unknown, has no such form, or is not an item of this kind of node.
bool infoAsBoolean(const TypedNode& node, TNodeInfo info);
int64_t infoAsInteger(const TypedNode& node, TNodeInfo info);
double infoAsFloat(const TypedNode& node, TNodeInfo info);
std::string infoAsText(const TypedNode& node, TNodeInfo info);

// Whether an item is text by nature, so that only its text form exists; and whether it has a text form.
bool isTextInfo(TNodeInfo info);
bool hasTextForm(TNodeInfo info);

}  // namespace orxGenApi
