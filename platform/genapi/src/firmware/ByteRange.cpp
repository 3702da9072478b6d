#include "firmware/ByteRange.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

#include "FirmwareUpdate/FirmwareUpdateExceptions.h"
#include "text/Refusal.h"

namespace GENAPI_NAMESPACE {

namespace {

std::string reasonOf(int error) { return std::generic_category().message(error); }

}  // namespace

ByteRange::Descriptor::~Descriptor() {
  if (number >= 0) ::close(number);
}

ByteRange ByteRange::open(const std::string& path) {
  auto sharedPath = std::make_shared<const std::string>(path);
  auto descriptor = std::make_shared<Descriptor>();
  int& opened = descriptor->number;
  opened = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);  // a named pipe must not block
  if (opened < 0) {
    const int error = errno;
    if (error == ENOENT || error == ENOTDIR) refuse<FileNotFoundException>("'{}': {}", path, reasonOf(error));
    refuse<FileIOException>("'{}': cannot be opened: {}", path, reasonOf(error));
  }
  struct stat facts {};
  if (::fstat(opened, &facts) != 0) refuse<FileIOException>("'{}': cannot be examined: {}", path, reasonOf(errno));
  if (!S_ISREG(facts.st_mode)) refuse<FileIOException>("'{}': is not a regular file", path);
  return ByteRange(std::move(descriptor), std::move(sharedPath), 0, static_cast<uint64_t>(facts.st_size));
}

ByteRange ByteRange::part(uint64_t offset, uint64_t size) const {
  if (offset > size_ || size > size_ - offset)
    refuse<FormatException>("'{}': {} bytes at {} lie outside the {} bytes that there are", path(), size, offset,
                            size_);
  return ByteRange(descriptor_, path_, offset_ + offset, size);
}

void ByteRange::read(uint64_t offset, void* buffer, size_t size) const {
  const ByteRange wanted = part(offset, size);
  auto* to = static_cast<char*>(buffer);
  auto from = static_cast<off_t>(wanted.offset());
  while (size > 0) {
    const ssize_t got = ::pread(descriptor(), to, size, from);
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) refuse<FileIOException>("'{}': cannot be read: {}", path(), reasonOf(errno));
    if (got == 0) refuse<FileIOException>("'{}': has become shorter", path());
    to += got;
    from += got;
    size -= static_cast<size_t>(got);
  }
}

}  // namespace GENAPI_NAMESPACE
