#include "CameraList.h"

#include <algorithm>
#include <map>

#include "DeviceText.h"
#include "Failure.h"

namespace ox::camera {
namespace {

bool sameText(const std::string& a, const std::string& b) { return !a.empty() && sameIgnoringCase(a, b); }

// Devices lie about what should be unique, so within one transport an address has to agree, too.
bool isSameCamera(const Way& a, const Way& b) {
  const CameraFacts &left = a.facts, &right = b.facts;
  const bool named =
      left.identity.empty() && right.identity.empty()
          ? sameText(left.serial, right.serial) && left.vendor == right.vendor && left.model == right.model
          : sameText(left.identity, right.identity);
  if (a.transport == b.transport) return named && !left.address.empty() && left.address == right.address;
  const bool placed = left.address == right.address || left.address.empty() || right.address.empty();
  const bool numbered = sameText(left.serial, right.serial) && sameText(left.model, right.model) &&
                        sameIgnoringCase(left.vendor, right.vendor);
  return placed && (sameText(left.identity, right.identity) || numbered);
}

bool opens(const Way& way) { return way.facts.reach == Reach::free || way.facts.reach == Reach::unknown; }

}  // namespace

std::string serialOf(const CameraFacts& facts) {
  const std::string serial = shown(facts.serial);
  return serial.empty() ? shown(facts.identity) : serial;
}

bool isNamed(const CameraFacts& facts, std::string_view name) {
  if (name.empty()) return false;
  return name == facts.address || name == serialOf(facts) || name == shown(facts.userName) ||
         sameIgnoringCase(name, facts.identity);
}

std::string ListedCamera::text(TCameraInfo info) const {
  const CameraFacts& best = facts();
  switch (info) {
    case CI_Id: return id;
    case CI_Vendor: return shown(best.vendor);
    case CI_Model: return shown(best.model);
    case CI_Serial: return serialOf(best);
    case CI_UserName: return shown(best.userName);
    case CI_Version: return shown(best.version);
    case CI_Address: return shown(best.address);
    case CI_Interface: return best.interface;
    case CI_InterfaceAddress: return best.interfaceAddress;
    case CI_Protocol: return best.protocol;
    case CI_Transport: return ways.front().transport->name();
    case CI_Ways: {
      std::string all;
      for (const Way& way : ways) {
        all +=
            (all.empty() ? "" : " ") +
            (ways.size() > 1 && way.transport == ways.front().transport ? way.facts.interface : way.transport->name()) +
            ":" + id;
      }
      return all;
    }
    case CI_Identity: return shown(best.identity);
    case CI_Obstacle: return shown(best.obstacle);
    default:
      throw CameraError(OXGENAPI_E_INVALID_ARGUMENT, "There is no text " + std::to_string(info) + " about a camera");
  }
}

int64_t ListedCamera::number(TCameraInfo info) const {
  if (info == CI_Reach) {
    switch (facts().reach) {
      case Reach::free: return CR_Free;
      case Reach::busy: return CR_Busy;
      case Reach::wrongSubnet: return CR_WrongSubnet;
      case Reach::noPermission: return CR_NoPermission;
      case Reach::unknown: return CR_Unknown;
    }
  }
  if (info == CI_LinkSpeed) return static_cast<int64_t>(facts().linkSpeed);
  throw CameraError(OXGENAPI_E_INVALID_ARGUMENT, "There is no number " + std::to_string(info) + " about a camera");
}

CameraList::CameraList(Discovery discovery) : notes_(std::move(discovery.notes)) {
  for (Way& way : discovery.ways) add(std::move(way));
  for (ListedCamera& camera : cameras_) std::stable_partition(camera.ways.begin(), camera.ways.end(), opens);
  nameAll();
}

void CameraList::add(Way way) {
  const auto same = std::find_if(cameras_.begin(), cameras_.end(), [&](const ListedCamera& camera) {
    return std::any_of(camera.ways.begin(), camera.ways.end(),
                       [&](const Way& known) { return isSameCamera(known, way); });
  });
  if (same == cameras_.end())
    cameras_.push_back({{}, {std::move(way)}});
  else
    same->ways.push_back(std::move(way));
}

// Vendor, model and serial number; cameras that agree in them are told apart by address, then by place.
void CameraList::nameAll() {
  const auto clashing = [this](const auto& extend) {
    std::map<std::string, std::vector<ListedCamera*>> named;
    for (ListedCamera& camera : cameras_) named[camera.id].push_back(&camera);
    for (auto& [id, cameras] : named)
      if (cameras.size() > 1) extend(cameras);
  };
  for (ListedCamera& camera : cameras_) {
    const CameraFacts& facts = camera.facts();
    for (const std::string& part : {facts.vendor, facts.model, facts.serial.empty() ? facts.identity : facts.serial}) {
      const std::string clean = idPart(part);
      camera.id += (camera.id.empty() || clean.empty() ? "" : "-") + clean;
    }
    if (camera.id.empty()) camera.id = "camera";
  }
  clashing([](const std::vector<ListedCamera*>& cameras) {
    for (ListedCamera* camera : cameras) camera->id += "@" + idPart(camera->facts().address);
  });
  clashing([](std::vector<ListedCamera*>& cameras) {
    std::sort(cameras.begin(), cameras.end(),
              [](const ListedCamera* a, const ListedCamera* b) { return a->facts().place < b->facts().place; });
    for (size_t i = 0; i < cameras.size(); ++i) cameras[i]->id += "#" + std::to_string(i + 1);
  });
}

}  // namespace ox::camera
