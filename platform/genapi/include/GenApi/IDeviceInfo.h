// What the description's root element says about the device; reached by a cast of the node map.
#pragma once
#include "Base/GCString.h"
#include "Base/GCTypes.h"

namespace GENAPI_NAMESPACE {

class IDeviceInfo {
 public:
  virtual GENICAM_NAMESPACE::gcstring GetModelName() const = 0;
  virtual GENICAM_NAMESPACE::gcstring GetVendorName() const = 0;
  virtual GENICAM_NAMESPACE::gcstring GetToolTip() const = 0;
  virtual GENICAM_NAMESPACE::gcstring GetStandardNameSpace() const = 0;
  virtual void GetGenApiVersion(GENICAM_NAMESPACE::Version_t& Version, uint16_t& Build) const = 0;
  virtual void GetSchemaVersion(GENICAM_NAMESPACE::Version_t& Version) const = 0;
  virtual void GetDeviceVersion(GENICAM_NAMESPACE::Version_t& Version) const = 0;
  virtual GENICAM_NAMESPACE::gcstring GetProductGuid() const = 0;
  virtual GENICAM_NAMESPACE::gcstring GetVersionGuid() const = 0;

 protected:
  ~IDeviceInfo() = default;
};

}  // namespace GENAPI_NAMESPACE
