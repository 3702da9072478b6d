#include "CacheCheck.h"

#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

#include <nlohmann/json.hpp>

#include "OxTelemetry/OxTelemetry.h"

namespace tool {
namespace {

void print(const char* line, size_t size, void*) {
  const auto record = nlohmann::json::parse(line, line + size, nullptr, false);
  if (!record.is_object() || !record.contains("message")) return;
  const std::string text = record["message"].get<std::string>();
  if (text.starts_with("cache check: ")) std::fprintf(stderr, "oxgenapi: %s\n", text.c_str());
}

}  // namespace

void checkCache() {
  constexpr uint32_t kLevelOfDifferences = 2;
  setenv("OXGENAPI_CHECK_CACHE", "1", 1);
  OxTSetSink(print, nullptr, kLevelOfDifferences);
}

}  // namespace tool
