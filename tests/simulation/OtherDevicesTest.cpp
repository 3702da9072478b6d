// The devices beside the camera: plain memory, and the port that makes things go wrong.
#include <gtest/gtest.h>

#include <unistd.h>
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <limits>

#include "OxSimulation/FaultPort.h"
#include "OxSimulation/MemoryDevice.h"

using namespace ox::simulation;
namespace fs = std::filesystem;

TEST(MemoryDevice, HoldsBytesAnywhere) {
  MemoryDevice memory;
  const int64_t most = std::numeric_limits<int64_t>::max();
  // Pages must not fall together: -3 and 4093 are 4096 apart.
  const std::vector<int64_t> places = {16, 4090, -3, most - 8, std::numeric_limits<int64_t>::min()};
  const auto bytesFor = [](std::size_t i) { return std::vector<uint8_t>(8, static_cast<uint8_t>(i + 1)); };
  for (std::size_t i = 0; i < places.size(); ++i) ASSERT_EQ(memory.write(bytesFor(i).data(), places[i], 8), 0);
  for (std::size_t i = 0; i < places.size(); ++i) {
    std::vector<uint8_t> seen(8);
    ASSERT_EQ(memory.read(seen.data(), places[i], 8), 0);
    EXPECT_EQ(seen, bytesFor(i)) << places[i];
  }
  uint8_t byte = 9;
  EXPECT_EQ(memory.read(&byte, 1'000'000, 1), 0);
  EXPECT_EQ(byte, 0);
  EXPECT_EQ(memory.read(&byte, most, 2), kInvalidArgument);
}

TEST(MemoryDevice, KeepsItsImageInAFile) {
  const std::string path = testing::TempDir() + "memory_image_" + std::to_string(::getpid());
  {
    MemoryDevice memory(path);
    const uint8_t bytes[] = {1, 2, 3};
    memory.write(bytes, 0xABCDE, 3);
    memory.write(bytes, -1, 1);
    memory.save();
  }
  MemoryDevice memory(path);
  uint8_t bytes[3];
  memory.read(bytes, 0xABCDE, 3);
  EXPECT_EQ(bytes[2], 3);
  memory.read(bytes, -1, 1);
  EXPECT_EQ(bytes[0], 1);
  std::ofstream(path) << "something else";
  EXPECT_THROW(MemoryDevice{path}, std::runtime_error);
  EXPECT_THROW(memory.save("/no/such/folder/image"), std::runtime_error);
  EXPECT_THROW(MemoryDevice().save(), std::logic_error);
  fs::remove(path);
}

TEST(FaultPort, FailsTheAccessesItIsToldTo) {
  MemoryDevice memory;
  FaultPort port(memory);
  uint8_t byte = 1;
  const auto results = [&](int count) {
    std::vector<int> codes;
    for (int i = 0; i < count; ++i) codes.push_back(port.read(&byte, 0x10, 1));
    return codes;
  };
  port.failNth(2, kAccessRefused, "as ordered");
  EXPECT_EQ(results(3), (std::vector<int>{0, kAccessRefused, 0}));
  EXPECT_EQ(RegisterDevice::lastFailureText(), "as ordered");
  port.failEvery(2, kNotSupported);
  EXPECT_EQ(results(4), (std::vector<int>{0, kNotSupported, 0, kNotSupported}));
  EXPECT_EQ(RegisterDevice::lastFailureText(), "");
  port.heal();
  port.failWhen([](const FaultPort::Access& a) { return a.kind == FaultPort::Kind::kWrite && a.address == 0x20; },
                kRuntimeFailure);
  EXPECT_EQ(port.write(&byte, 0x20, 1), kRuntimeFailure);
  EXPECT_EQ(port.write(&byte, 0x21, 1), 0);
  EXPECT_EQ(port.read(&byte, 0x20, 1), 0);
  EXPECT_EQ(byte, 0) << "the refused write did not reach the device";
  EXPECT_THROW(port.failEvery(0, kNotSupported), std::invalid_argument);
}
