// The list types in which nodes and values are handed out.
#pragma once
#include <vector>

#include "Base/GCTypes.h"

namespace GENAPI_NAMESPACE {

class INode;
class IValue;

using node_vector = std::vector<INode*>;
using value_vector = std::vector<IValue*>;
using NodeList_t = node_vector;
using FeatureList_t = value_vector;

}  // namespace GENAPI_NAMESPACE
