// Update files from arbitrary bytes: as a control file when they begin like XML, else as the whole archive. Whatever is
// refused is refused with one of the documented exceptions and a text of one line.
#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

#include "FirmwareUpdate/FirmwareUpdate.h"
#include "firmware/UpdateControl.h"

using namespace GENAPI_NAMESPACE;

namespace {

void require(bool holds) {
  if (!holds) std::abort();
}

template <typename Call>
bool accepted(Call call) {
  try {
    call();
    return true;
  } catch (const GENICAM_NAMESPACE::GenericException& refusal) {
    require(std::strlen(refusal.GetDescription()) > 0);
    return false;
  }
}

void readArchive(const char* path, size_t fileSize) {
  CFirmwareUpdater updater;
  CFirmwareUpdateDefaultInfoCollector infos;
  size_t ranges[4] = {};
  const bool hasLayout =
      accepted([&] { updater.GetSignatureCheckInfo(path, ranges[0], ranges[1], ranges[2], ranges[3]); });
  if (hasLayout) {
    require(ranges[0] <= fileSize && ranges[1] <= fileSize - ranges[0]);
    require(ranges[2] <= fileSize && ranges[3] <= fileSize - ranges[2]);
  }
  const bool isRead = accepted([&] { updater.ReadFirmwareUpdateInfos(path, infos); });
  require(!isRead || (hasLayout && !infos.empty()));
  const bool isGood = accepted([&] { updater.VerifyGufFile(path); });
  require(!isGood || isRead);
  for (const CFirmwareUpdateInfo& info : infos) {
    require(info.IsValid() && info == info && info.GetInfo("Version", nullptr));
    accepted([&] { info.ExtractVersionFromDeviceFirmwareVersion("FW 1.2.3"); });
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size > 0 && data[0] == '<') {
    accepted([&] { UpdateControl(std::string(reinterpret_cast<const char*>(data), size), "control.xml"); });
    return 0;
  }
  const int file = ::memfd_create("update", MFD_CLOEXEC);
  require(file >= 0);
  for (size_t at = 0; at < size;) {
    const ssize_t written = ::write(file, data + at, size - at);
    require(written > 0);
    at += static_cast<size_t>(written);
  }
  readArchive(("/proc/self/fd/" + std::to_string(file)).c_str(), size);
  ::close(file);
  return 0;
}
