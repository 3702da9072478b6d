/// @file
/// The features of a device: description, ports, nodes, events, chunks, settings, files, snapshots.
#ifndef OXGENAPI_CPP_NODEMAP_HPP
#define OXGENAPI_CPP_NODEMAP_HPP

#include <string>
#include <vector>

#include "OxGenApi/NodeMap.h"
#include "OxGenApi/cpp/Features.hpp"
#include "OxGenApi/cpp/Node.hpp"
#include "OxGenApi/cpp/Registers.hpp"
#include "OxGenApi/cpp/Settings.hpp"

namespace oxgenapi {

/// A node map handle. Copies stand for the same node map.
class NodeMap {
 public:
  /// An empty node map.
  NodeMap() {
    NODEMAP raw = nullptr;
    check(CreateNodeMap(raw));
    handle_ = Handle<NODEMAP>::adopt(raw);
  }
  explicit NodeMap(Handle<NODEMAP> handle) noexcept : handle_(std::move(handle)) {}

  NODEMAP handle() const noexcept { return handle_.get(); }

  // ---- Description and ports ----

  /// Loads a description in place of the one before; ports are connected anew afterwards. XML or a zip archive.
  void loadFile(const std::string& path) { check(NMLoadXMLFile(handle(), path.c_str()), path); }
  void loadText(const std::string& xml) { check(NMLoadXMLString(handle(), xml.c_str())); }
  /// Register accesses through the named port go to `registers`, which must outlive the connection.
  void connect(Registers& registers, const std::string& port = "Device") {
    connect(detail::readRegisters, detail::writeRegisters, detail::registersAccess, &registers, port);
  }
  /// The same with callbacks; each may be null.
  void connect(TReadMem read, TWriteMem write, TPortAccessMode access, void* user, const std::string& port = "Device") {
    check(NMConnectPortEx(handle(), read, write, access, user, port.c_str()), port);
  }

  // ---- Nodes and information ----

  /// Throws when there is none. Keep what you use often: a lookup costs as much as two cached reads.
  Node node(const std::string& name) const {
    const Result<Node> found = tryNode(name);
    check(found.code(), name);
    return *found;
  }
  Node operator[](const std::string& name) const { return node(name); }
  Result<Node> tryNode(const std::string& name) const noexcept {
    NODE raw = nullptr;
    const uint32_t code = NMGetNode(handle(), name.c_str(), raw);
    return {code, Node(Handle<NODE>::adopt(raw))};
  }
  // A feature as what it is; throws FEATURE_TYPE where it is something else.
  Integer integer(const std::string& name) const { return Integer(node(name)); }
  Float real(const std::string& name) const { return Float(node(name)); }
  Boolean boolean(const std::string& name) const { return Boolean(node(name)); }
  String text(const std::string& name) const { return String(node(name)); }
  Enumeration enumeration(const std::string& name) const {
    const Node found = node(name);
    return Enumeration(found, found.type() == NT_Enumeration ? related(found, NL_EnumEntries) : std::vector<Node>());
  }
  Command command(const std::string& name) const { return Command(node(name)); }
  Register bytes(const std::string& name) const { return Register(node(name)); }

  /// The nodes behind Node::list. The text() of an enumeration's entry is its symbolic name.
  std::vector<Node> related(const Node& to, TNodeList relation) const {
    std::vector<Node> nodes;
    for (const std::string& name : to.list(relation)) nodes.push_back(node(name));
    return nodes;
  }
  uint32_t nodeCount() const {
    uint32_t count = 0;
    check(NMNodeCount(handle(), count));
    return count;
  }
  /// The name of a node, in description order, below nodeCount().
  std::string nodeName(uint32_t index) const {
    return readText([&](char* to, size_t& size) { return NMListNode(handle(), index, to, size); });
  }
  std::vector<std::string> nodeNames() const {
    std::vector<std::string> names(nodeCount());
    for (uint32_t index = 0; index < names.size(); ++index) names[index] = nodeName(index);
    return names;
  }
  std::string infoText(TNodeMapInfo item) const {
    return readText([&](char* to, size_t& size) { return NMInfoAsString(handle(), item, to, size); });
  }
  int64_t infoInteger(TNodeMapInfo item) const {
    int64_t value = 0;
    check(NMInfoAsInteger(handle(), item, &value));
    return value;
  }
  /// Advances the clocks of polled nodes by the milliseconds since the last call.
  void poll(int32_t elapsedMs) const { check(NMPollNodes(handle(), elapsedMs)); }

  // ---- Events and chunks ----

  void deliverEvent(const TEventData& event) const { check(NMDeliverEvent(handle(), &event)); }
  void deliverEvent(const TEventDataEx& event) const {
    const uint32_t code = NMDeliverEventEx(handle(), &event);
    if (code != OXGENAPI_OK)
      throw lastError(code, event.EventID == nullptr ? "" : "event " + std::string(event.EventID));
  }
  /// Attached chunks are read in place: detach them, or attach others, before their buffer goes.
  void attachChunks(const TChunkData* chunks, size_t count) const { check(NMAttachChunkList(handle(), chunks, count)); }
  /// Moves all attached chunks to another buffer of the same layout.
  void updateChunks(void* buffer) const { check(NMUpdateChunks(handle(), buffer)); }
  void detachChunks() const { check(NMDetachAllChunks(handle())); }

  // ---- Settings: all streamable features, or the named ones; what could not be done comes back as problems ----

  Problems saveSettings(const std::string& file, const std::vector<std::string>& features = {},
                        OnProblem then = OnProblem::goOn) const {
    detail::ProblemCollector collector{{}, then};
    const std::string names = joined(features);
    collector.finish(features.empty() ? NMSaveSet(handle(), file.c_str(), detail::ProblemCollector::collect, &collector)
                                      : NMSaveSetEx(handle(), file.c_str(), names.c_str(),
                                                    detail::ProblemCollector::collect, &collector),
                     file);
    return std::move(collector.problems);
  }
  /// `problems` may be null.
  std::string settings(const std::vector<std::string>& features = {}, Problems* problems = nullptr) const {
    const std::string names = joined(features);
    size_t room = 256 * 1024;  // takes a table of 4096 lines: another try would read the device again
    while (true) {
      detail::ProblemCollector collector{{}, OnProblem::goOn};
      std::string text(room, '\0');
      size_t size = room;
      check(features.empty()
                ? NMSaveSetString(handle(), text.data(), &size, detail::ProblemCollector::collect, &collector)
                : NMSaveSetStringEx(handle(), text.data(), &size, names.c_str(), detail::ProblemCollector::collect,
                                    &collector));
      if (size < room) {
        text.resize(size == 0 ? 0 : size - 1);  // the size counts a zero
        if (problems != nullptr) *problems = std::move(collector.problems);
        return text;
      }
      room *= 4;
    }
  }
  /// Applies a file's lines. `validate`: reads each value back and compares.
  Problems loadSettings(const std::string& file, bool validate = false, OnProblem then = OnProblem::goOn) const {
    detail::ProblemCollector collector{{}, then};
    collector.finish(NMLoadSetEx(handle(), file.c_str(), validate, detail::ProblemCollector::collect, &collector),
                     file);
    return std::move(collector.problems);
  }
  Problems loadSettingsText(const std::string& text, bool validate = false, OnProblem then = OnProblem::goOn) const {
    detail::ProblemCollector collector{{}, then};
    collector.finish(NMLoadSetString(handle(), text.c_str(), validate, detail::ProblemCollector::collect, &collector));
    return std::move(collector.problems);
  }

  // ---- Device files: `deviceFile` is an entry of FileSelector ----

  void uploadFile(const std::string& deviceFile, const std::string& path) const {
    check(NMUploadFile(handle(), deviceFile.c_str(), path.c_str()), deviceFile);
  }
  void upload(const std::string& deviceFile, const void* bytes, size_t size) const {
    check(NMUploadFileMemory(handle(), deviceFile.c_str(), bytes, size), deviceFile);
  }
  void downloadFile(const std::string& deviceFile, const std::string& path) const {
    checkOpened(NMDownloadFile(handle(), deviceFile.c_str(), path.c_str()), deviceFile);
  }
  /// In bytes, as the device tells it; fails with OXGENAPI_E_UNSPECIFIED where it does not.
  size_t fileSize(const std::string& deviceFile) const {
    size_t size = 0;
    check(NMDownloadFileMemory(handle(), deviceFile.c_str(), nullptr, &size), deviceFile);
    return size;
  }
  std::vector<std::byte> download(const std::string& deviceFile) const {
    size_t size = fileSize(deviceFile);
    std::vector<std::byte> bytes(size);
    if (size > 0) checkOpened(NMDownloadFileMemory(handle(), deviceFile.c_str(), bytes.data(), &size), deviceFile);
    bytes.resize(size);
    return bytes;
  }

 private:
  template <class Call>
  std::string readText(Call call) const {
    std::string text;
    check(detail::readText(text, call));
    return text;
  }
  // The one failure of a download that leaves no text.
  static void checkOpened(uint32_t code, const std::string& deviceFile) {
    if (code == OXGENAPI_E_DEVICE_FILE) throw Error(code, "The device does not open the file for reading", deviceFile);
    check(code, deviceFile);
  }
  static std::string joined(const std::vector<std::string>& features) {
    std::string names;
    for (const std::string& feature : features) names += (names.empty() ? "" : "|") + feature;
    return names;
  }

  Handle<NODEMAP> handle_;
};

/// Chunks of an image, attached for as long as this object lives.
class AttachedChunks {
 public:
  AttachedChunks(NodeMap map, const TChunkData* chunks, size_t count) : map_(std::move(map)) {
    try {
      map_.attachChunks(chunks, count);
    } catch (...) {
      NMDetachAllChunks(map_.handle());  // those before the one that failed
      throw;
    }
  }
  AttachedChunks(const AttachedChunks&) = delete;
  AttachedChunks& operator=(const AttachedChunks&) = delete;
  ~AttachedChunks() { NMDetachAllChunks(map_.handle()); }

 private:
  NodeMap map_;
};

/// A JSON document of what nodes were when they were pushed.
class NodeMapStream {
 public:
  explicit NodeMapStream(const NodeMap& map) {
    NODEMAPSTREAM raw = nullptr;
    check(NMCreateStream(map.handle(), ST_Json, &raw));
    handle_ = Handle<NODEMAPSTREAM>::adopt(raw);
  }
  void push(const Node& node) const {
    const uint32_t code = NMStreamPush(handle_.get(), node.handle());
    if (code != OXGENAPI_OK) throw node.failure(code);
  }
  std::string dump() const {
    std::string text;
    check(detail::readText(text, [&](char* to, size_t& size) { return NMStreamDump(handle_.get(), to, &size); }));
    return text;
  }

 private:
  Handle<NODEMAPSTREAM> handle_;
};

}  // namespace oxgenapi

#endif
