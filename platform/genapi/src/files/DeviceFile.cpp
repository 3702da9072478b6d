#include "files/DeviceFile.h"

#include "GenApi/IInteger.h"
#include "GenApi/INode.h"
#include "GenApi/INodeMap.h"
#include "files/Cleanup.h"
#include "text/Refusal.h"

namespace GENAPI_NAMESPACE {

bool DeviceFile::open(INodeMap* map, const char* name, std::ios_base::openmode mode) {
  if (!name) refuse<InvalidArgumentException>("device files: the file name is null");
  name_ = name;
  map_ = map;
  if (!adapter_.attach(map)) {
    refusal_ = map ? "the device has no " + adapter_.missingFeature() : "there is no node map";
    return false;
  }
  if (!adapter_.openFile(name, mode)) {
    refusal_ = adapter_.lastOutcome();
    return false;
  }
  orCleanUp([&] { block_.resize(static_cast<size_t>(adapter_.getBufSize(name, mode))); }, [this] { close(); });
  return true;
}

void DeviceFile::openForWriting(INodeMap* map, const char* name, std::ios_base::openmode mode) {
  if (!open(map, name, mode))
    refuse<RuntimeException>("file '{}' could not be opened for writing: {}", name_, refusal_);
}

void DeviceFile::write(const char* data, int64_t count) {
  if (failed_)
    refuse<RuntimeException>("writing file '{}' stopped at byte {}: an earlier write has failed", name_, offset_);
  failed_ = true;  // until it has succeeded, exceptions included
  const int64_t written = adapter_.write(data, offset_, count, name_.c_str());
  offset_ += written;
  if (written < count)
    refuse<RuntimeException>("writing file '{}' stopped at byte {}: {}", name_, offset_, adapter_.lastOutcome());
  failed_ = false;
}

int64_t DeviceFile::read(char* data, int64_t count) {
  if (ended_) return 0;
  const int64_t got = adapter_.read(data, offset_, count, name_.c_str());
  offset_ += got;
  if (got < count) {
    ended_ = true;
    checkEnd();
  }
  return got;
}

// Many devices end a file with a status other than success, others with no bytes; below the size that they tell either
// is a failure.
void DeviceFile::checkEnd() const {
  auto* size = dynamic_cast<IInteger*>(map_->GetNode("FileSize"));
  if (!IsReadable(size)) return;
  const int64_t total = size->GetValue(false, true);
  if (total > offset_)
    refuse<RuntimeException>("reading file '{}' stopped at byte {} of {}: {}", name_, offset_, total,
                             adapter_.lastOutcome());
}

bool DeviceFile::close() { return adapter_.closeFile(name_.c_str()); }

void DeviceFile::closeOrThrow() {
  if (!close()) refuse<RuntimeException>("file '{}' could not be closed: {}", name_, adapter_.lastOutcome());
}

}  // namespace GENAPI_NAMESPACE
