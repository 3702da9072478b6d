#include "FirmwareUpdate/FirmwareUpdateInfo.h"

#include "FirmwareUpdate/FirmwareUpdateDefaultInfoCollector.h"
#include "firmware/UpdateInfoContent.h"
#include "text/Refusal.h"

namespace GENAPI_NAMESPACE {

using GENICAM_NAMESPACE::gcstring;

CFirmwareUpdateInfo::CFirmwareUpdateInfo() = default;

CFirmwareUpdateInfo::CFirmwareUpdateInfo(std::shared_ptr<const Content> content) : content_(std::move(content)) {}

bool CFirmwareUpdateInfo::operator==(const CFirmwareUpdateInfo& other) const {
  if (content_ == other.content_) return true;
  if (!content_ || !other.content_) return false;
  return content_->index == other.content_->index && content_->fileSize == other.content_->fileSize &&
         content_->path == other.content_->path && content_->packageDigest == other.content_->packageDigest;
}

bool CFirmwareUpdateInfo::IsValid() const { return content_ != nullptr; }

const char* CFirmwareUpdateInfo::GetUpdateFilename() const { return content_ ? content_->path.c_str() : ""; }

size_t CFirmwareUpdateInfo::GetCountOfInfos() const { return content_ ? content_->infos.size() : 0; }

namespace {

const CFirmwareUpdateInfo::Content::Info& infoAt(const CFirmwareUpdateInfo& info, size_t index) {
  if (index >= info.GetCountOfInfos())
    refuse<InvalidArgumentException>("update info: index {} is not below the count {}", index, info.GetCountOfInfos());
  return info.content()->infos[index];
}

}  // namespace

const char* CFirmwareUpdateInfo::GetInfoKey(size_t Index) const { return infoAt(*this, Index).key.c_str(); }

const char* CFirmwareUpdateInfo::GetInfo(size_t Index) const { return infoAt(*this, Index).value.c_str(); }

const char* CFirmwareUpdateInfo::GetInfo(const char* Key) const { return GetInfo(Key, ""); }

const char* CFirmwareUpdateInfo::GetInfo(const char* Key, const char* DefaultIfMissing) const {
  const Content::Info* found = content_ && Key ? content_->find(Key) : nullptr;
  return found ? found->value.c_str() : DefaultIfMissing;
}

const char* CFirmwareUpdateInfo::GetInfoLanguageCode(const char* Key) const {
  const Content::Info* found = content_ && Key ? content_->find(Key) : nullptr;
  return found ? found->language.c_str() : "";
}

gcstring CFirmwareUpdateInfo::ExtractVersionFromDeviceFirmwareVersion(const gcstring& DeviceFirmwareVersion) const {
  for (const char* key : {FirmwareUpdateInfoKey_VersionStyle, FirmwareUpdateInfoKey_VersionExtractionPattern})
    if (!content_ || !content_->find(key)) refuse<LogicalErrorException>("update info: has no '{}'", key);
  std::string version;
  if (!content_->extraction.extract(DeviceFirmwareVersion.view(), version))
    refuse<RuntimeException>("update info: the device's version '{}' does not match '{}'", DeviceFirmwareVersion,
                             content_->extraction.text());
  return gcstring(std::string_view(version));
}

CFirmwareUpdateDefaultInfoCollector::CFirmwareUpdateDefaultInfoCollector() = default;
CFirmwareUpdateDefaultInfoCollector::~CFirmwareUpdateDefaultInfoCollector() = default;
CFirmwareUpdateDefaultInfoCollector::CFirmwareUpdateDefaultInfoCollector(const CFirmwareUpdateDefaultInfoCollector&) =
    default;
CFirmwareUpdateDefaultInfoCollector& CFirmwareUpdateDefaultInfoCollector::operator=(
    const CFirmwareUpdateDefaultInfoCollector&) = default;

bool CFirmwareUpdateDefaultInfoCollector::OnUpdateRead(const CFirmwareUpdateInfo& info) {
  infos_.push_back(info);
  return true;
}

const CFirmwareUpdateInfo& CFirmwareUpdateDefaultInfoCollector::operator[](size_t index) const {
  static const CFirmwareUpdateInfo none;
  return index < infos_.size() ? infos_[index] : none;
}

const CFirmwareUpdateInfo& CFirmwareUpdateDefaultInfoCollector::at(size_t index) const {
  if (index >= infos_.size())
    refuse<OutOfRangeException>("update infos: index {} is not below the count {}", index, infos_.size());
  return infos_[index];
}

}  // namespace GENAPI_NAMESPACE
