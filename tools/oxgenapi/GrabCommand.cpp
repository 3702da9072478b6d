#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <memory>
#include <optional>

#include "Assignment.h"
#include "Checks.h"
#include "Commands.h"
#include "ImageFiles.h"
#include "Interrupt.h"
#include "Progress.h"

namespace tool {
namespace {

using Clock = std::chrono::steady_clock;
using namespace std::chrono_literals;
using oxgenapi::Camera;
using oxgenapi::Image;

constexpr auto kLook = 200ms;          // how often a wait looks at Ctrl-C
constexpr uint32_t kSpareBuffers = 4;  // of the receiver, beside those that wait for a writer

struct GrabOptions {
  std::vector<std::string> assignments;
  uint64_t count = 1;
  std::string output = "image.png";
  bool discard = false;
  bool overwrite = false;
  bool eightBits = false;
  uint32_t pngLevel = 1;
  uint32_t queue = 16;
  uint32_t writers = 2;
  std::string whenFull = "wait";
  std::string trigger = "none";
  double timeout = 5;  // seconds
};

ImageFiles::Full fullOf(const std::string& word) {
  return word == "drop" ? ImageFiles::Full::drop : word == "stop" ? ImageFiles::Full::stop : ImageFiles::Full::wait;
}

Json numberOrNull(uint64_t number) { return number == OX_UNKNOWN ? Json() : Json(number); }

class Grabbing {
 public:
  Grabbing(Session& session, const GrabOptions& options)
      : session_(session),
        options_(options),
        camera_(Camera::open(session.cameraName().empty() ? "simulated" : session.cameraName())) {}

  void run() {
    const bool triggered = options_.trigger == "software";
    for (const auto& [name, value] : parseAssignments(options_.assignments)) camera_[name].set(value);
    if (triggered) {
      camera_["TriggerMode"].set("On");
      camera_["TriggerSource"].set("Software");
    }
    TSaveOptions saving = Image::defaultSaveOptions();
    saving.Overwrite = options_.overwrite ? 1 : 0;
    saving.EightBits = options_.eightBits ? 1 : 0;
    saving.PngLevel = options_.pngLevel;
    const Interrupt interrupt;
    oxgenapi::StreamOptions stream;
    stream.buffers = options_.queue + options_.writers + kSpareBuffers;
    camera_.start(stream);
    start_ = Clock::now();
    {
      Progress progress(session_.output(), "grabbing", options_.count, "images");
      ImageFiles files(options_.queue, options_.writers, fullOf(options_.whenFull), saving);
      try {
        while (grabbed_ < options_.count && !interrupt.requested()) {
          if (triggered) camera_["TriggerSoftware"].execute();
          std::optional<Image> image = next(interrupt);
          if (!image) break;
          take(std::move(*image), files);
          progress.reach(grabbed_);
        }
        files.finish();
      } catch (const Failure& failure) {
        progress.clear();
        session_.report(failure);
        if (files.failed() || failure.code() == kFileFailed) session_.fail(kNotWritten);
        if (!files.lastGood().empty()) session_.output().hint("The last complete file is " + files.lastGood());
      }
      progress.clear();
      written_ = files.written();
      dropped_ = files.dropped();
    }
    statistics_ = camera_.statistics();
    advice_ = camera_.advice();
    camera_.stop();
    report();
    camera_.close();
  }

 private:
  // Nothing after Ctrl-C.
  std::optional<Image> next(const Interrupt& interrupt) {
    const auto end = Clock::now() + std::chrono::duration<double>(options_.timeout);
    for (;;) {
      try {
        return camera_.next(kLook);
      } catch (const Failure& failure) {
        if (failure.code() != OXCAMERA_E_TIMEOUT) throw;
        if (interrupt.requested()) return std::nullopt;
        if (Clock::now() < end) continue;
        const std::string text = failure.what();
        const size_t why = text.find("; ");
        throw Failure(OXCAMERA_E_TIMEOUT, "No image came within " + std::to_string(std::lround(options_.timeout)) +
                                              " s" + (why == std::string::npos ? "" : text.substr(why)));
      }
    }
  }

  void take(Image image, ImageFiles& files) {
    const TImage& record = image.record();
    if (record.TimeKnown != 0) {
      if (firstTime_ == 0) firstTime_ = record.Time;
      lastTime_ = record.Time;
      ++timed_;
    }
    ++grabbed_;
    if (!image.complete()) {
      ++incomplete_;
      return;
    }
    if (options_.discard) return;
    std::string name = imageName(options_.output, grabbed_, options_.count, record);
    files.add(std::move(image), std::move(name));
  }

  // By the camera's own clock, so that bursts on the way do not show in it.
  double rate() const {
    return timed_ > 1 && lastTime_ > firstTime_
               ? static_cast<double>(timed_ - 1) * 1e9 / static_cast<double>(lastTime_ - firstTime_)
               : 0;
  }

  void report() {
    const Output& output = session_.output();
    const double seconds = std::chrono::duration<double>(Clock::now() - start_).count();
    const TStreamStatistics& s = statistics_;
    if (output.json()) {
      output.document({{"images", grabbed_},
                       {"written", written_},
                       {"dropped", dropped_},
                       {"complete", s.Complete},
                       {"incomplete", s.Incomplete},
                       {"lost", s.Lost},
                       {"noBuffer", numberOrNull(s.NoBuffer)},
                       {"bytes", s.Bytes},
                       {"payloadSize", s.PayloadSize},
                       {"seconds", seconds},
                       {"framesPerSecond", rate()},
                       {"packets", numberOrNull(s.Packets)},
                       {"missingPackets", numberOrNull(s.Missing)},
                       {"resendsAsked", numberOrNull(s.ResendsAsked)},
                       {"packetSize", s.PacketSet},
                       {"socketAsked", s.SocketAsked},
                       {"socketGranted", s.SocketGranted},
                       {"advice", advice_}});
      return;
    }
    char frames[32];
    std::snprintf(frames, sizeof frames, "%.1f", rate());
    output.line(
        counted(grabbed_, "image") + (options_.discard ? "" : ", " + std::to_string(written_) + " written") +
        (dropped_ > 0 ? ", " + std::to_string(dropped_) + " dropped because writing was slower" : "") +
        (incomplete_ > 0 ? ", " + std::to_string(incomplete_) + " incomplete and not written" : "") +
        (s.Lost > 0 ? ", " + std::to_string(s.Lost) + " lost" : "") +
        (s.NoBuffer != OX_UNKNOWN && s.NoBuffer > 0 ? ", " + std::to_string(s.NoBuffer) + " without a buffer" : "") +
        (rate() > 0 ? ", " + std::string(frames) + " frames/s" : ""));
    if (!advice_.empty()) output.note(advice_);
  }

  Session& session_;
  const GrabOptions& options_;
  Camera camera_;
  Clock::time_point start_;
  uint64_t grabbed_ = 0, incomplete_ = 0, written_ = 0, dropped_ = 0;
  uint64_t firstTime_ = 0, lastTime_ = 0, timed_ = 0;
  TStreamStatistics statistics_{};
  std::string advice_;
};

}  // namespace

void addGrab(const Command& program) {
  auto options = std::make_shared<GrabOptions>();
  const Command command = program.subcommand("grab", "Take images and save them");
  command.option("assignments", options->assignments, "Features to write first, in the order given").type("NAME=VALUE");
  command.option("-n,--count", options->count, "How many images").check(between(1, 1'000'000'000)).showDefault();
  command
      .option(
          "-o,--output", options->output,
          "File; its ending says how: .png, .tif, .pgm, .ppm, .jpg, .npy, .raw. {n} is the image's number, {id} the "
          "frame's, {time} the camera's time; several images get a number in any case")
      .type("FILE")
      .showDefault();
  command.flag("--discard", options->discard, "Save nothing: tests the link");
  command.flag("--overwrite", options->overwrite, "Replace files that are there");
  command.flag("--eight-bits", options->eightBits, "Make 8 bits of deeper images; otherwise they become 16");
  command.option("--png-level", options->pngLevel, "0, not compressed, to 9, smallest")
      .check(between(0, 9))
      .showDefault();
  command.option("--queue", options->queue, "Images that may wait for a writer").check(between(1, 1000)).showDefault();
  command.option("--writers", options->writers, "Threads that write").check(between(1, 64)).showDefault();
  command.option("--when-full", options->whenFull, "While the queue is full: wait, drop images, or stop")
      .check(oneOf({"wait", "drop", "stop"}))
      .type("wait|drop|stop")
      .showDefault();
  command
      .option("--trigger", options->trigger,
              "software: write TriggerMode=On and TriggerSource=Software, execute TriggerSoftware for each image")
      .check(oneOf({"none", "software"}))
      .type("none|software")
      .showDefault();
  command.option("--timeout", options->timeout, "Seconds to wait for an image").check(between(0, 86'400)).showDefault();
  command.footer(
      "Without --camera the images are those of a simulated camera. Exit status 4: an image could not be written.\n"
      "Example:\n  oxgenapi --camera GV01 grab -n 10 -o image.png\n"
      "  oxgenapi --camera GV01 --json grab -n 1000 --discard ExposureTime=5000");
  command.runs([options](Session& session) {
    if (session.hasFiles()) throw UsageError("grab takes images from a camera, not with --xml or --state");
    Grabbing(session, *options).run();
  });
}

}  // namespace tool
