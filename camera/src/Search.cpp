#include "Search.h"

#include <condition_variable>
#include <memory>
#include <mutex>
#include <system_error>
#include <thread>

namespace ox::camera {
namespace {

constexpr std::chrono::seconds kGrace{3};

Findings searchOne(Transport& transport, const Search& search) {
  try {
    return transport.search(search);
  } catch (const std::exception& error) {
    return {{}, {{Note::Kind::interfaceFailed, transport.name() + " cannot search: " + error.what()}}};
  } catch (...) {
    return {{}, {{Note::Kind::interfaceFailed, transport.name() + " cannot search"}}};
  }
}

// Shared with the searching threads, because one of them may still run when nobody waits for it any more.
struct Answers {
  std::mutex mutex;
  std::condition_variable arrived;
  std::vector<std::unique_ptr<Findings>> of;
  size_t missing = 0;
};

}  // namespace

Discovery searchAll(const std::vector<Transport*>& transports, const Search& search) {
  const auto answers = std::make_shared<Answers>();
  answers->of.resize(transports.size());
  answers->missing = transports.size();
  for (size_t i = 0; i < transports.size(); ++i) {
    const auto ask = [answers, i, search, transport = transports[i]] {
      auto found = std::make_unique<Findings>(searchOne(*transport, search));
      const std::lock_guard lock(answers->mutex);
      answers->of[i] = std::move(found);
      --answers->missing;
      answers->arrived.notify_one();
    };
    try {
      std::thread(ask).detach();
    } catch (const std::system_error&) {  // one after the other then
      ask();
    }
  }
  std::unique_lock lock(answers->mutex);
  answers->arrived.wait_for(lock, search.time + kGrace, [&] { return answers->missing == 0; });
  Discovery discovery;
  for (size_t i = 0; i < transports.size(); ++i) {
    if (!answers->of[i]) {
      discovery.notes.push_back({Note::Kind::interfaceFailed, transports[i]->name() + " did not answer in time"});
      continue;
    }
    for (CameraFacts& facts : answers->of[i]->cameras) discovery.ways.push_back({transports[i], std::move(facts)});
    for (Note& note : answers->of[i]->notes) discovery.notes.push_back(std::move(note));
  }
  return discovery;
}

}  // namespace ox::camera
