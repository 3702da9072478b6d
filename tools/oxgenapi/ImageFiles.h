// Images on their way to files: a bounded queue to writer threads, and names with padded numbers.
#pragma once

#include <OxCamera/oxcamera.hpp>

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "Failure.h"

namespace tool {

// The name of one image: {n} in the pattern becomes its number, {id} that of its frame, {time} the camera's time in ns.
// A pattern without any of them gets "-{n}" before its ending when there are several images.
std::string imageName(const std::string& pattern, uint64_t number, uint64_t count, const TImage& image);

class ImageFiles {
 public:
  // What happens to an image while the queue is full.
  enum class Full { wait, drop, stop };

  ImageFiles(size_t queued, uint32_t writers, Full full, const TSaveOptions& options);
  ~ImageFiles();
  ImageFiles(const ImageFiles&) = delete;
  ImageFiles& operator=(const ImageFiles&) = delete;

  // Hands an image over. Throws Failure when the queue is full and that stops it, or when an earlier one failed.
  void add(oxgenapi::Image image, std::string path);
  // Waits until all are written. Throws Failure as add() does.
  void finish();

  uint64_t written();
  uint64_t dropped();
  size_t waiting();
  std::string lastGood();  // the last file that is complete, empty before the first
  bool failed();

 private:
  struct Job {
    oxgenapi::Image image;
    std::string path;
  };

  void write();
  void throwFailure() const;  // with the mutex held

  const size_t queued_;
  const Full full_;
  const TSaveOptions options_;
  std::mutex mutex_;  // for what follows
  std::condition_variable changed_;
  std::deque<Job> jobs_;
  std::optional<Failure> failure_;
  std::string lastGood_;
  size_t busy_ = 0;
  uint64_t written_ = 0;
  uint64_t dropped_ = 0;
  bool ends_ = false;
  std::vector<std::thread> writers_;
};

}  // namespace tool
