#include "nodemap/NodeMap.h"

#include "nodes/FormulaSet.h"
#include "nodes/NodeBase.h"
#include "nodes/PortNode.h"

namespace GENAPI_NAMESPACE {

using GENICAM_NAMESPACE::gcstring;
using GENICAM_NAMESPACE::gcstring_vector;
using GENICAM_NAMESPACE::Version_t;

NodeMap::NodeMap(LoadedDescription loaded, const gcstring& deviceName)
    : device_(std::make_unique<Device>(std::move(loaded), deviceName, *this)) {}

NodeMap::~NodeMap() {
  endObservers_.end();
  device_->dispatch.removeAllCallbacks();  // while the nodes they point to still live
}

INode* NodeMap::publicNode(NodeIndex index) const { return &device_->nodes.node(index); }

void NodeMap::GetNodes(NodeList_t& Nodes) const {
  Nodes.clear();
  Nodes.reserve(description().nodeCount());
  for (NodeIndex index = 0; index < description().nodeCount(); ++index) Nodes.push_back(publicNode(index));
}

INode* NodeMap::GetNode(const gcstring& Key) const {
  std::string_view name = Key.view();
  int wanted = _UndefinedNameSpace;
  if (const size_t colon = name.find("::"); colon != std::string_view::npos) {
    const std::string_view prefix = name.substr(0, colon);
    if (prefix == "Std")
      wanted = Standard;
    else if (prefix == "Cust")
      wanted = Custom;
    else
      return nullptr;
    name.remove_prefix(colon + 2);
  }
  const NodeIndex index = description().indexOf(name);
  if (index == kNoNode) return nullptr;
  if (wanted != _UndefinedNameSpace && description().node(index).nameSpace != wanted) return nullptr;
  return publicNode(index);
}

void NodeMap::InvalidateNodes() const {
  device_->dispatch.operate(kNoNode, [&] { device_->dispatch.invalidatedAll(); });
}

bool NodeMap::Connect(IPort* pPort, const gcstring& PortName) const {
  const NodeIndex index = description().indexOf(PortName.view());
  if (index == kNoNode || description().node(index).type != NodeType::Port) return false;
  device_->dispatch.operate(kNoNode, [&] { static_cast<PortNode&>(device_->nodes.node(index)).connect(pPort); });
  return true;
}

bool NodeMap::Connect(IPort* pPort) const { return Connect(pPort, "Device"); }

void NodeMap::Poll(int64_t ElapsedTime) {
  if (ElapsedTime < 0) refuse<InvalidArgumentException>("Poll: elapsed time {} is negative", ElapsedTime);
  if (description().polledNodes().empty()) return;
  device_->dispatch.operate(kNoNode, [&] {
    if (!pollClock_) pollClock_ = std::make_unique<PollClock>(*device_);
    const Dispatch::Polling polling(device_->dispatch);
    pollClock_->advance(ElapsedTime);
  });
}

void NodeMap::SetCacheCheck(ICacheCheck* pCheck) {
  const AutoLock lock(GetLock());
  device_->evaluation.setCheck(pCheck);
}

bool NodeMap::ParseSwissKnifes(gcstring_vector* pErrorList) const {
  bool sound = true;
  for (NodeIndex index = 0; index < description().nodeCount(); ++index) {
    if (!hasFormulas(description().node(index).type)) continue;
    for (const std::string& defect : FormulaSet::of(description(), index).defects()) {
      sound = false;
      if (pErrorList) pErrorList->push_back(gcstring(std::string_view(defect)));
    }
  }
  return sound;
}

gcstring NodeMap::GetModelName() const { return gcstring(description().device().modelName); }
gcstring NodeMap::GetVendorName() const { return gcstring(description().device().vendorName); }
gcstring NodeMap::GetToolTip() const { return gcstring(description().device().toolTip); }
gcstring NodeMap::GetStandardNameSpace() const { return gcstring(description().device().standardNameSpace); }
gcstring NodeMap::GetProductGuid() const { return gcstring(description().device().productGuid); }
gcstring NodeMap::GetVersionGuid() const { return gcstring(description().device().versionGuid); }
void NodeMap::GetSchemaVersion(Version_t& Version) const { Version = description().device().schemaVersion; }
void NodeMap::GetDeviceVersion(Version_t& Version) const { Version = description().device().deviceVersion; }

void NodeMap::GetGenApiVersion(Version_t& Version, uint16_t& Build) const {
  Version.Major = 3;
  Version.Minor = 4;
  Version.SubMinor = 2;
  Build = 0;
}

void NodeMap::GetFindings(std::vector<Finding>& Findings) const {
  for (const FindingRecord& each : description().findings()) {
    const std::string_view node = each.node == kNoNode ? std::string_view() : description().node(each.node).name();
    Findings.push_back({each.severity, each.line, gcstring(node), gcstring(std::string_view(each.element)),
                        gcstring(std::string_view(each.reason))});
  }
  for (NodeIndex index = 0; index < description().nodeCount(); ++index) {
    if (!hasFormulas(description().node(index).type)) continue;
    const FormulaSet* formulas = FormulaSet::ifKnown(description(), index);
    if (!formulas) continue;
    for (const std::string& defect : formulas->defects()) {
      Findings.push_back({svDefect, description().lineOf(index), gcstring(description().node(index).name()), "Formula",
                          gcstring(std::string_view(defect))});
    }
  }
}

void NodeMap::chunkPorts(NodeList_t& nodes) {
  nodes.clear();
  for (const NodeIndex index : description().chunkPorts()) nodes.push_back(publicNode(index));
}

void NodeMap::eventNodes(NodeList_t& nodes) {
  nodes.clear();
  for (const NodeIndex index : description().eventNodes()) nodes.push_back(publicNode(index));
}

void NodeMap::dropPortSilently(INode* portNode, bool accessMayChange) {
  Dispatch& dispatch = device_->dispatch;
  dispatch.operate(kNoNode, [&] { dispatch.portChanged(static_cast<NodeBase*>(portNode)->index(), accessMayChange); });
}

void NodeMap::changeTogether(LiveChange& change) {
  Dispatch& dispatch = device_->dispatch;
  dispatch.operate(kNoNode, [&] {
    for (INode* each : change.apply())
      dispatch.invalidated(static_cast<NodeBase*>(each)->index(), change.accessMayChange);
  });
}

std::string NodeMap::pathTo(INode* node) const { return static_cast<NodeBase*>(node)->path(); }

}  // namespace GENAPI_NAMESPACE
