// The modules of this process and where their lines go.
#ifndef OXTELEMETRY_MODULEREGISTRY_H
#define OXTELEMETRY_MODULEREGISTRY_H

#include <cstdint>
#include <string>

#include "LineWriter.h"
#include "OxTelemetry/OxTelemetry.h"

// A registered module. Nothing in it changes after registration, and it is never destroyed.
struct OxTModuleRecord {
  std::string name;
  std::string version;
  uint32_t level = OXT_LEVEL_OFF;
  OxTSink sink = nullptr;
  void* sinkUserData = nullptr;
  oxtelemetry::LineWriter writer;  // when there is no sink
  OxTModuleRecord* next = nullptr;

  bool enabled() const { return level < OXT_LEVEL_OFF; }
};

namespace oxtelemetry {

// The sink of modules registered from now on; null: they follow the environment.
void setSink(OxTSink sink, void* userData, uint32_t level) noexcept;

// The module of this name and version, registered now if it is new. Throws std::bad_alloc.
OxTModuleRecord& getModule(const char* name, const char* version);

// Whether the pointer is one that getModule has returned.
bool isModule(const OxTModuleRecord* module) noexcept;

}  // namespace oxtelemetry

#endif
