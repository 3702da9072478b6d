// One device: its description, what is remembered of it, and its nodes. What every node works with.
#pragma once
#include <memory>
#include <string>

#include "Base/GCString.h"
#include "description/DescriptionLoader.h"
#include "evaluation/Dispatch.h"
#include "evaluation/Evaluation.h"
#include "evaluation/Registers.h"
#include "evaluation/State.h"
#include "formula/FormulaScratch.h"
#include "nodes/NodeArena.h"

namespace GENAPI_NAMESPACE {

class INodeMap;

struct Device {
  Device(LoadedDescription loaded, const GENICAM_NAMESPACE::gcstring& deviceName, INodeMap& itsMap)
      : shared(std::move(loaded.description)),
        description(*shared),
        sourceName(std::move(loaded.sourceName)),
        name(deviceName),
        map(itsMap),
        state(description.nodeCount()),
        evaluation(description, state),
        registers(state, evaluation),
        dispatch(state, evaluation),
        nodes(*this) {}
  Device(const Device&) = delete;
  Device& operator=(const Device&) = delete;

  // What was imposed on the node, or null.
  const Imposed* imposed(NodeIndex node) const {
    return state.nodes[node].marks & kImposed ? &state.imposed.find(node)->second : nullptr;
  }

  const std::shared_ptr<const Description> shared;
  const Description& description;
  const std::string sourceName;
  const GENICAM_NAMESPACE::gcstring name;
  INodeMap& map;
  State state;
  Evaluation evaluation;
  Registers registers;
  Dispatch dispatch;
  formula::Scratch formulaScratch;
  NodeArena nodes;
};

}  // namespace GENAPI_NAMESPACE
