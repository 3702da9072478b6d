// Events and chunks of real descriptions, driven through the exports alone.
#include <array>
#include <cstdlib>
#include <filesystem>
#include <span>

#include "Device.h"

namespace {

// A node map over a device whose every byte is 0xff: optional features are there.
class RealCamera : public Device {
 public:
  explicit RealCamera(const std::filesystem::path& file) {
    EXPECT_OK(NMLoadXMLFile(map, file.c_str()));
    const auto read = [](void* to, int64_t, int64_t length, void*) {
      std::memset(to, 0xff, static_cast<size_t>(length));
      return 0;
    };
    const auto write = [](const void*, int64_t, int64_t, void*) { return 0; };
    EXPECT_OK(NMConnectPort(map, read, write, nullptr, nullptr));
  }
  uint64_t integer(const char* name) {
    int64_t value = 0;
    EXPECT_OK(NGetAsInteger(node(name), &value)) << name;
    return static_cast<uint64_t>(value);
  }
  double real(const char* name) {
    double value = 0;
    EXPECT_OK(NGetAsFloat(node(name), &value)) << name;
    return value;
  }
  std::string text(const char* name) {
    return textOf([&](char* buffer, size_t& size) { return NGetAsString(node(name), buffer, size); });
  }
};

std::filesystem::path realDescription(const char* file) {
  const char* folder = std::getenv("OXGENAPI_DESCRIPTIONS");
  return folder == nullptr ? std::filesystem::path() : std::filesystem::path(folder) / file;
}

#define SKIP_WITHOUT(path) \
  if (!std::filesystem::exists(path)) GTEST_SKIP() << "OXGENAPI_DESCRIPTIONS names no folder with this description"

// A buffer of chunks, filled with bytes that look like nothing; chunks begin at odd addresses.
class ChunkBuffer {
 public:
  void add(uint64_t id, size_t length) {
    bytes_.push_back(0);  // a gap
    if (bytes_.size() % 2 == 0) bytes_.push_back(0);
    places_.push_back({id, nullptr, static_cast<int64_t>(bytes_.size()), static_cast<int64_t>(length)});
    for (size_t i = 0; i < length; ++i) bytes_.push_back(static_cast<uint8_t>(random_ = random_ * 167 + 41));
  }
  uint8_t* chunk(uint64_t id) {
    for (const TChunkData& each : places_)
      if (each.ChunkID == id) return bytes_.data() + each.ChunkOffset;
    ADD_FAILURE() << "no chunk " << id;
    return bytes_.data();
  }
  // A little-endian number in a chunk.
  uint64_t number(uint64_t id, int bytes) {
    uint64_t value = 0;
    for (int i = bytes; i-- > 0;) value = value << 8 | chunk(id)[i];
    return value;
  }
  void attachTo(NODEMAP map) {
    for (TChunkData& each : places_) each.pBase = bytes_.data();
    EXPECT_OK(NMAttachChunkList(map, places_.data(), places_.size()));
  }
  uint8_t* base() { return bytes_.data(); }
  ChunkBuffer copyElsewhere() const { return *this; }

 private:
  std::vector<uint8_t> bytes_;
  std::vector<TChunkData> places_;
  unsigned random_ = 7;
};

struct Field {
  const char* feature;
  uint64_t chunk;
  int bytes;
};

void expectFields(RealCamera& camera, ChunkBuffer& buffer, std::span<const Field> fields) {
  for (const Field& f : fields) EXPECT_EQ(camera.integer(f.feature), buffer.number(f.chunk, f.bytes)) << f.feature;
}

TEST(RealChunks, ReadBackBitForBit) {
  const auto path = realDescription("FLIR_ORX_10G_245S8M.xml");
  SKIP_WITHOUT(path);
  constexpr uint64_t kSerial = 0x0504000D, kFormat = 0x0504000A, kExposure = 0x05040008, kGain = 0x05200009,
                     kBlackLevel = 0x0504000B;
  const Field kFields[] = {{"ChunkImage", 1, 4},
                           {"ChunkCRC", 0x07040002, 4},
                           {"ChunkFrameID", 0x05040003, 8},
                           {"ChunkOffsetX", 0x05040004, 4},
                           {"ChunkOffsetY", 0x05040005, 4},
                           {"ChunkWidth", 0x05040006, 4},
                           {"ChunkHeight", 0x05040007, 4},
                           {"ChunkTimestamp", 0x0508000E, 8},
                           {"ChunkSerialDataLength", kSerial, 4}};
  ChunkBuffer buffer;
  buffer.add(1, 4000);
  for (const uint64_t id : {0x07040002, 0x05040003, 0x05040004, 0x05040005, 0x05040006, 0x05040007, 0x0508000E})
    buffer.add(id, 8);
  for (const uint64_t id : {kFormat, kExposure, kGain, kBlackLevel}) buffer.add(id, 16);
  buffer.add(kSerial, 0x88);
  std::memcpy(buffer.chunk(kSerial), "\x09\0\0\0hello\xc3\xa4!!and more", 20);
  std::memcpy(buffer.chunk(kFormat), "\x01\x00\x08\x01", 4);
  std::memcpy(buffer.chunk(kGain), "\x00\x80\xfe\xff", 4);  // -1.5 with 16 bits behind the point

  RealCamera camera(path);
  buffer.attachTo(camera.map);
  expectFields(camera, buffer, kFields);
  EXPECT_EQ(camera.text("ChunkSerialData"), "hello\xc3\xa4!!");
  EXPECT_EQ(camera.text("ChunkPixelFormat"), "Mono8");
  EXPECT_EQ(camera.real("ChunkExposureTime"), static_cast<double>(buffer.number(kExposure, 4)));
  EXPECT_OK(NSetAsString(camera.node("ChunkGainSelector"), "All"));
  EXPECT_EQ(camera.real("ChunkGain"), -1.5);
  const auto level = static_cast<int32_t>(buffer.number(kBlackLevel, 4));
  EXPECT_EQ(camera.real("ChunkBlackLevel"), level / 16777216.0 * 100);

  // The next image has the same layout and other bytes.
  ChunkBuffer next = buffer.copyElsewhere();
  std::memset(next.chunk(0x05040003), 0x5a, 8);
  EXPECT_OK(NMUpdateChunks(camera.map, next.base()));
  expectFields(camera, next, kFields);
  EXPECT_OK(NMDetachAllChunks(camera.map));
}

TEST(RealEvents, EveryMessageReachesItsFeaturesBitForBit) {
  const auto path = realDescription("Basler-acA640-300gm.xml");
  SKIP_WITHOUT(path);
  const struct {
    uint64_t id;
    const char* text;  // as an application might write it
    const char* name;
    int timestampBytes;
    bool hasFrame;
  } kEvents[] = {{0x0004, "4", "ExposureEnd", 8, true},
                 {0x9000, "9000", "LineStartOvertrigger", 4, false},
                 {0x9001, "09001", "FrameStartOvertrigger", 8, false},
                 {0x9004, "9004", "FrameStart", 8, false},
                 {0x9003, "00009003", "FrameTimeout", 4, false},
                 {0xffff, "fFfF", "EventOverrun", 8, true},
                 {0x0009, "09", "ActionLate", 8, false},
                 {0xa000, "A000", "Line1RisingEdge", 8, false},
                 {0xa109, "a109", "VirtualLine4RisingEdge", 8, false}};
  RealCamera camera(path);
  unsigned random = 3;
  for (const bool numeric : {true, false}) {
    for (const auto& event : kEvents) {
      std::array<uint8_t, 17> block{};  // the message begins at an odd place
      uint8_t* const payload = block.data() + 1;
      for (uint8_t& byte : block) byte = static_cast<uint8_t>(random = random * 167 + 41);
      const auto number = [&](int at, int bytes) {
        uint64_t value = 0;
        for (int i = 0; i < bytes; ++i) value = value << 8 | payload[at + i];
        return value;
      };
      if (numeric) {
        const TEventData data{event.id, payload, 16};
        ASSERT_OK(NMDeliverEvent(camera.map, &data));
      } else {
        const TEventDataEx data{event.text, payload, 16};
        ASSERT_OK(NMDeliverEventEx(camera.map, &data));
      }
      const std::string name = std::string(event.name) + "Event";
      EXPECT_EQ(camera.integer((name + "Timestamp").c_str()), number(8, event.timestampBytes)) << name;
      EXPECT_EQ(camera.integer((name + "StreamChannelIndex").c_str()), number(4, 2)) << name;
      if (!event.hasFrame) continue;
      EXPECT_EQ(camera.integer((name + "FrameID").c_str()), number(6, 2)) << name;
    }
  }
}

}  // namespace
