// What a command changes on a camera for its own time and puts back afterwards.
#pragma once

#include <string>
#include <vector>

#include "Failure.h"
#include "NodeMap.h"

namespace tool {

// Something behind a selector, such as the notification of each event.
struct Switch {
  const char* selector;
  const char* feature;
  const char* on;   // the feature's value
  const char* off;  // the same
};

class BorrowedFeatures {
 public:
  explicit BorrowedFeatures(const NodeMap& map) : map_(map) {}
  BorrowedFeatures(const BorrowedFeatures&) = delete;
  BorrowedFeatures& operator=(const BorrowedFeatures&) = delete;
  // After a failure: puts back what can be put back.
  ~BorrowedFeatures();

  // All these throw Failure.
  void set(const std::string& name, const std::string& value);
  // Switches on what these entries of the selector select, and off what the others do, as far as the device lets it be
  // switched off. Without entries: on all that can be switched, unless one of them is on already.
  void switchOn(const Switch& which, const std::vector<std::string>& entries);
  // Executes a command now, and the other one when things are put back.
  void execute(const std::string& command, const std::string& undo);
  // The last change first.
  void putBack();

 private:
  struct Change {
    std::string name;
    std::string value;
  };
  void write(const std::string& name, const std::string& value);

  const NodeMap& map_;
  std::vector<Change> changes_;  // what to write, from the last to the first
};

}  // namespace tool
