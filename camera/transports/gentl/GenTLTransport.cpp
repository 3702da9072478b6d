// Cameras of vendors' producers: every *.cti file in the folders of GENICAM_GENTL64_PATH.
#include <ModuleProbe.h>

#include <algorithm>
#include <condition_variable>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <mutex>
#include <string_view>
#include <system_error>
#include <thread>

#include "GenTLDevice.h"

namespace ox::camera::gentl {
namespace {

namespace fs = std::filesystem;

constexpr const char* kPath = "GENICAM_GENTL64_PATH";
constexpr Milliseconds kGrace{1000};  // beyond the search time, before a producer is left behind

bool isProducer(const fs::path& file) {
  std::string ending = file.extension().string();
  std::transform(ending.begin(), ending.end(), ending.begin(), [](unsigned char c) { return std::tolower(c); });
  return ending == ".cti";
}

// A file that was named, or those of a folder, in the order of their names.
void addProducers(const fs::path& place, std::vector<fs::path>& files, std::vector<Note>& notes) {
  std::error_code error;
  if (fs::is_regular_file(place, error) && isProducer(place)) return files.push_back(place);
  std::vector<fs::path> found;
  for (fs::directory_iterator each(place, error), end; !error && each != end; each.increment(error))
    if (isProducer(each->path())) found.push_back(each->path());
  if (error) notes.push_back({Note::Kind::advice, std::string(kPath) + ": " + place.string() + ": " + error.message()});
  std::sort(found.begin(), found.end());
  files.insert(files.end(), found.begin(), found.end());
}

std::vector<fs::path> producerFiles(std::vector<Note>& notes) {
  const char* const text = std::getenv(kPath);
  std::string_view rest = text == nullptr ? "" : text;
  std::vector<fs::path> files;
  while (!rest.empty()) {
    const size_t end = std::min(rest.find(':'), rest.size());
    if (end > 0) addProducers(fs::path(rest.substr(0, end)), files, notes);
    rest.remove_prefix(std::min(end + 1, rest.size()));
  }
  return files;
}

// A search in one producer; shared with its thread, which nobody waits for for ever.
struct Searching {
  std::mutex mutex;
  std::condition_variable done;
  std::unique_ptr<Findings> findings;
};

// One file and what became of it. Loaded when it is first searched, on the searching thread.
class Source {
 public:
  explicit Source(fs::path file) : file_(std::move(file)) {}

  Findings search(Milliseconds time) {
    const std::lock_guard lock(mutex_);
    if (!refusal_.empty()) return {{}, {{Note::Kind::moduleFailed, refusal_}}};
    Findings findings;
    try {
      if (!system_) load();
      findings = system_->search(time);
    } catch (const std::exception& error) {
      findings.notes.push_back({system_ ? Note::Kind::interfaceFailed : Note::Kind::moduleFailed, error.what()});
      return findings;
    }
    findings.notes.insert(findings.notes.begin(), {Note::Kind::module, file_.string() + " is loaded"});
    for (const CameraFacts& camera : findings.cameras) remember(camera.place);
    return findings;
  }

  std::shared_ptr<System> systemOf(const std::string& place) {
    const std::lock_guard lock(places_);
    const auto found = known_.find(place);
    return found == known_.end() ? nullptr : found->second;
  }

  const fs::path& file() const { return file_; }

 private:
  // A producer that crashes when it is loaded is not loaded here.
  void load() {
    const std::string fault = probeModule(folderOfCode(reinterpret_cast<const void*>(&isProducer)), file_);
    if (!fault.empty()) {
      refusal_ = file_.string() + " " + fault;
      throw TransportError(Reason::failed, refusal_);
    }
    system_ = std::make_shared<System>(file_);
  }

  void remember(const std::string& place) {
    const std::lock_guard lock(places_);
    known_[place] = system_;
  }

  const fs::path file_;
  std::mutex mutex_;  // one search at a time
  std::shared_ptr<System> system_;
  std::string refusal_;
  std::mutex places_;  // a leaf
  std::map<std::string, std::shared_ptr<System>> known_;
};

class GenTLTransport final : public Transport {
 public:
  std::string name() const override { return "gentl"; }
  bool isAddress(const std::string&) const override { return false; }

  Findings search(const Search& search) override {
    Findings findings;
    if (!search.address.empty()) return findings;
    std::vector<std::pair<std::shared_ptr<Source>, std::shared_ptr<Searching>>> running;
    for (const fs::path& file : producerFiles(findings.notes)) {
      const std::shared_ptr<Source> source = sourceOf(file);
      const auto searching = std::make_shared<Searching>();
      const auto work = [source, searching, time = search.time] {
        auto found = std::make_unique<Findings>(source->search(time));
        const std::lock_guard lock(searching->mutex);
        searching->findings = std::move(found);
        searching->done.notify_all();
      };
      try {
        std::thread(work).detach();
      } catch (const std::system_error&) {
        work();
      }
      running.emplace_back(source, searching);
    }
    const auto end = std::chrono::steady_clock::now() + search.time + kGrace;
    for (const auto& [source, searching] : running) {
      std::unique_lock lock(searching->mutex);
      if (!searching->done.wait_until(lock, end, [&, each = searching.get()] { return each->findings != nullptr; })) {
        findings.notes.push_back({Note::Kind::interfaceFailed, source->file().string() + " did not answer in time"});
        continue;
      }
      Findings& found = *searching->findings;
      std::move(found.cameras.begin(), found.cameras.end(), std::back_inserter(findings.cameras));
      std::move(found.notes.begin(), found.notes.end(), std::back_inserter(findings.notes));
    }
    return findings;
  }

  std::unique_ptr<Device> open(const OpenRequest& request) override {
    std::vector<std::shared_ptr<Source>> sources;
    {
      const std::lock_guard lock(mutex_);
      for (const auto& [file, source] : sources_) sources.push_back(source);
    }
    for (const auto& source : sources)
      if (const std::shared_ptr<System> system = source->systemOf(request.place)) return openDevice(system, request);
    throw TransportError(Reason::notFound, "No producer has found this camera");
  }

 private:
  // One for each file, whatever way leads to it: a library is initialised once in a process.
  std::shared_ptr<Source> sourceOf(const fs::path& file) {
    std::error_code error;
    const fs::path real = fs::canonical(file, error);
    const std::lock_guard lock(mutex_);
    std::shared_ptr<Source>& source = sources_[error ? file : real];
    if (!source) source = std::make_shared<Source>(error ? file : real);
    return source;
  }

  std::mutex mutex_;
  std::map<fs::path, std::shared_ptr<Source>> sources_;
};

}  // namespace
}  // namespace ox::camera::gentl

extern "C" __attribute__((visibility("default"))) ox::camera::Transport* oxCameraTransport(int version) {
  return version == ox::camera::kTransportVersion ? new ox::camera::gentl::GenTLTransport : nullptr;
}
