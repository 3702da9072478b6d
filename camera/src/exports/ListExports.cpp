#include <OxCamera/CameraList.h>

#include "DeviceText.h"
#include "ExportFrame.h"
#include "Modules.h"
#include "NetworkAddressText.h"

using namespace ox::camera;

namespace {

constexpr Milliseconds kSearchTime{1000};

const ListedCamera& cameraAt(const CameraList& list, size_t index) {
  if (index >= list.cameras().size()) {
    throw CameraError(OXGENAPI_E_INVALID_ARGUMENT, "Index out of range: " + std::to_string(index) + " of " +
                                                       std::to_string(list.cameras().size()) + " cameras");
  }
  return list.cameras()[index];
}

// The notes in the order of their kinds: modules, interfaces, answers, and what to check where nothing was found.
Discovery discover(Milliseconds time) {
  const LoadedTransports loaded = loadTransports();
  Discovery discovery = searchAll(loaded.transports, {time});
  discovery.notes.insert(discovery.notes.begin(), loaded.notes.begin(), loaded.notes.end());
  if (loaded.notes.empty()) {
    discovery.notes.push_back({Note::Kind::advice,
                               "No transport is installed: install the package "
                               "oxgenapi-transport-aravis, or name the folder of the modules in "
                               "OXGENAPI_TRANSPORTS"});
  }
  std::stable_sort(discovery.notes.begin(), discovery.notes.end(),
                   [](const Note& a, const Note& b) { return a.kind < b.kind; });
  return discovery;
}

}  // namespace

uint32_t OxCameraFind(uint32_t TimeMs, OXCAMERALIST& List) {
  List = nullptr;
  return guarded([&] {
    CameraList found(discover(TimeMs == 0 ? kSearchTime : Milliseconds{TimeMs}));
    auto object = orxBase::detail::make_shared_t<ListObject>(std::move(found));
    List = static_cast<OXCAMERALIST>(static_cast<void*>(object.release()));
  });
}

uint32_t OxCameraListCount(OXCAMERALIST List, size_t& Count) {
  return onList(List, [&](const CameraList& list) { Count = list.cameras().size(); });
}

uint32_t OxCameraListText(OXCAMERALIST List, size_t Index, TCameraInfo Info, char* Text, size_t& TextSize) {
  return onList(List, [&](const CameraList& list) { giveText(cameraAt(list, Index).text(Info), Text, TextSize); });
}

uint32_t OxCameraListNumber(OXCAMERALIST List, size_t Index, TCameraInfo Info, int64_t& Value) {
  return onList(List, [&](const CameraList& list) { Value = cameraAt(list, Index).number(Info); });
}

uint32_t OxCameraNoteCount(OXCAMERALIST List, size_t& Count) {
  return onList(List, [&](const CameraList& list) { Count = list.notes().size(); });
}

uint32_t OxCameraNote(OXCAMERALIST List, size_t Index, TCameraNote& Kind, char* Text, size_t& TextSize) {
  return onList(List, [&](const CameraList& list) {
    if (Index >= list.notes().size())
      throw CameraError(OXGENAPI_E_INVALID_ARGUMENT, "Index out of range: " + std::to_string(Index) + " of " +
                                                         std::to_string(list.notes().size()) + " notes");
    const Note& note = list.notes()[Index];
    Kind = static_cast<TCameraNote>(note.kind);
    giveText(shown(note.text), Text, TextSize);
  });
}

uint32_t OxCameraProposeAddress(OXCAMERALIST List, size_t Index, TNetworkAddress& Address) {
  return onList(List, [&](const CameraList& list) {
    const Way& way = cameraAt(list, Index).ways.front();
    Address = recordOf(way.transport->proposeAddress(way.facts));
  });
}

uint32_t OxCameraForceAddress(OXCAMERALIST List, size_t Index, const TNetworkAddress* Address) {
  return onList(List, [&](const CameraList& list) {
    const Way& way = cameraAt(list, Index).ways.front();
    way.transport->forceAddress(way.facts, checkedAddress(Address));
  });
}
