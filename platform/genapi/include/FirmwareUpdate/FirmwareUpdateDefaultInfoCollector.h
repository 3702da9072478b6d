// Collects every update of an update file in a list.
#pragma once
#include <cstddef>
#include <vector>

#include "FirmwareUpdate/FirmwareUpdateInfoCollector.h"

namespace GENAPI_NAMESPACE {

// Appends whatever is read: clear() before reading again.
class CFirmwareUpdateDefaultInfoCollector : public IFirmwareUpdateInfoCollector {
 public:
  using const_iterator = std::vector<CFirmwareUpdateInfo>::const_iterator;

  CFirmwareUpdateDefaultInfoCollector();
  ~CFirmwareUpdateDefaultInfoCollector() override;
  CFirmwareUpdateDefaultInfoCollector(const CFirmwareUpdateDefaultInfoCollector&);
  CFirmwareUpdateDefaultInfoCollector& operator=(const CFirmwareUpdateDefaultInfoCollector&);

  bool OnUpdateRead(const CFirmwareUpdateInfo& info) override;
  size_t size() const { return infos_.size(); }
  bool empty() const { return infos_.empty(); }
  void clear() { infos_.clear(); }
  // An index past the end gives an invalid info.
  const CFirmwareUpdateInfo& operator[](size_t index) const;
  // Throws OutOfRangeException.
  const CFirmwareUpdateInfo& at(size_t index) const;
  const_iterator begin() const { return infos_.begin(); }
  const_iterator end() const { return infos_.end(); }

 private:
  std::vector<CFirmwareUpdateInfo> infos_;
};

}  // namespace GENAPI_NAMESPACE
