#include "files/DeviceFile.h"

#include "Base/GCException.h"
#include "GenApi/IInteger.h"
#include "GenApi/INode.h"
#include "GenApi/INodeMap.h"

namespace GENAPI_NAMESPACE {

bool DeviceFile::open(INodeMap* map, const char* name, std::ios_base::openmode mode) {
  if (!name) throw INVALID_ARGUMENT_EXCEPTION("device files: the file name is null");
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
  try {
    block_.resize(static_cast<size_t>(adapter_.getBufSize(name, mode)));
  } catch (...) {
    try {
      close();
    } catch (...) {  // the first failure is the one to report
    }
    throw;
  }
  return true;
}

void DeviceFile::openForWriting(INodeMap* map, const char* name, std::ios_base::openmode mode) {
  if (!open(map, name, mode))
    throw RUNTIME_EXCEPTION("file '%s' could not be opened for writing: %s", name_.c_str(), refusal_.c_str());
}

void DeviceFile::write(const char* data, int64_t count) {
  if (failed_)
    throw RUNTIME_EXCEPTION("writing file '%s' stopped at byte %lld: an earlier write has failed", name_.c_str(),
                            static_cast<long long>(offset_));
  failed_ = true;  // until it has succeeded, exceptions included
  const int64_t written = adapter_.write(data, offset_, count, name_.c_str());
  offset_ += written;
  if (written < count)
    throw RUNTIME_EXCEPTION("writing file '%s' stopped at byte %lld: %s", name_.c_str(),
                            static_cast<long long>(offset_), adapter_.lastOutcome().c_str());
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
    throw RUNTIME_EXCEPTION("reading file '%s' stopped at byte %lld of %lld: %s", name_.c_str(),
                            static_cast<long long>(offset_), static_cast<long long>(total),
                            adapter_.lastOutcome().c_str());
}

bool DeviceFile::close() {
  return adapter_.closeFile(name_.c_str());
}

void DeviceFile::closeOrThrow() {
  if (!close())
    throw RUNTIME_EXCEPTION("file '%s' could not be closed: %s", name_.c_str(), adapter_.lastOutcome().c_str());
}

}  // namespace GENAPI_NAMESPACE
