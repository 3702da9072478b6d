#include "Producer.h"

#include <dlfcn.h>

#include <array>
#include <string_view>
#include <utility>

namespace ox::camera::gentl {
namespace {

constexpr size_t kErrorText = 1024;  // bytes of a last error's text that are shown
constexpr size_t kSpare = 4096;      // behind it, for a producer that does not look at the size

constexpr std::pair<GC_ERROR, const char*> kCodes[] = {
    {GC_ERR_ERROR, "GC_ERR_ERROR"},
    {GC_ERR_NOT_INITIALIZED, "GC_ERR_NOT_INITIALIZED"},
    {GC_ERR_NOT_IMPLEMENTED, "GC_ERR_NOT_IMPLEMENTED"},
    {GC_ERR_RESOURCE_IN_USE, "GC_ERR_RESOURCE_IN_USE"},
    {GC_ERR_ACCESS_DENIED, "GC_ERR_ACCESS_DENIED"},
    {GC_ERR_INVALID_HANDLE, "GC_ERR_INVALID_HANDLE"},
    {GC_ERR_INVALID_ID, "GC_ERR_INVALID_ID"},
    {GC_ERR_NO_DATA, "GC_ERR_NO_DATA"},
    {GC_ERR_INVALID_PARAMETER, "GC_ERR_INVALID_PARAMETER"},
    {GC_ERR_IO, "GC_ERR_IO"},
    {GC_ERR_TIMEOUT, "GC_ERR_TIMEOUT"},
    {GC_ERR_ABORT, "GC_ERR_ABORT"},
    {GC_ERR_INVALID_BUFFER, "GC_ERR_INVALID_BUFFER"},
    {GC_ERR_NOT_AVAILABLE, "GC_ERR_NOT_AVAILABLE"},
    {GC_ERR_INVALID_ADDRESS, "GC_ERR_INVALID_ADDRESS"},
    {GC_ERR_BUFFER_TOO_SMALL, "GC_ERR_BUFFER_TOO_SMALL"},
    {GC_ERR_INVALID_INDEX, "GC_ERR_INVALID_INDEX"},
    {GC_ERR_PARSING_CHUNK_DATA, "GC_ERR_PARSING_CHUNK_DATA"},
    {GC_ERR_INVALID_VALUE, "GC_ERR_INVALID_VALUE"},
    {GC_ERR_RESOURCE_EXHAUSTED, "GC_ERR_RESOURCE_EXHAUSTED"},
    {GC_ERR_OUT_OF_MEMORY, "GC_ERR_OUT_OF_MEMORY"},
    {GC_ERR_BUSY, "GC_ERR_BUSY"},
    {GC_ERR_AMBIGUOUS, "GC_ERR_AMBIGUOUS"},
};

Reason reasonOf(GC_ERROR code) {
  switch (code) {
    case GC_ERR_NOT_INITIALIZED:
    case GC_ERR_INVALID_HANDLE: return Reason::lost;
    case GC_ERR_NOT_IMPLEMENTED: return Reason::notSupported;
    case GC_ERR_RESOURCE_IN_USE:
    case GC_ERR_ACCESS_DENIED:
    case GC_ERR_BUSY: return Reason::busy;
    case GC_ERR_INVALID_ID: return Reason::notFound;
    case GC_ERR_TIMEOUT: return Reason::timedOut;
    case GC_ERR_INVALID_ADDRESS:
    case GC_ERR_INVALID_VALUE:
    case GC_ERR_INVALID_PARAMETER: return Reason::refused;
    default: return Reason::failed;
  }
}

}  // namespace

std::string codeName(GC_ERROR code) {
  for (const auto& [number, name] : kCodes)
    if (number == code) return std::string(name) + " (" + std::to_string(code) + ")";
  return "code " + std::to_string(code);
}

std::string printable(std::string_view text) {
  std::string line;
  for (const char c : text.substr(0, text.find('\0'))) {
    const auto byte = static_cast<unsigned char>(c);
    line += byte < 0x20 || byte == 0x7f ? ' ' : c;
  }
  while (line.ends_with(' ')) line.pop_back();
  return line;
}

Producer::Producer(const std::filesystem::path& file) : file_(file.string()), name_(file.stem().string()) {
  void* const library = dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (library == nullptr) {
    const char* const text = dlerror();
    throw TransportError(Reason::failed, file_ + " cannot be loaded: " + (text == nullptr ? "no reason given" : text));
  }
  std::string lacking;
#define OX_GENTL_LOOK_UP(name) functions.name.set(dlsym(library, #name));
#define OX_GENTL_REQUIRE(name) \
  if (!functions.name.isThere()) lacking += std::string(lacking.empty() ? "" : ", ") + #name;
  OX_GENTL_REQUIRED(OX_GENTL_LOOK_UP)
  OX_GENTL_OPTIONAL(OX_GENTL_LOOK_UP)
  OX_GENTL_REQUIRED(OX_GENTL_REQUIRE)
#undef OX_GENTL_LOOK_UP
#undef OX_GENTL_REQUIRE
  if (!lacking.empty()) throw TransportError(Reason::failed, file_ + " is no usable producer: it lacks " + lacking);
  initialise();
}

Producer::~Producer() {
  if (ours_) functions.GCCloseLib();
}

void Producer::initialise() {
  const GC_ERROR code = functions.GCInitLib();
  if (code != GC_ERR_SUCCESS && code != GC_ERR_RESOURCE_IN_USE) fail("GCInitLib", code);
  if (code == GC_ERR_SUCCESS) ours_ = true;
}

void Producer::fail(const char* function, GC_ERROR code, bool isThere) const {
  if (!isThere) throw TransportError(Reason::notSupported, name_ + ".cti lacks the function " + function);
  const std::string text = lastErrorText();
  throw TransportError(reasonOf(code), name_ + ".cti: " + function + " failed with " + codeName(code) +
                                           (text.empty() ? "" : ": " + text));
}

void Producer::failAnswer(const char* function, const std::string& fault) const {
  throw TransportError(Reason::failed, name_ + ".cti: " + function + " " + fault);
}

std::string Producer::lastErrorText() const {
  std::array<char, kErrorText + kSpare> text{};
  size_t size = kErrorText;
  GC_ERROR code = GC_ERR_SUCCESS;
  if (functions.GCGetLastError(&code, text.data(), &size) != GC_ERR_SUCCESS) return {};
  return printable({text.data(), kErrorText});
}

}  // namespace ox::camera::gentl
