// Streams of the simulated camera, and of one that does what a test says: sequence, waits, counters, memory, faults.
#include <algorithm>
#include <array>
#include <cstring>
#include <thread>

#include "CameraBench.h"

using namespace oxgenapi;
using ox::camera::BufferMemory;
using ox::camera::Frame;
using ox::camera::FrameSink;
using ox::camera::FrameState;
using ox::camera::LinkFacts;
using ox::camera::OpenRequest;
using ox::camera::Part;
using ox::camera::PartKind;
using ox::camera::Reason;
using ox::camera::StreamRequest;
using ox::camera::TransportError;
using testing::ElementsAre;
using testing::HasSubstr;

namespace {

TStreamStatistics statisticsOf(const Camera& camera) {
  TStreamStatistics statistics{};
  statistics.StructSize = sizeof statistics;
  check(OxCameraStreamStatistics(camera.handle(), &statistics));
  return statistics;
}

TImage next(const Camera& camera, uint32_t timeMs = 5000) {
  TImage image{};
  check(OxCameraNextImage(camera.handle(), timeMs, &image));
  return image;
}

void giveBack(const Camera& camera, const TImage& image) { check(OxCameraReturnImage(camera.handle(), &image)); }

// ---- A camera that a test drives ----

// The features that a start uses, in a plain order; every access is noted.
constexpr const char* kDescription = R"(<RegisterDescription ModelName="One" VendorName="Odd" StandardNameSpace="None"
  SchemaMajorVersion="1" SchemaMinorVersion="1" SchemaSubMinorVersion="0" MajorVersion="1" MinorVersion="0"
  SubMinorVersion="0" ToolTip="" ProductGuid="0" VersionGuid="0" xmlns="http://www.genicam.org/GenApi/Version_1_1">
  <Category Name="Root"><pFeature>PayloadSize</pFeature></Category>
  <Integer Name="TLParamsLocked"><pValue>LockReg</pValue></Integer>
  <IntReg Name="LockReg"><Address>0</Address><Length>4</Length><AccessMode>RW</AccessMode><pPort>Device</pPort>
    <Endianess>BigEndian</Endianess></IntReg>
  <IntReg Name="PayloadSize"><Address>4</Address><Length>4</Length><AccessMode>RO</AccessMode><pPort>Device</pPort>
    <Cachable>NoCache</Cachable><Endianess>BigEndian</Endianess></IntReg>
  <Command Name="AcquisitionStart"><pValue>StartReg</pValue><CommandValue>1</CommandValue></Command>
  <IntReg Name="StartReg"><Address>8</Address><Length>4</Length><AccessMode>WO</AccessMode><pPort>Device</pPort>
    <Endianess>BigEndian</Endianess></IntReg>
  <Command Name="AcquisitionStop"><pValue>StopReg</pValue><CommandValue>1</CommandValue></Command>
  <IntReg Name="StopReg"><Address>12</Address><Length>4</Length><AccessMode>WO</AccessMode><pPort>Device</pPort>
    <Endianess>BigEndian</Endianess></IntReg>
  <Port Name="Device"/></RegisterDescription>)";

struct Script {
  std::vector<std::string> calls;
  std::string failing;  // the call that fails
  uint32_t payload = 64;
  FrameSink* sink = nullptr;
  std::vector<BufferMemory> buffers;
  std::vector<size_t> queued;
  uint64_t noBuffer = 0;

  void note(const std::string& call) {
    calls.push_back(call);
    if (call == failing) throw TransportError(Reason::refused, "the test refuses " + call);
  }
  // Sends a frame of one Mono8 row into the oldest queued buffer.
  void send(uint64_t id, FrameState state = FrameState::complete, uint64_t received = 64, uint64_t part = 64) {
    Frame frame;
    frame.buffer = queued.front();
    queued.erase(queued.begin());
    frame.id = id;
    frame.state = state;
    frame.received = received;
    frame.parts = {Part{PartKind::image, 0, part, 0x01080001, 64, 1}};
    sink->arrived(frame);
  }
};

class ScriptedStream final : public ox::camera::Stream {
 public:
  explicit ScriptedStream(Script& script) : script_(script) { script_.note("open"); }
  ~ScriptedStream() override { script_.calls.push_back("close"); }
  void queue(size_t buffer) noexcept override { script_.queued.push_back(buffer); }
  LinkFacts facts() override {
    LinkFacts facts;
    facts.noBuffer = script_.noBuffer;
    facts.packets = 0;
    return facts;
  }

 private:
  Script& script_;
};

class ScriptedDevice final : public ox::camera::Device {
 public:
  explicit ScriptedDevice(Script& script) : script_(script) {}
  void read(void* buffer, uint64_t address, size_t) override {
    if (address == 4) script_.note("payload");
    const uint32_t value = address == 4 ? __builtin_bswap32(script_.payload) : 0;
    std::memcpy(buffer, &value, 4);
  }
  void write(const void* buffer, uint64_t address, size_t) override {
    const bool one = static_cast<const char*>(buffer)[3] == 1;
    script_.note(address == 0 ? one ? "lock" : "unlock" : address == 8 ? "start" : "stop");
  }
  void ping() override {}
  std::vector<ox::camera::DescriptionSource> descriptions() override { return {{"local:one.xml;0;1", kDescription}}; }
  std::unique_ptr<ox::camera::Stream> openStream(const StreamRequest&, std::span<const BufferMemory> buffers,
                                                 FrameSink& sink) override {
    script_.buffers.assign(buffers.begin(), buffers.end());
    script_.queued.clear();
    script_.sink = &sink;
    return std::make_unique<ScriptedStream>(script_);
  }

 private:
  Script& script_;
};

class Streams : public CameraBench {
 protected:
  Camera scripted() {
    odd().search = [](const ox::camera::Search&) {
      ox::camera::CameraFacts facts;
      facts.place = facts.serial = facts.address = "10.0.0.1";
      return ox::camera::Findings{{facts}, {}};
    };
    odd().open = [this](const OpenRequest&) { return std::make_unique<ScriptedDevice>(script); };
    return Camera::open("10.0.0.1");
  }
  static Camera simulated() {
    static int count = 0;  // cameras keep their registers
    const std::string name = "S" + std::to_string(++count);
    simulate(name);
    Camera camera = Camera::open(name);
    camera["AdcBitDepth"].set("Bpp12");
    camera["Width"].set(64);
    camera["Height"].set(32);
    camera["ExposureTime"].set(500);
    camera["AcquisitionFrameRateEnable"].set(false);
    return camera;
  }
  Script script;
};

TEST_F(Streams, StartAndStopAreOneSequenceAndItsReverseAlsoWhenAStepFails) {
  const Camera camera = scripted();
  const std::vector<std::string> steps{"lock", "payload", "open", "start", "stop", "close", "unlock"};
  camera.map();
  const struct {
    const char* failing;
    std::vector<std::string> calls;
  } cases[] = {{"lock", {"lock"}},
               {"payload", {"lock", "payload", "unlock"}},
               {"open", {"lock", "payload", "open", "unlock"}},
               {"start", steps},
               {"", steps}};
  for (const auto& [failing, calls] : cases) {
    script.calls.clear();
    script.failing = failing;
    const uint32_t code = OxCameraStart(camera.handle(), 3);
    EXPECT_EQ(code != 0, *failing != '\0') << failing;
    if (code != 0) {
      EXPECT_THAT(lastError(code).what(), HasSubstr(std::string("the test refuses ") + failing));
    } else {
      EXPECT_EQ(OxCameraStart(camera.handle(), 3), OXCAMERA_E_IN_USE);
      EXPECT_EQ(OxCameraStop(camera.handle()), 0u);
    }
    EXPECT_EQ(script.calls, calls) << failing;
    EXPECT_EQ(OxCameraStop(camera.handle()), 0u);
  }
  script.failing = "stop";  // what can be undone is undone
  script.calls.clear();
  check(OxCameraStart(camera.handle(), 3));
  EXPECT_NE(OxCameraStop(camera.handle()), 0u);
  EXPECT_EQ(script.calls, steps);
}

TEST_F(Streams, EveryFrameEndsInOneCounter) {
  const Camera camera = scripted();
  const struct {
    std::vector<uint64_t> ids;
    uint64_t noBuffer, lost, count;
  } cases[] = {{{1, 2, 3}, 0, 0, 3},  {{0, 1, 2}, 0, 0, 3},
               {{7, 9, 12}, 0, 3, 6}, {{65534, 65535, 1, 2}, 0, 0, 4},
               {{65533, 2}, 0, 3, 5}, {{65535, 65536, 65538}, 0, 1, 4},
               {{1, 5}, 2, 1, 5},     {{0xfffffffffffffffe, 0xffffffffffffffff}, 0, 0, 2},
               {{5, 4}, 0, 0, 2}};
  for (const auto& [ids, noBuffer, lost, count] : cases) {
    check(OxCameraStart(camera.handle(), 8));
    script.noBuffer = noBuffer;
    TImage image{};
    for (const uint64_t id : ids) {
      script.send(id, id == ids.back() ? FrameState::incomplete : FrameState::complete);
      image = next(camera, 0);
      EXPECT_EQ(image.FrameId, id);
      giveBack(camera, image);
    }
    EXPECT_EQ(image.Count, count) << ids.front();
    const TStreamStatistics s = statisticsOf(camera);
    EXPECT_THAT((std::array{s.Complete, s.Incomplete, s.Lost, s.NoBuffer}),
                ElementsAre(ids.size() - 1, 1u, lost, noBuffer))
        << ids.front();
    check(OxCameraStop(camera.handle()));
    EXPECT_EQ(statisticsOf(camera).Lost, lost);  // of the last stream
  }
}

TEST_F(Streams, WhatADriverSaysAboutAFrameIsChecked) {
  const Camera camera = scripted();
  check(OxCameraStart(camera.handle(), 4));
  script.send(1, FrameState::complete, 1'000'000'000'000, 64);  // more than the buffer has
  TImage image = next(camera, 0);
  EXPECT_EQ(image.State, IS_TooSmall);
  EXPECT_EQ(image.Needed, 1'000'000'000'000u);
  EXPECT_EQ(image.Size, 64u);
  giveBack(camera, image);
  script.send(2, FrameState::complete, 60, ~uint64_t{0});  // a part beyond what came
  image = next(camera, 0);
  EXPECT_EQ(image.State, IS_Incomplete);
  EXPECT_EQ(image.Part.Size, 60u);
  EXPECT_EQ(image.Part.Stride, 64u);
  EXPECT_STREQ(image.Part.PixelFormatName, "Mono8");
  TImagePart part{};
  EXPECT_EQ(OxCameraImagePart(camera.handle(), &image, 0, &part), 0u);
  EXPECT_EQ(OxCameraImagePart(camera.handle(), &image, 1, &part), OXGENAPI_E_INVALID_ARGUMENT);
  EXPECT_EQ(OxCameraAttachChunks(camera.handle(), &image), OXGENAPI_E_NOT_SUPPORTED);
  giveBack(camera, image);
  EXPECT_EQ(OxCameraReturnImage(camera.handle(), &image), OXGENAPI_E_INVALID_ARGUMENT);
  Frame frame;
  frame.buffer = 99;  // no such buffer
  script.sink->arrived(frame);
  EXPECT_EQ(OxCameraNextImage(camera.handle(), 0, &image), OXCAMERA_E_TIMEOUT);
}

TEST_F(Streams, BuffersAreTheCallersOwnAndComeBack) {
  const Camera camera = scripted();
  std::array<char, 64> memory[2];
  TFrameMemory buffers[] = {{memory[0].data(), 64, &memory[0]}, {memory[1].data(), 63, &memory[1]}};
  TStreamOptions options{};
  options.StructSize = sizeof options;
  options.Buffers = buffers;
  options.BufferCount = 2;
  const auto start = [&] { check(OxCameraStartEx(camera.handle(), &options)); };
  expectFailure(OXCAMERA_E_BUFFER_TOO_SMALL, "Buffer 1 needs 64 bytes, has 63", start);
  EXPECT_EQ(script.calls.back(), "unlock");
  buffers[1].Size = 64;
  for (const size_t count : {size_t{1}, size_t{4097}}) {
    options.BufferCount = count;
    expectFailure(OXGENAPI_E_INVALID_ARGUMENT, "BufferCount is " + std::to_string(count) + ": a stream takes 2 to 4096",
                  start);
  }
  options.BufferCount = 2;
  start();
  script.send(1);
  script.send(2);
  const TImage first = next(camera, 0), second = next(camera, 0);
  EXPECT_EQ(first.User, &memory[first.Buffer]);
  EXPECT_EQ(first.Data, memory[first.Buffer].data());
  expectFailure(OXCAMERA_E_ALL_HELD, "The caller holds all 2 buffers", [&] { next(camera); });
  giveBack(camera, first);
  EXPECT_THAT(script.queued, ElementsAre(first.Buffer));
  check(OxCameraStop(camera.handle()));
  giveBack(camera, second);  // its stream has ended
  EXPECT_EQ(OxCameraReturnImage(camera.handle(), &second), OXGENAPI_E_INVALID_ARGUMENT);
  expectFailure(OXCAMERA_E_STOPPED, "No stream runs", [&] { next(camera, 0); });

  options.LatestOnly = 1;
  options.Buffers = nullptr;
  options.BufferCount = 3;
  start();
  for (uint64_t id = 1; id <= 5; ++id) script.send(id);
  const TImage newest = next(camera, 0);
  EXPECT_EQ(newest.FrameId, 5u);
  EXPECT_EQ(newest.Skipped, 4u);
  EXPECT_EQ(statisticsOf(camera).Skipped, 4u);
  EXPECT_EQ(statisticsOf(camera).Lost, 0u);
  giveBack(camera, newest);
}

TEST_F(Streams, WaitsEndAsSoonAsTheyCanAndSayWhy) {
  const Camera camera = scripted();
  const struct {
    uint32_t code;
    std::function<void()> end;
  } cases[] = {{OXCAMERA_E_CANCELLED, [&] { check(OxCameraCancelWait(camera.handle())); }},
               {OXCAMERA_E_STOPPED, [&] { check(OxCameraStop(camera.handle())); }},
               {OXCAMERA_E_CLOSED, [&] { camera.close(); }}};
  for (const auto& [code, end] : cases) {
    if (code != OXCAMERA_E_STOPPED) check(OxCameraStart(camera.handle(), 3));
    Clock::time_point ended;
    std::thread waiter([&, expected = code] {
      TImage image{};
      EXPECT_EQ(OxCameraNextImage(camera.handle(), 20'000, &image), expected);
      ended = Clock::now();
    });
    std::this_thread::sleep_for(30ms);
    const auto begin = Clock::now();
    end();
    waiter.join();
    EXPECT_LT(ended - begin, 100ms) << std::hex << code;
  }
  const Camera other = scripted();
  check(OxCameraStart(other.handle(), 3));
  EXPECT_GE(timeOf([&] {
              expectFailure(OXCAMERA_E_TIMEOUT, "within 60 ms; no packet has come since the start",
                            [&] { next(other, 60); });
            }),
            60ms);
}

TEST_F(Streams, TheSimulatedCameraSendsWhatItsFeaturesSay) {
  const Camera camera = simulated();
  camera["PixelFormat"].set("Mono12Packed");
  camera["TestPattern"].set("FrameCounter");
  check(OxCameraStart(camera.handle(), 4));
  EXPECT_FALSE(camera["Width"].writable());
  TImage image = next(camera);
  EXPECT_EQ(image.State, IS_Complete);
  EXPECT_STREQ(image.Part.PixelFormatName, "Mono12Packed");
  EXPECT_THAT((std::array<uint64_t, 5>{image.Part.Width, image.Part.Height, image.Part.Stride,
                                       image.Part.SignificantBits, image.Part.Size}),
              ElementsAre(64, 32, 96, 12, 96 * 32));
  EXPECT_EQ(*static_cast<const uint8_t*>(image.Part.Data), static_cast<uint8_t>(image.FrameId));
  EXPECT_EQ(image.TimeKnown, 1u);
  EXPECT_LE(image.FirstDataNs, image.CompleteNs);
  giveBack(camera, image);
  setFault(camera, OX_FAULT_CUT_FRAMES, 1);
  while (image.State == IS_Complete) {
    image = next(camera);
    giveBack(camera, image);
  }
  EXPECT_EQ(image.Size, 96u * 16);
  setFault(camera, OX_FAULT_LOSE_FRAMES, 2);
  EXPECT_TRUE(becomes(5s, [&] {
    giveBack(camera, next(camera));
    return statisticsOf(camera).Lost == 2;
  }));
  check(OxCameraStop(camera.handle()));
  EXPECT_TRUE(camera["Width"].writable());

  camera["TriggerSelector"].set("FrameStart");
  camera["TriggerMode"].set("On");
  check(OxCameraStart(camera.handle(), 4));
  expectFailure(OXCAMERA_E_TIMEOUT, "Trigger mode is on for FrameStart, the source is Software",
                [&] { next(camera, 50); });
  camera["TriggerSoftware"].execute();
  giveBack(camera, next(camera));
}

TEST_F(Streams, ChunksBelongToTheirImageUntilItIsGivenBack) {
  const Camera camera = simulated();
  const std::string selector = camera["ChunkSelector"].text();
  expectFailure(OXGENAPI_E_INVALID_ARGUMENT, "The camera has no chunk Smell, Taste", [&] {
    camera.enableChunks({"Smell", "FrameCounter", "Taste"});
  });
  EXPECT_FALSE(camera["ChunkModeActive"].boolean());
  camera.enableChunks({"FrameCounter", "Image", "ExposureTime"});
  EXPECT_EQ(camera["ChunkSelector"].text(), selector);
  camera.start();
  expectFailure(OXCAMERA_E_IN_USE, "one runs", [&] { camera.enableChunks({"Gain"}); });
  const TImage first = next(camera), second = next(camera);
  const Node counter = camera["ChunkFrameCounter"];
  EXPECT_FALSE(counter.readable());
  for (const TImage* image : {&first, &second, &first}) {
    EXPECT_EQ(image->HasChunks, 1u);
    check(OxCameraAttachChunks(camera.handle(), image));
    EXPECT_EQ(counter.integer(), static_cast<int64_t>(image->FrameId));
  }
  giveBack(camera, second);
  EXPECT_TRUE(counter.readable());
  giveBack(camera, first);
  EXPECT_FALSE(counter.readable());
  TImage broken = next(camera);
  const uint8_t length[4] = {0xff, 0xff, 0xff, 0xff};
  std::memcpy(static_cast<uint8_t*>(const_cast<void*>(broken.Data)) + broken.Size - 4, length, 4);
  expectFailure(OXGENAPI_E_RUNTIME, "claims 4294967295 bytes",
                [&] { check(OxCameraAttachChunks(camera.handle(), &broken)); });
  EXPECT_EQ(broken.Part.Width, 64u);
  giveBack(camera, broken);
}

TEST_F(Streams, GrabbingInALoopKeepsTheStreamAndNeverGivesAnImageTwice) {
  const Camera camera = simulated();
  uint64_t last = 0;
  for (int i = 0; i < 20; ++i) {
    const int64_t before = std::chrono::system_clock::now().time_since_epoch() / 1ns;
    TImage image{};
    check(OxCameraGrabImage(camera.handle(), OX_WAIT_DEFAULT, &image));
    EXPECT_GT(image.Count, last);
    EXPECT_GE(image.CompleteNs, before);
    last = image.Count;
    giveBack(camera, image);
    if (i % 5 == 0) std::this_thread::sleep_for(10ms);
  }
  EXPECT_EQ(statisticsOf(camera).Running, 1u);
}

TEST_F(Streams, AThousandCyclesOfStopChangeStartGrab) {
  const Camera camera = simulated();
  const Node width = camera["Width"], format = camera["PixelFormat"];
  for (int i = 0; i < 1000; ++i) {
    const int64_t columns = 32 + i % 2 * 32;
    width.set(columns);
    format.set(i % 3 == 0 ? "Mono16" : "Mono8");
    check(OxCameraStart(camera.handle(), 2));
    const TImage image = next(camera);
    ASSERT_EQ(image.State, IS_Complete);
    ASSERT_EQ(image.Part.Size, static_cast<uint64_t>(columns) * 32 * (i % 3 == 0 ? 2 : 1));
    if (i % 2 == 0) giveBack(camera, image);
    check(OxCameraStop(camera.handle()));
    if (i % 2 != 0) giveBack(camera, image);
  }
}

TEST_F(Streams, ALostCameraEndsTheStreamAndMayStreamAgain) {
  const Camera camera = simulated();
  check(OxCameraStart(camera.handle(), 3));
  const TImage held = next(camera);
  setFault(camera, OX_FAULT_UNPLUG_MS, 200);
  EXPECT_TRUE(becomes(10s, [&] {
    TImage image{};
    const uint32_t code = OxCameraNextImage(camera.handle(), 10'000, &image);
    if (code == 0) giveBack(camera, image);
    EXPECT_TRUE(code == 0 || code == OXCAMERA_E_LOST) << std::hex << code;
    return code == OXCAMERA_E_LOST;
  }));
  const auto* const pixels = static_cast<const uint8_t*>(held.Data);
  for (size_t x = 1; x < 64; ++x) ASSERT_EQ(pixels[x], static_cast<uint8_t>(pixels[0] + x));  // still there
  EXPECT_EQ(OxCameraStop(camera.handle()), 0u);
  camera.reopen(5s);
  check(OxCameraStart(camera.handle(), 3));
  giveBack(camera, next(camera));
  giveBack(camera, held);
  EXPECT_LT(timeOf([&] { camera.close(); }), 2s);
}

}  // namespace
