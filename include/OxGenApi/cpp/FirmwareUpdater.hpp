/// @file
/// Firmware updates from a GenICam update file.
#ifndef OXGENAPI_CPP_FIRMWAREUPDATER_HPP
#define OXGENAPI_CPP_FIRMWAREUPDATER_HPP

#include <exception>
#include <functional>
#include <string>
#include <vector>

#include "OxGenApi/FirmwareUpdate.h"
#include "OxGenApi/cpp/NodeMap.hpp"

namespace oxgenapi {

/// One update file and the entries in it.
class FirmwareUpdater {
 public:
  struct Info {
    std::string key;
    std::string value;
    std::string language;
  };
  /// Called when the update resets the device, with the expected length of the reset and the time to wait before
  /// looking for the device, both in milliseconds. Returns the node map of the device that came back.
  using Reopen = std::function<NodeMap(unsigned durationMs, unsigned delayMs)>;

  /// `verify`: read and check the whole file now.
  explicit FirmwareUpdater(const std::string& path, bool verify = true) {
    FWUPDATER raw = nullptr;
    check(CreateFirmwareUpdater(path.c_str(), verify ? 1 : 0, &raw), path);
    handle_ = Handle<FWUPDATER>::adopt(raw);
  }
  FWUPDATER handle() const noexcept { return handle_.get(); }

  size_t entryCount() const {
    size_t count = 0;
    check(FWUpdateFileCount(handle(), &count));
    return count;
  }
  /// What an entry says about itself: version, model, date and the like.
  std::vector<Info> info(size_t entry) const {
    size_t count = 0;
    check(FWUpdateFileInfoCount(handle(), entry, &count));
    std::vector<Info> all;
    for (size_t index = 0; index < count; ++index)
      all.push_back({text(entry, index, FUI_Key), text(entry, index, FUI_Value), text(entry, index, FUI_LanguageCode)});
    return all;
  }
  /// Applies an entry to the device behind `map`. What `reopen` throws ends the update and is thrown on from here.
  void update(const NodeMap& map, size_t entry, const Reopen& reopen) const {
    Reset reset{reopen, nullptr, {}};
    const uint32_t code = FWUpdate(handle(), map.handle(), entry, Reset::call, &reset);
    if (reset.failure) std::rethrow_exception(reset.failure);
    check(code);
  }

 private:
  struct Reset {
    const Reopen& reopen;
    std::exception_ptr failure;
    std::vector<NodeMap> maps;  // alive while the update works on them

    static bool call(unsigned durationMs, unsigned delayMs, void*& map, void* self) {
      auto& reset = *static_cast<Reset*>(self);
      try {
        reset.maps.push_back(reset.reopen(durationMs, delayMs));
        map = reset.maps.back().handle();
        return true;
      } catch (...) {
        reset.failure = std::current_exception();
        return false;
      }
    }
  };

  std::string text(size_t entry, size_t index, TFirmwareUpdateInfo item) const {
    std::string text;
    check(detail::readText(
        text, [&](char* to, size_t& size) { return FWUpdateFileInfo(handle(), entry, index, item, to, &size); }));
    return text;
  }

  Handle<FWUPDATER> handle_;
};

}  // namespace oxgenapi

#endif
