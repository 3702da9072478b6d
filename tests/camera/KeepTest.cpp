// Keeping a camera: heartbeat, loss, waits, reopening, closing, threads, growth.
#include <atomic>
#include <fstream>
#include <map>
#include <thread>

#include "CameraBench.h"

using namespace oxgenapi;
using testing::HasSubstr;

namespace {

constexpr auto kHeartbeat = 800ms;  // a busy machine lets a thread wait for tenths of a second
constexpr auto kSlack = 3s;

class Keeping : public CameraBench {
 protected:
  // A simulated camera of its own, which drops whoever is not in touch within the heartbeat time.
  static Camera open(const std::string& name, std::chrono::milliseconds answer = 0ms) {
    simulate(name + ",heartbeat=" + std::to_string(kHeartbeat.count()));
    CameraOptions options;
    options.heartbeat = kHeartbeat;
    options.answer = answer;
    return Camera::open(name, options);
  }
};

// Under a sanitizer, memory that was given back stays resident for a while.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr int kRounds = 200;
constexpr size_t kGrowthKiB = 64 * 1024;
#else
constexpr int kRounds = 3000;
constexpr size_t kGrowthKiB = 384;
#endif

size_t residentKiB() {
  std::ifstream file("/proc/self/statm");
  size_t size = 0, resident = 0;
  file >> size >> resident;
  return resident * 4;
}

}  // namespace

TEST_F(Keeping, TheHeartbeatRunsWhateverTheCallerDoes) {
  const Camera camera = open("Patient", 5s);
  std::this_thread::sleep_for(2 * kHeartbeat);
  EXPECT_EQ(camera.state(), CS_Open) << "idle";

  const Node width = camera["Width"];
  const auto callback = width.onUpdate([](const Node&) { std::this_thread::sleep_for(2 * kHeartbeat); });
  width.set(320);
  EXPECT_EQ(camera.state(), CS_Open) << "in a callback";

  setFault(camera, OX_FAULT_LATE_MS, 2 * kHeartbeat.count());
  setFault(camera, OX_FAULT_LATE_COUNT, 1);
  EXPECT_EQ(width.integer(), 320);
  EXPECT_EQ(camera.state(), CS_Open) << "during a slow access";
  EXPECT_GT(fault(camera, OX_FAULT_PINGS), 5u);
}

TEST_F(Keeping, ALossIsCalledBackOnceAndEndsEveryWait) {
  const std::map<std::string, std::pair<uint64_t, std::string>> table{
      {"Pulled", {OX_FAULT_UNPLUG_MS, "unplugged"}},
      {"Silent", {OX_FAULT_SILENT_MS, "no answer to heartbeats"}},
      {"Taken", {OX_FAULT_TAKE_OVER, "another program"}},
  };
  for (const auto& [name, how] : table) {
    static int repeats = 0;  // of the whole test: a camera stays as it was left
    Camera camera = open(name + std::to_string(++repeats), 10s);
    std::atomic<int> calls = 0;
    std::string reason;
    camera.onLoss([&](const Camera& lost, const std::string& text) {
      reason = text;
      EXPECT_EQ(lost.state(), CS_Lost);
      ++calls;
    });
    setFault(camera, OX_FAULT_DELAY_MS, 500);
    const auto start = Clock::now();
    setFault(camera, how.first, 10000);
    setFault(camera, OX_FAULT_LATE_MS, 9000);
    std::atomic<int> ended = 0;
    std::vector<std::thread> waiting;
    waiting.emplace_back([&] { ended += camera.waitForLoss(10s); });
    for (int i = 0; i < 2; ++i) {  // one is inside the access, one waits for its turn
      waiting.emplace_back(
          [&] { ended += outcomeOf([&] { fault(camera, OX_FAULT_WRITES); }).code == OXCAMERA_E_LOST; });
    }
    for (std::thread& thread : waiting) thread.join();
    EXPECT_EQ(ended, 3) << name;
    EXPECT_GE(Clock::now() - start, 500ms) << name;
    EXPECT_LT(Clock::now() - start, 500ms + kHeartbeat + kSlack) << name;
    EXPECT_TRUE(becomes(kSlack, [&] { return calls == 1; })) << name;
    EXPECT_THAT(reason, HasSubstr(how.second));
    expectFailure(OXCAMERA_E_LOST, "The camera is lost: " + reason, [&] { fault(camera, OX_FAULT_WRITES); });
    EXPECT_LT(timeOf([&] { camera.close(); }), 2s) << name;
    EXPECT_EQ(calls, 1) << name;
  }
}

// Pulled before each call or during it: the call ends with a loss, and closing does not hang on the camera.
TEST_F(Keeping, ACameraIsUnpluggedInEveryCall) {
  const std::map<std::string, std::function<void(Camera&)>> calls{
      {"Read", [](Camera& camera) { fault(camera, OX_FAULT_WRITES); }},
      {"Write", [](Camera& camera) { setFault(camera, OX_FAULT_DELAY_MS, 0); }},
      {"Map", [](Camera& camera) { camera.map(); }},
      {"Bytes", [](Camera& camera) { camera.description(); }},
      {"Feature", [](Camera& camera) { camera["Width"].set(640); }},
  };
  for (const auto& [name, call] : calls) {
    for (const uint32_t delay : {0, 30}) {
      Camera camera = open(name + std::to_string(delay), 10s);
      setFault(camera, OX_FAULT_DELAY_MS, delay);
      setFault(camera, OX_FAULT_UNPLUG_MS, 1);
      uint32_t code = 0;
      while (code == 0) code = outcomeOf([&] { call(camera); }).code;  // as long as the cable is there
      // Features report it under a code of their own.
      EXPECT_TRUE(code == OXCAMERA_E_LOST || camera.lastFailure().code() == OXCAMERA_E_LOST) << name << delay << code;
      EXPECT_LT(timeOf([&] { camera.close(); }), 2s) << name;
    }
  }
}

// The caller's map and nodes go on with the camera that came back; what they remembered is dropped.
TEST_F(Keeping, ReopeningKeepsHandlesAndDropsWhatWasRemembered) {
  const Camera camera = open("Returning");
  const Node width = camera["Width"], model = camera["DeviceModelName"];
  const int64_t atPowerOn = width.integer();
  width.set(atPowerOn - 64);
  EXPECT_EQ(width.integer(), atPowerOn - 64);
  setFault(camera, OX_FAULT_UNPLUG_MS, 1500);  // it comes back with its settings at power on
  EXPECT_TRUE(camera.waitForLoss(5s));
  expectFailure(OXCAMERA_E_NOT_FOUND, "does not answer", [&] { camera.reopen(); });
  EXPECT_EQ(camera.state(), CS_Lost);
  camera.reopen(5s);
  EXPECT_EQ(camera.state(), CS_Open);
  EXPECT_EQ(width.integer(), atPowerOn);
  EXPECT_EQ(model.text(), "SC-200");
  EXPECT_EQ(camera["Width"].handle(), width.handle());
  camera.reopen();  // also without a loss
  EXPECT_EQ(width.integer(), atPowerOn);
  // From inside the callback, while another camera is not disturbed.
  simulate("Returning,heartbeat=800;Neighbour");
  const Camera neighbour = Camera::open("Neighbour");
  std::atomic<bool> back = false;
  camera.onLoss([&back](const Camera& lost, const std::string&) {
    lost.reopen(5s);
    back = true;
  });
  setFault(camera, OX_FAULT_UNPLUG_MS, 100);
  EXPECT_TRUE(becomes(5s, [&] { return back.load(); }));
  EXPECT_EQ(width.integer(), atPowerOn);
  EXPECT_EQ(neighbour["DeviceModelName"].text(), "SC-200");
}

TEST_F(Keeping, AWriteWithoutAnAnswerIsNotRepeated) {
  const Camera camera = open("Slow", 100ms);
  const Node width = camera["Width"];
  width.set(320);
  const uint32_t before = fault(camera, OX_FAULT_WRITES);
  const auto lateOnce = [&camera] {
    setFault(camera, OX_FAULT_LATE_MS, 300);
    setFault(camera, OX_FAULT_LATE_COUNT, 1);
  };
  lateOnce();
  expectFailure(OXGENAPI_E_UNSPECIFIED, "outcome unknown, it is not repeated", [&] { width.set(640); });
  EXPECT_EQ(camera.lastFailure().code(), OXCAMERA_E_OUTCOME_UNKNOWN);
  EXPECT_EQ(fault(camera, OX_FAULT_WRITES), before + 1);
  EXPECT_EQ(width.integer(), 640);  // it has arrived
  lateOnce();
  expectFailure(OXCAMERA_E_TIMEOUT, "No answer to a read within 100 ms", [&] { fault(camera, OX_FAULT_WRITES); });
  EXPECT_EQ(camera.state(), CS_Open);
}

TEST_F(Keeping, ClosingEndsAccessesAndLeavesHandlesHarmless) {
  Camera camera = open("Closing", 10s);
  const NodeMap map = camera.map();
  const Node width = map.node("Width");
  setFault(camera, OX_FAULT_LATE_MS, 9000);
  std::atomic<uint32_t> code = 0;
  std::thread inside([&] { code = outcomeOf([&] { fault(camera, OX_FAULT_WRITES); }).code; });
  std::this_thread::sleep_for(20ms);
  EXPECT_LT(timeOf([&] { camera.close(); }), 2s);
  inside.join();
  EXPECT_EQ(code, OXCAMERA_E_CLOSED);
  camera.close();
  EXPECT_EQ(camera.state(), CS_Closed);
  expectFailure(OXGENAPI_E_UNSPECIFIED, "The camera is closed", [&] { width.set(320); });
  for (const auto& call : std::vector<std::function<void()>>{[&] { camera.map(); }, [&] { camera.description(); },
                                                             [&] { camera.reopen(); }, [&] { camera.network(); },
                                                             [&] { camera.waitForLoss(1ms); }})
    expectFailure(OXCAMERA_E_CLOSED, "The camera is closed", call);
  EXPECT_EQ(camera.text(CI_Serial), "Closing");
  const Node other = Camera::open("Closing")["Height"];  // its camera goes at once
  expectFailure(OXGENAPI_E_UNSPECIFIED, "The camera is closed", [&] { other.integer(); });

  // The last handle goes inside the callback.
  auto last = std::make_unique<Camera>(Camera::open("Closing"));
  std::atomic<bool> gone = false;
  std::atomic<bool> mayGo = false;
  last->onLoss([&](const Camera&, const std::string&) {
    EXPECT_TRUE(becomes(5s, [&] { return mayGo.load(); }));
    last.reset();
    gone = true;
  });
  setFault(*last, OX_FAULT_UNPLUG_MS, 10);
  mayGo = true;
  EXPECT_TRUE(becomes(5s, [&] { return gone.load(); }));
}

TEST_F(Keeping, EightThreadsListOpenAndUseCameras) {
  simulate("One;Two;Three");
  std::atomic<int> opened = 0;
  std::vector<std::thread> threads;
  for (int t = 0; t < 8; ++t) {
    threads.emplace_back([t, &opened] {
      const char* const names[] = {"One", "Two", "Three"};
      for (int round = 0; round < 20; ++round) {
        EXPECT_EQ(findCameras(1ms).size(), 3u);
        const Outcome outcome = outcomeOf([&] {
          const Camera camera = Camera::open(names[round % 3], t % 2 == 0 ? OX_CONTROL : OX_READ_ONLY);
          ++opened;
          EXPECT_GT(camera["Width"].integer(), 0);
        });
        EXPECT_TRUE(outcome.code == 0 || outcome.code == OXCAMERA_E_IN_USE) << outcome.text;
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_GE(opened, 4 * 20);
}

TEST_F(Keeping, NothingGrows) {
  simulate("Many");
  const auto round = [](int times) {
    for (int i = 0; i < times; ++i) {
      findCameras(1ms);
      const Camera camera = Camera::open("Many", OX_READ_ONLY);
      outcomeOf([&] { camera.write("abcd", 0, 4); });
    }
  };
  round(300);
  const size_t before = residentKiB();
  round(kRounds);
  EXPECT_LT(residentKiB(), before + kGrowthKiB);
}
