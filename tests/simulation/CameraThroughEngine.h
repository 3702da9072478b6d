// A node map over a camera on the bench.
#pragma once

#include <GenApi/Findings.h>
#include <GenApi/GenApi.h>
#include <gtest/gtest.h>

#include "CameraBench.h"
#include "OxSimulation/ChunkLayout.h"
#include "OxSimulation/FirmwareImage.h"

class EnginePort final : public GENAPI_NAMESPACE::CPortImpl {
 public:
  explicit EnginePort(ox::simulation::RegisterDevice& device) : device_(device) {}
  GENAPI_NAMESPACE::EAccessMode GetAccessMode() const override { return GENAPI_NAMESPACE::RW; }
  void Read(void* buffer, int64_t address, int64_t length) override { check(device_.read(buffer, address, length)); }
  void Write(const void* buffer, int64_t address, int64_t length) override {
    check(device_.write(buffer, address, length));
  }

 private:
  void check(int result) const {
    if (result < 0) throw ACCESS_EXCEPTION("%s", device_.lastFailureText().c_str());
  }
  ox::simulation::RegisterDevice& device_;
};

inline GENAPI_NAMESPACE::EAccessMode GetAccess(GENAPI_NAMESPACE::INode* node) { return node->GetAccessMode(); }

struct EngineBench : CameraBench {
  EngineBench() : port(camera()) { load(); }
  ~EngineBench() { unload(); }

  void load() {
    using namespace GENAPI_NAMESPACE;
    CNodeMapFactory factory(ContentType_Xml, camera().currentDescription().data(),
                            camera().currentDescription().size());
    map = factory.CreateNodeMap("Device");
    map->Connect(&port);
  }
  void unload() { dynamic_cast<GENAPI_NAMESPACE::IDestroy*>(map)->Destroy(); }

  EnginePort port;
  GENAPI_NAMESPACE::INodeMap* map = nullptr;
};
