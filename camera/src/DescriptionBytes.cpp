#include "DescriptionBytes.h"

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <system_error>

#include "DescriptionUrl.h"
#include "DeviceText.h"
#include "Failure.h"

namespace ox::camera {
namespace {

constexpr size_t kPiece = 32 * 1024;  // between two chances for other accesses

std::string fromFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  std::string bytes{std::istreambuf_iterator<char>(file), {}};
  if (!file || bytes.empty())
    throw CameraError(OXGENAPI_E_RUNTIME, "The description " + shown(path) + " cannot be read");
  return bytes;
}

std::string fromRegisters(const DescriptionUrl& url, const ReadRegisters& read) {
  if (url.length == 0 || url.length > kMaxDescriptionBytes || url.address + url.length < url.address) {
    throw CameraError(OXGENAPI_E_RUNTIME,
                      "The camera claims a description of " + std::to_string(url.length) + " bytes");
  }
  std::string bytes;
  while (bytes.size() < url.length) {  // grows as it comes: a false length costs no memory
    const size_t start = bytes.size();
    bytes.resize(std::min<uint64_t>(start + kPiece, url.length));
    read(bytes.data() + start, url.address + start, bytes.size() - start);
  }
  return bytes;
}

// A file without a place in the file system.
class MemoryFile {
 public:
  explicit MemoryFile(const std::string& bytes) : MemoryFile() {
    for (size_t done = 0; done < bytes.size();) {
      const ssize_t written = write(file_, bytes.data() + done, bytes.size() - done);
      if (written <= 0) throw std::system_error(errno, std::generic_category(), "memory file");
      done += static_cast<size_t>(written);
    }
  }
  MemoryFile(const MemoryFile&) = delete;
  MemoryFile& operator=(const MemoryFile&) = delete;
  ~MemoryFile() { ::close(file_); }
  std::string path() const { return "/proc/self/fd/" + std::to_string(file_); }

 private:
  MemoryFile() : file_(memfd_create("description", MFD_CLOEXEC)) {
    if (file_ < 0) throw std::system_error(errno, std::generic_category(), "memory file");
  }
  int file_;
};

}  // namespace

std::string fetchDescription(const DescriptionSource& source, const ReadRegisters& read) {
  if (source.bytes) return *source.bytes;
  DescriptionUrl url;
  try {
    url = parseDescriptionUrl(source.url);
  } catch (const std::invalid_argument& error) {
    throw CameraError(OXGENAPI_E_RUNTIME, error.what());
  }
  switch (url.scheme) {
    case DescriptionUrl::Scheme::registers: return fromRegisters(url, read);
    case DescriptionUrl::Scheme::file: return fromFile(url.name);
    case DescriptionUrl::Scheme::web: break;
  }
  throw CameraError(OXGENAPI_E_RUNTIME, "The description is on the web, fetch it by hand: " + shown(url.name));
}

void loadDescription(NODEMAP map, const std::string& bytes) {
  uint32_t result = 0;
  if (bytes.starts_with("PK\x03\x04")) {
    const MemoryFile file(bytes);
    result = NMLoadXMLFile(map, file.path().c_str());
  } else {
    result = NMLoadXMLString(map, bytes.c_str());
  }
  if (result != OXGENAPI_OK) throw lastFailure(result);
}

}  // namespace ox::camera
