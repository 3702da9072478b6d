// Taking pictures: start, stop, trigger, and when each exposure happens.
#pragma once

#include <cstdint>
#include <deque>

#include "CameraCore.h"
#include "Picture.h"

namespace ox::simulation {

class Acquisition final : public Behaviour {
 public:
  explicit Acquisition(CameraCore& core);

  void powerOn() override;
  void load(const StateBlocks& blocks) override;

  /// The oldest picture that nobody fetched; without one, a free running camera takes the next picture at once.
  /// False: no picture.
  bool nextPicture(PictureFacts& facts);
  /// The oldest picture that nobody fetched, and none that is not due.
  bool duePicture(PictureFacts& facts);

 private:
  void start();
  void stop();
  bool running() const;
  bool triggered() const;
  void scheduleNext();
  void trigger();
  void expose(bool byTrigger);
  int64_t exposureNs() const;
  int64_t periodNs() const;
  uint64_t status(int32_t signal) const;
  void checkSize(RegisterId changed);

  std::deque<PictureFacts> waiting_;
};

}  // namespace ox::simulation
