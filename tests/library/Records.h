// The telemetry records of this test program, which registers with the telemetry library at its lowest level.
#pragma once
#include <string>
#include <vector>

// Collects the records sent on any thread while it lives.
class Records {
 public:
  Records();
  ~Records();
  Records(const Records&) = delete;
  Records& operator=(const Records&) = delete;

  // As sent, in order.
  std::vector<std::string> lines() const;
  // The member "text" of each line of the level.
  std::vector<std::string> texts(int level = 3) const;
};
