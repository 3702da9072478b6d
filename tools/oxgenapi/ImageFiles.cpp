#include "ImageFiles.h"

#include <algorithm>
#include <utility>

namespace tool {
namespace {

constexpr size_t kLeastDigits = 4;

bool replace(std::string& text, const std::string& key, const std::string& value) {
  bool found = false;
  for (size_t at; (at = text.find(key)) != std::string::npos; found = true) text.replace(at, key.size(), value);
  return found;
}

std::string padded(uint64_t number, size_t digits) {
  const std::string text = std::to_string(number);
  return std::string(digits - std::min(digits, text.size()), '0') + text;
}

}  // namespace

std::string imageName(const std::string& pattern, uint64_t number, uint64_t count, const TImage& image) {
  std::string name = pattern;
  const std::string digits = padded(number, std::max(kLeastDigits, std::to_string(count).size()));
  bool found = replace(name, "{n}", digits);
  found = replace(name, "{id}", std::to_string(image.FrameId)) || found;
  found = replace(name, "{time}", std::to_string(image.Time)) || found;
  if (found || count == 1) return name;
  const size_t slash = name.find_last_of('/'), dot = name.find_last_of('.');
  const bool ending = dot != std::string::npos && (slash == std::string::npos || dot > slash);
  return name.insert(ending ? dot : name.size(), "-" + digits);
}

ImageFiles::ImageFiles(size_t queued, uint32_t writers, Full full, const TSaveOptions& options)
    : queued_(queued), full_(full), options_(options) {
  for (uint32_t i = 0; i < writers; ++i) writers_.emplace_back([this] { write(); });
}

ImageFiles::~ImageFiles() {
  {
    const std::lock_guard lock(mutex_);
    ends_ = true;
    changed_.notify_all();
  }
  for (std::thread& writer : writers_) writer.join();
}

void ImageFiles::throwFailure() const {
  if (failure_) throw Failure(*failure_);
}

void ImageFiles::add(oxgenapi::Image image, std::string path) {
  std::unique_lock lock(mutex_);
  throwFailure();
  if (jobs_.size() >= queued_) {
    if (full_ == Full::drop) {
      ++dropped_;
      return;
    }
    if (full_ == Full::stop)
      throw Failure(kFileFailed, "writing is slower than the camera: " + std::to_string(queued_) + " images wait");
    changed_.wait(lock, [this] { return jobs_.size() < queued_ || failure_; });
    throwFailure();
  }
  jobs_.push_back({std::move(image), std::move(path)});
  changed_.notify_all();
}

void ImageFiles::finish() {
  std::unique_lock lock(mutex_);
  changed_.wait(lock, [this] { return failure_ || (jobs_.empty() && busy_ == 0); });
  throwFailure();
}

void ImageFiles::write() {
  std::unique_lock lock(mutex_);
  for (;;) {
    changed_.wait(lock, [this] { return ends_ || (!jobs_.empty() && !failure_); });
    if (jobs_.empty() || failure_) return;
    Job job = std::move(jobs_.front());
    jobs_.pop_front();
    ++busy_;
    changed_.notify_all();
    lock.unlock();
    std::optional<Failure> failure;
    std::string saved;
    try {
      saved = job.image.save(job.path, options_);
    } catch (const Failure& problem) {
      failure = problem;
    }
    job.image.giveBack();
    lock.lock();
    --busy_;
    if (failure) {
      if (!failure_) failure_ = failure;
    } else {
      ++written_;
      lastGood_ = saved;
    }
    changed_.notify_all();
  }
}

uint64_t ImageFiles::written() {
  const std::lock_guard lock(mutex_);
  return written_;
}

uint64_t ImageFiles::dropped() {
  const std::lock_guard lock(mutex_);
  return dropped_;
}

size_t ImageFiles::waiting() {
  const std::lock_guard lock(mutex_);
  return jobs_.size() + busy_;
}

std::string ImageFiles::lastGood() {
  const std::lock_guard lock(mutex_);
  return lastGood_;
}

bool ImageFiles::failed() {
  const std::lock_guard lock(mutex_);
  return failure_.has_value();
}

}  // namespace tool
