#include "Records.h"

#include <gtest/gtest.h>

#include <mutex>
#include <nlohmann/json.hpp>

#include "OxTelemetry/OxTelemetry.h"

namespace {

std::mutex mutex;
std::vector<std::string>* collected = nullptr;

void collect(const char* line, size_t size, void*) {
  const std::lock_guard lock(mutex);
  if (collected != nullptr) collected->emplace_back(line, size);
}

// Before the library's first failure, which settles where its records go.
struct Installation : testing::Environment {
  void SetUp() override { OxTSetSink(&collect, nullptr, OXT_LEVEL_DEBUG); }
};
const testing::Environment* const kInstallation = testing::AddGlobalTestEnvironment(new Installation);

}  // namespace

Records::Records() {
  const std::lock_guard lock(mutex);
  collected = new std::vector<std::string>;
}

Records::~Records() {
  const std::lock_guard lock(mutex);
  delete collected;
  collected = nullptr;
}

std::vector<std::string> Records::lines() const {
  const std::lock_guard lock(mutex);
  return *collected;
}

std::vector<std::string> Records::texts(int level) const {
  std::vector<std::string> texts;
  for (const std::string& line : lines()) {
    const auto record = nlohmann::json::parse(line);
    if (record["level"] == level) texts.push_back(record["text"]);
  }
  return texts;
}
