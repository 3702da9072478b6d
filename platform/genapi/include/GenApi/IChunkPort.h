// Port nodes that may carry a chunk ID.
#pragma once
#include "Base/GCString.h"
#include "GenApi/IPort.h"

namespace GENAPI_NAMESPACE {

class IChunkPort : virtual public IPort {
 public:
  // Hexadecimal text without prefix; empty when the port carries no chunk.
  virtual GENICAM_NAMESPACE::gcstring GetChunkID() const = 0;
  virtual EYesNo CacheChunkData() const = 0;
};

}  // namespace GENAPI_NAMESPACE
