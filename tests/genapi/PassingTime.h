// Time in which every pause is over at once, for as long as the object lives.
#pragma once
#include "files/CommandWait.h"

class PassingTime : public GENAPI_NAMESPACE::WaitTime {
 public:
  PassingTime() { exchange(this); }
  ~PassingTime() override { exchange(nullptr); }
  std::chrono::milliseconds now() const override { return now_; }
  void sleep(std::chrono::milliseconds pause) const override { now_ += pause; }

 private:
  mutable std::chrono::milliseconds now_{0};
};
