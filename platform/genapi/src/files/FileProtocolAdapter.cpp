#include <algorithm>

#include "GenApi/IEnumEntry.h"
#include "GenApi/INode.h"
#include "files/Cleanup.h"
#include "files/FileProtocolNodes.h"
#include "text/Refusal.h"

namespace GENAPI_NAMESPACE {

using GENICAM_NAMESPACE::OutOfRangeException;

namespace {

template <typename T>
bool find(INodeMap& map, const char* name, T*& node, std::string& missing) {
  node = dynamic_cast<T*>(map.GetNode(name));
  if (!node) missing = name;
  return node != nullptr;
}

}  // namespace

FileProtocolAdapter::FileProtocolAdapter() : nodes_(std::make_unique<Nodes>()) {}

FileProtocolAdapter::~FileProtocolAdapter() = default;

bool FileProtocolAdapter::attach(INodeMap* pNodeMap) {
  auto nodes = std::make_unique<Nodes>();
  nodes_.swap(nodes);
  if (!pNodeMap) return false;
  Nodes& n = *nodes_;
  std::string& missing = n.missing;
  n.attached = find(*pNodeMap, "FileSelector", n.file.node, missing) &&
               find(*pNodeMap, "FileOperationSelector", n.operation.node, missing) &&
               find(*pNodeMap, "FileOpenMode", n.openMode, missing) &&
               find(*pNodeMap, "FileOperationStatus", n.operationStatus, missing) &&
               find(*pNodeMap, "FileOperationExecute", n.execute, missing) &&
               find(*pNodeMap, "FileAccessOffset", n.offset, missing) &&
               find(*pNodeMap, "FileAccessLength", n.length, missing) &&
               find(*pNodeMap, "FileOperationResult", n.result, missing) &&
               find(*pNodeMap, "FileAccessBuffer", n.buffer, missing);
  if (!n.attached) return false;
  if (IEnumEntry* success = n.operationStatus->GetEntryByName("Success")) {
    n.hasSuccess = true;
    n.successValue = success->GetValue();
  }
  return true;
}

bool FileProtocolAdapter::openFile(const char* pFileName, std::ios_base::openmode mode) {
  nodes_->require(pFileName);
  const bool in = (mode & std::ios_base::in) != 0;
  const bool out = (mode & std::ios_base::out) != 0;
  const char* openMode = in && out ? "ReadWrite" : out ? "Write" : "Read";
  if ((!in && !out) || (in && out && !nodes_->openMode->GetEntryByName(openMode))) {
    nodes_->outcome =
        in && out ? "the device has no FileOpenMode ReadWrite" : "neither reading nor writing is asked for";
    return false;
  }
  nodes_->select(pFileName, "Open");
  nodes_->openMode->FromString(openMode);
  // The device may have opened the file all the same; left open, it could refuse the next attempt.
  return orCleanUp([this] { return nodes_->run(); },
                   [&] {
                     if (!nodes_->isStuck) closeFile(pFileName);
                   });
}

bool FileProtocolAdapter::closeFile(const char* pFileName) {
  nodes_->require(pFileName);
  const auto attempt = [&] {
    nodes_->select(pFileName, "Close");
    return nodes_->run();
  };
  // One failed access must not leave the file open: many devices open no other one then.
  return orCleanUp(attempt, [&] {
    if (!nodes_->isStuck) attempt();
  });
}

bool FileProtocolAdapter::deleteFile(const char* pFileName) {
  nodes_->require(pFileName);
  nodes_->select(pFileName, "Delete");
  return nodes_->run();
}

int64_t FileProtocolAdapter::write(const char* buf, int64_t offs, int64_t len, const char* pFileName) {
  nodes_->require(pFileName);
  if (offs < 0 || len < 0 || (!buf && len > 0))
    refuse<InvalidArgumentException>("file '{}': no valid block to write", pFileName);
  int64_t done = 0;
  while (done < len) {
    nodes_->keepSelected(pFileName, "Write");
    const int64_t wanted = std::min(len - done, nodes_->blockSize());
    if (offs + done > nodes_->offset->GetMax()) {
      nodes_->outcome = "the offset is beyond the maximum of FileAccessOffset";
      break;
    }
    nodes_->offset->SetValue(offs + done);
    const int64_t announced = nodes_->announceLength(wanted);
    if (announced < 1) {
      nodes_->outcome = "FileAccessLength accepts no length";
      break;
    }
    const int64_t count = std::min(wanted, announced);
    nodes_->fillBuffer(buf + done, count, announced);
    if (!nodes_->run()) break;
    const int64_t taken = nodes_->result->GetValue(false, true);
    if (taken <= 0 || taken > announced) {
      nodes_->outcome += ", but " + std::to_string(taken) + " of " + std::to_string(announced) + " bytes";
      break;
    }
    done += std::min(taken, count);
  }
  return done;
}

int64_t FileProtocolAdapter::read(char* buf, int64_t offs, int64_t len, const char* pFileName) {
  nodes_->require(pFileName);
  if (offs < 0 || len < 0 || (!buf && len > 0))
    refuse<InvalidArgumentException>("file '{}': no valid block to read", pFileName);
  int64_t done = 0;
  while (done < len) {
    nodes_->keepSelected(pFileName, "Read");
    const int64_t wanted = std::min(len - done, nodes_->blockSize());
    try {
      nodes_->offset->SetValue(offs + done);
    } catch (const OutOfRangeException&) {
      // Limits and increments may keep the offset from reaching the end of the file.
      if (offs + done == 0) throw;
      nodes_->outcome = "FileAccessOffset does not accept the offset";
      break;
    }
    const int64_t announced = nodes_->announceLength(wanted);
    if (announced < 1) {
      nodes_->outcome = "FileAccessLength accepts no length";
      break;
    }
    if (!nodes_->run()) break;
    const int64_t count = std::clamp<int64_t>(nodes_->result->GetValue(false, true), 0, std::min(wanted, announced));
    if (count == 0) break;
    nodes_->buffer->Get(reinterpret_cast<uint8_t*>(buf + done), count, false, true);
    done += count;
  }
  return done;
}

int64_t FileProtocolAdapter::getBufSize(const char* pFileName, std::ios_base::openmode mode) {
  nodes_->require(pFileName);
  nodes_->keepSelected(pFileName, (mode & std::ios_base::out) != 0 ? "Write" : "Read");
  return nodes_->blockSize();
}

const std::string& FileProtocolAdapter::missingFeature() const { return nodes_->missing; }

const std::string& FileProtocolAdapter::lastOutcome() const { return nodes_->outcome; }

}  // namespace GENAPI_NAMESPACE
