// What an update info shares among its copies.
#pragma once
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "FirmwareUpdate/FirmwareUpdateInfo.h"
#include "firmware/GufFile.h"
#include "firmware/UpdateControl.h"

namespace GENAPI_NAMESPACE {

struct CFirmwareUpdateInfo::Content {
  struct Info {
    std::string key;
    std::string value;
    std::string language;
  };

  std::string path;
  uint64_t fileSize = 0;
  PackageDigest packageDigest{};
  size_t index = 0;  // of the update within the file
  std::string procedure;
  uint32_t estimatedMs = 0;  // of the whole procedure
  std::vector<Info> infos;
  std::vector<UpdateCondition> conditions;
  WholePattern extraction;  // of the version; unset when the file has none

  const Info* find(std::string_view key) const {
    for (const Info& info : infos)
      if (info.key == key) return &info;
    return nullptr;
  }
};

}  // namespace GENAPI_NAMESPACE
