// Device files through their registers, and firmware on its way from file to reset.
#include <cstring>

#include <gmock/gmock.h>

#include "CameraBench.h"
#include "OxSimulation/FirmwareImage.h"

using namespace ox::simulation;

namespace {

enum File : uint64_t { kUserFile1, kUserFile2, kFactoryCalibration, kDebugScript, kFirmwareImage, kNoFile };
enum OpenMode : uint64_t { kForRead, kForWrite, kForBoth };
enum Status : uint64_t { kDone, kFailed, kUnavailable, kInvalidParameter };

class FileBench : public CameraBench {
 public:
  explicit FileBench(CameraOptions options = {}) : CameraBench(options) {}

  uint64_t operate(FileOperation operation) {
    set("FileOperationSelectorReg", static_cast<uint64_t>(operation));
    set("FileOperationExecuteReg", 1);
    return get("FileOperationStatusReg");
  }
  uint64_t open(uint64_t file, uint64_t mode) {
    set("FileSelectorReg", file);
    set("FileOpenModeReg", mode);
    return operate(FileOperation::kOpen);
  }
  uint64_t move(FileOperation operation, uint64_t offset, uint64_t length) {
    set("FileAccessOffsetReg", offset);
    set("FileAccessLengthReg", length);
    return operate(operation);
  }
  void buffer(const std::vector<uint8_t>& bytes) {
    EXPECT_EQ(camera().write(bytes.data(), 0x40000, static_cast<int64_t>(bytes.size())), 0);
  }

  void upload(uint64_t file, const std::vector<uint8_t>& content) {
    ASSERT_EQ(open(file, kForWrite), kDone);
    for (std::size_t at = 0; at < content.size(); at += 4096) {
      const std::size_t length = std::min<std::size_t>(4096, content.size() - at);
      buffer({content.begin() + static_cast<int64_t>(at), content.begin() + static_cast<int64_t>(at + length)});
      ASSERT_EQ(move(FileOperation::kWrite, at, length), kDone);
    }
    ASSERT_EQ(operate(FileOperation::kClose), kDone);
  }
};

}  // namespace

TEST(Firmware, StartsAfterUploadActivationAndReset) {
  FileBench bench;
  EXPECT_EQ(bench.getText("DeviceFirmwareVersion"), "FW 1.4.2");
  EXPECT_EQ(bench->currentDescription(), SimulatedCamera::description());
  bench.upload(kFirmwareImage, FirmwareImage{"2.1.0", std::vector<uint8_t>(9000, 1)}.encode());

  bench.set("FirmwareActivateReg", 1);
  EXPECT_EQ(bench.get("FirmwareActivateReg"), 1u);
  bench.wait(300);
  EXPECT_EQ(bench.get("FirmwareActivateReg"), 0u);
  EXPECT_EQ(bench.get("FirmwareStatusReg"), 1u);
  EXPECT_EQ(bench.getText("FirmwarePendingVersion"), "2.1.0");
  EXPECT_EQ(bench.getText("DeviceFirmwareVersion"), "FW 1.4.2") << "not before the reset";

  bench.set("DeviceResetReg", 1);
  EXPECT_EQ(bench.getText("DeviceFirmwareVersion"), "FW 2.1.0");
  const DescriptionDocument before(SimulatedCamera::description()), changed(bench->currentDescription());
  EXPECT_EQ(changed.root().attribute("MajorVersion").as_int(), 2);
  EXPECT_EQ(std::distance(changed.root().begin(), changed.root().end()),
            std::distance(before.root().begin(), before.root().end()) + 2)
      << "one feature and its register";
  bench->reset();
  EXPECT_EQ(bench.getText("DeviceFirmwareVersion"), "FW 2.1.0") << "it stays";
}

TEST(Firmware, RefusesADamagedImage) {
  const std::vector<uint8_t> good = FirmwareImage{"2.0.0", {1, 2, 3}}.encode();
  const auto damaged = [&](std::size_t at, uint8_t value) {
    std::vector<uint8_t> bytes = good;
    bytes[at] = value;
    return bytes;
  };
  const std::pair<std::vector<uint8_t>, const char*> cases[] = {
      {{}, "0 bytes are less than its header"},
      {damaged(0, 'X'), "does not begin with OXFW"},
      {damaged(7, 9), "layout 9 is unknown"},
      {damaged(10, '9'), "checksum does not match"},
      {damaged(50, 9), "checksum does not match"},
      {damaged(43, 200), "header tells of 200 bytes of payload, there are 3"}};
  for (const auto& each : cases) {
    EXPECT_THAT([&] { FirmwareImage::decode(each.first); },
                testing::ThrowsMessage<std::runtime_error>(testing::HasSubstr(each.second)));
  }
  EXPECT_EQ(FirmwareImage::decode(good).version, "2.0.0");
  EXPECT_THROW(FirmwareImage({"", {}}).encode(), std::invalid_argument);

  // A damaged image also takes back what an earlier good one had announced.
  FileBench bench;
  for (const auto& image : {good, damaged(50, 9)}) {
    bench->setFileContent("FirmwareImage", image);
    bench.set("FirmwareActivateReg", 1);
    bench.wait(300);
  }
  EXPECT_EQ(bench.get("FirmwareStatusReg"), 2u);
  bench.set("DeviceResetReg", 1);
  EXPECT_EQ(bench.getText("DeviceFirmwareVersion"), "FW 1.4.2");
}
