#include "CacheCheckReport.h"

#include "CallTelemetry.h"

#if __has_include("GenApi/CacheCheck.h")
#include <cstdlib>
#include <string>
#include <string_view>

#include "GenApi/CacheCheck.h"

namespace orxGenApi {
namespace {

constexpr uint32_t kLevel = 2;

std::string hexadecimal(const std::vector<uint8_t>& bytes) {
  constexpr size_t kShown = 16;
  constexpr char kDigits[] = "0123456789abcdef";
  std::string text;
  for (size_t i = 0; i < bytes.size() && i < kShown; ++i) {
    if (i != 0) text += ' ';
    text += kDigits[bytes[i] >> 4];
    text += kDigits[bytes[i] & 15];
  }
  return bytes.size() > kShown ? text + " ..." : text;
}

struct Report final : GENAPI_NAMESPACE::ICacheCheck {
  void OnDifference(const GENAPI_NAMESPACE::CacheDifference& difference) override {
    Telemetry::_OxGenApi::sendRecord(kLevel, [&](Telemetry::_OxGenApi::Log& record) {
      record.message = std::string("cache check: ") + difference.node.c_str();
      if (difference.port.empty()) {
        record.message += ": the remembered answer is not what its inputs give now";
        return;
      }
      record["Node"] = std::string(difference.node.c_str());
      record["Port"] = std::string(difference.port.c_str());
      record["Address"] = difference.address;
      record["Remembered"] = hexadecimal(difference.remembered);
      record["Read"] = hexadecimal(difference.read);
      record.message += ": remembered " + hexadecimal(difference.remembered) + ", the device " +
                        (difference.read.empty() ? "cannot be read" : "has " + hexadecimal(difference.read)) +
                        " at address " + std::to_string(difference.address) + " of " + difference.port.c_str();
    });
  }
};

}  // namespace

void checkCacheIfAsked(GENAPI_NAMESPACE::INodeMap& map) noexcept {
  const char* asked = std::getenv("OXGENAPI_CHECK_CACHE");
  if (!asked || std::string_view(asked) != "1") return;
  static Report report;
  if (auto* checked = dynamic_cast<GENAPI_NAMESPACE::ICheckedNodeMap*>(&map)) checked->SetCacheCheck(&report);
}

}  // namespace orxGenApi

#else

namespace orxGenApi {
void checkCacheIfAsked(GENAPI_NAMESPACE::INodeMap&) noexcept {}
}  // namespace orxGenApi

#endif
