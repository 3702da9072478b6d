#include "description/DescriptionLoader.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <new>

#include "GenApi/Findings.h"
#include "description/DescriptionBuilder.h"
#include "description/DescriptionCache.h"
#include "description/Limits.h"
#include "description/ZippedDescription.h"
#include "text/Refusal.h"

namespace GENAPI_NAMESPACE {
namespace {

// An archive may hold more than the description.
constexpr size_t kMaxFileBytes = 2 * kMaxDescriptionBytes;

class OpenFile {
 public:
  explicit OpenFile(const std::string& name) : descriptor_(::open(name.c_str(), O_RDONLY | O_CLOEXEC)) {}
  ~OpenFile() {
    if (descriptor_ >= 0) ::close(descriptor_);
  }
  OpenFile(const OpenFile&) = delete;
  OpenFile& operator=(const OpenFile&) = delete;
  int descriptor() const { return descriptor_; }

 private:
  int descriptor_;
};

[[noreturn]] void refuseFile() { throw LoadFault{0, std::string("cannot be read: ") + std::strerror(errno)}; }

HeldBytes readFile(const std::string& name) {
  const OpenFile file(name);
  if (file.descriptor() < 0) refuseFile();
  struct stat status {};
  if (::fstat(file.descriptor(), &status) != 0) refuseFile();
  size_t expected = 4096;
  if (S_ISREG(status.st_mode)) expected = std::min(static_cast<size_t>(status.st_size), kMaxFileBytes) + 1;
  HeldBytes bytes{MemoryBlock(HeldBytes::roomFor(expected))};
  for (;;) {
    if (bytes.size > kMaxFileBytes) throw LoadFault{0, "larger than " + std::to_string(kMaxFileBytes) + " bytes"};
    if (bytes.size == bytes.block.size()) {
      MemoryBlock larger(HeldBytes::roomFor(bytes.size));
      std::memcpy(larger.data(), bytes.block.data(), bytes.size);
      bytes.block = std::move(larger);
    }
    const ssize_t read = ::read(file.descriptor(), bytes.block.data() + bytes.size, bytes.block.size() - bytes.size);
    if (read < 0 && errno == EINTR) continue;
    if (read < 0) refuseFile();
    if (read == 0) return bytes;
    bytes.size += static_cast<size_t>(read);
  }
}

std::string_view viewOf(std::string_view bytes) { return bytes; }
std::string_view viewOf(const HeldBytes& bytes) { return bytes.view(); }
HeldBytes hold(std::string_view bytes) { return HeldBytes::copyOf(bytes); }
HeldBytes hold(HeldBytes&& bytes) { return std::move(bytes); }

// Takes the text over, or copies it, but only when nobody has a description of it yet.
template <class Text>
std::shared_ptr<const Description> describe(Text&& text) {
  const std::string_view view = viewOf(text);
  if (view.size() > kMaxDescriptionBytes)
    throw LoadFault{0, std::to_string(view.size()) + " bytes, more than " + std::to_string(kMaxDescriptionBytes)};
  if (std::shared_ptr<const Description> known = DescriptionCache::find(view)) return known;
  return DescriptionCache::add(DescriptionBuilder::build(hold(std::forward<Text>(text))));
}

void checkContent(bool zip, EContentType contentType) {
  if (zip && contentType == ContentType_Xml) throw LoadFault{0, "a zip archive, XML was asked for"};
  if (!zip && contentType == ContentType_ZippedXml) throw LoadFault{0, "not a zip archive"};
}

template <class Bytes>
void load(Bytes&& bytes, EContentType contentType, LoadedDescription& loaded) {
  const bool zip = isZip(viewOf(bytes));
  checkContent(zip, contentType);
  if (!zip) {
    loaded.description = describe(std::forward<Bytes>(bytes));
    return;
  }
  const UnzippedDescription member = readZippedDescription(viewOf(bytes));
  loaded.sourceName += '(' + member.name + ')';
  loaded.description = describe(std::string_view(member.text));
}

// Runs a load and gives its faults the form that callers see.
template <class Load>
LoadedDescription reportingFaults(std::string sourceName, Load&& run) {
  LoadedDescription loaded{nullptr, std::move(sourceName)};
  try {
    run(loaded);
    return loaded;
  } catch (const LoadFault& fault) {
    std::string text = loaded.sourceName + ':';
    if (fault.line != 0) text += std::to_string(fault.line) + ':';
    text += ' ' + placedText(fault.nodeType, fault.node, fault.element, fault.reason);
    const auto part = [](const std::string& each) { return GENICAM_NAMESPACE::gcstring(std::string_view(each)); };
    throw DescriptionException(text.c_str(),
                               Finding{svFatal, fault.line, part(fault.node), part(fault.element), part(fault.reason)});
  } catch (const std::bad_alloc&) {
    refuse<BadAllocException>("out of memory while a description was loaded");
  } catch (const std::length_error&) {
    refuse<BadAllocException>("out of memory while a description was loaded");
  }
}

}  // namespace

LoadedDescription loadDescriptionFile(const std::string& fileName, EContentType contentType) {
  return reportingFaults(fileName, [&](LoadedDescription& loaded) { load(readFile(fileName), contentType, loaded); });
}

LoadedDescription loadDescriptionText(std::string_view bytes, EContentType contentType) {
  return reportingFaults("<description>", [&](LoadedDescription& loaded) { load(bytes, contentType, loaded); });
}

void clearDescriptionCache() { DescriptionCache::removeUnused(); }

}  // namespace GENAPI_NAMESPACE
