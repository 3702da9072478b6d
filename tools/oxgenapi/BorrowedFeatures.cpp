#include "BorrowedFeatures.h"

#include <algorithm>

namespace tool {
namespace {

struct Entry {
  std::string name;
  std::string value;  // of the feature behind it
};

// The entries behind which something can be switched. Moves the selector.
std::vector<Entry> switchableEntries(const NodeMap& map, const Switch& which) {
  const Node selector = map.node(which.selector);
  const Node feature = map.node(which.feature);
  std::vector<Entry> found;
  for (const std::string& name : selector.list(NL_EnumEntries)) {
    const Node entry = map.node(name);
    if (!entry.readable()) continue;
    const std::string text = entry.text();
    selector.set(text);
    if (feature.writable() && feature.readable()) found.push_back({text, feature.text()});
  }
  return found;
}

}  // namespace

BorrowedFeatures::~BorrowedFeatures() {
  while (!changes_.empty()) {
    try {
      putBack();
    } catch (const Failure&) {
      continue;  // what failed first has been told; the rest may still succeed
    }
  }
}

void BorrowedFeatures::set(const std::string& name, const std::string& value) {
  const std::string before = map_.node(name).text();
  if (before != value) {
    write(name, value);
    changes_.push_back({name, before});
  }
}

void BorrowedFeatures::switchOn(const Switch& which, const std::vector<std::string>& entries) {
  const std::string before = map_.node(which.selector).text();
  changes_.push_back({which.selector, before});
  for (const std::string& entry : entries)
    write(which.selector, entry);  // refuses one that does not exist before anything is changed
  const std::vector<Entry> all = switchableEntries(map_, which);
  const bool isOneOn = std::any_of(all.begin(), all.end(), [&](const Entry& entry) { return entry.value == which.on; });
  if (entries.empty() && isOneOn) return;
  for (const Entry& entry : all) {
    const bool on = entries.empty() || std::find(entries.begin(), entries.end(), entry.name) != entries.end();
    if (on == (entry.value == which.on)) continue;
    write(which.selector, entry.name);
    try {
      write(which.feature, on ? which.on : which.off);
    } catch (const Failure&) {
      if (on) throw;
      continue;  // the device insists on it
    }
    changes_.push_back({which.feature, entry.value});
    changes_.push_back({which.selector, entry.name});
  }
  // One that cannot be switched now is refused with the device's reason, unless it is on anyway.
  for (const std::string& entry : entries) {
    write(which.selector, entry);
    if (const Node feature = map_.node(which.feature); !feature.readable() || feature.text() != which.on)
      write(which.feature, which.on);
  }
}

void BorrowedFeatures::execute(const std::string& command, const std::string& undo) {
  map_.node(command).execute();
  changes_.push_back({undo, "true"});
}

void BorrowedFeatures::putBack() {
  while (!changes_.empty()) {
    const Change change = changes_.back();
    changes_.pop_back();
    write(change.name, change.value);
  }
}

void BorrowedFeatures::write(const std::string& name, const std::string& value) { map_.node(name).set(value); }

}  // namespace tool
