// Check mode: every answer from memory is compared with the device.
#pragma once
#include <cstdint>
#include <vector>

#include "Base/GCString.h"
#include "Base/GCTypes.h"

namespace GENAPI_NAMESPACE {

// An answer that was remembered and that the device does not confirm.
struct CacheDifference {
  GENICAM_NAMESPACE::gcstring node;  // whose register or answer it is
  GENICAM_NAMESPACE::gcstring port;  // of the register; empty when the bytes agree and only the answer was outdated
  int64_t address = 0;
  std::vector<uint8_t> remembered;  // bytes of the whole register
  std::vector<uint8_t> read;        // what the device has now; empty when it could not be read
};

class ICacheCheck {
 public:
  // Runs under the node map's lock. Must not use the node map.
  virtual void OnDifference(const CacheDifference& Difference) = 0;

 protected:
  ~ICacheCheck() = default;
};

// A node map that can be checked; reached from INodeMap by dynamic_cast.
class ICheckedNodeMap {
 public:
  // From now on every register content that is used from memory is read again and compared, and every remembered answer
  // is computed again. Answers stay what they were without the check. Null ends it. The check must live until then.
  virtual void SetCacheCheck(ICacheCheck* pCheck) = 0;

 protected:
  ~ICheckedNodeMap() = default;
};

}  // namespace GENAPI_NAMESPACE
