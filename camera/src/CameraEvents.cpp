#include "CameraEvents.h"

#include <OxBase/OxBase.h>
#include <OxGenApi/OxGenApi.h>

#include <algorithm>
#include <chrono>

#include "Failure.h"
#include "Session.h"

namespace ox::camera {
namespace {

using Clock = std::chrono::steady_clock;

constexpr Milliseconds kSlice{50};  // between looks whether the camera is still there

}  // namespace

void CameraEvents::next(Milliseconds time, TCameraEvent& event) {
  const std::lock_guard lock(fetching_);
  if (!fetch(time))
    throw CameraError(OXCAMERA_E_TIMEOUT, "No event message came within " + std::to_string(time.count()) + " ms");
  event.EventID[message_.id.copy(event.EventID, sizeof event.EventID - 1)] = '\0';
  event.Data = message_.payload.empty() ? nullptr : message_.payload.data();
  event.Size = message_.payload.size();
  if (event.Data) deliver();
}

bool CameraEvents::fetch(Milliseconds time) {
  const Clock::time_point end = Clock::now() + time;
  while (true) {
    const auto left = std::chrono::duration_cast<Milliseconds>(end - Clock::now());
    const Milliseconds slice = std::clamp(left, Milliseconds{0}, kSlice);
    const bool came = session_.nextEvent(message_, slice);
    if (came || left <= kSlice) return came;
  }
}

void CameraEvents::deliver() const {
  NODEMAP const map = session_.nodeMap();
  const TEventDataEx data{message_.id.c_str(), message_.payload.data(), message_.payload.size()};
  const uint32_t code = NMDeliverEventEx(map, &data);
  OxIfaceContainerReleaseUseCounter(map);
  if (code != OXGENAPI_OK) throw lastFailure(code);
}

}  // namespace ox::camera
