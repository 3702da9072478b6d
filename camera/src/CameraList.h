// What a search has found: each physical camera once, under an ID that no other of the list has.
#pragma once

#include <OxCamera/CameraTypes.h>

#include <string>
#include <string_view>
#include <vector>

#include "Search.h"

namespace ox::camera {

struct ListedCamera {
  std::string id;
  std::vector<Way> ways;  // the one that opens it first

  const CameraFacts& facts() const { return ways.front().facts; }
  // Throw CameraError for an item without such a form.
  std::string text(TCameraInfo info) const;
  int64_t number(TCameraInfo info) const;
};

// The serial number, or what stands in for it.
std::string serialOf(const CameraFacts& facts);

// Whether a name other than an ID means this camera: an address, a serial number, a user name, an identity.
bool isNamed(const CameraFacts& facts, std::string_view name);

class CameraList {
 public:
  explicit CameraList(Discovery discovery);

  const std::vector<ListedCamera>& cameras() const { return cameras_; }
  const std::vector<Note>& notes() const { return notes_; }

 private:
  void add(Way way);
  void nameAll();

  std::vector<ListedCamera> cameras_;
  std::vector<Note> notes_;
};

}  // namespace ox::camera
