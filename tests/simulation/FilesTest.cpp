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

TEST(DeviceFiles, AreWrittenAndReadInBlocks) {
  FileBench bench;
  std::vector<uint8_t> content(10'001);
  for (std::size_t i = 0; i < content.size(); ++i) content[i] = static_cast<uint8_t>(i * 7);
  bench.upload(kUserFile1, content);
  EXPECT_EQ(bench->fileContent("UserFile1"), content);
  EXPECT_EQ(bench.get("FileSizeReg"), content.size());

  ASSERT_EQ(bench.open(kUserFile1, kForRead), kDone);
  EXPECT_EQ(bench.move(FileOperation::kRead, 8192, 4096), kDone);
  EXPECT_EQ(bench.get("FileOperationResultReg"), content.size() - 8192) << "the last block is short";
  std::vector<uint8_t> block(content.size() - 8192);
  EXPECT_EQ(bench->read(block.data(), 0x40000, static_cast<int64_t>(block.size())), 0);
  EXPECT_TRUE(std::equal(block.begin(), block.end(), content.begin() + 8192));
  EXPECT_EQ(bench.move(FileOperation::kRead, content.size(), 4096), kDone);
  EXPECT_EQ(bench.get("FileOperationResultReg"), 0u) << "at the end";
  EXPECT_EQ(bench.operate(FileOperation::kClose), kDone);

  // Written within and beyond the end.
  bench->setFileContent("UserFile2", {1, 2, 3, 4});
  ASSERT_EQ(bench.open(kUserFile2, kForBoth), kDone);
  bench.buffer({9, 8, 7});
  EXPECT_EQ(bench.move(FileOperation::kWrite, 2, 3), kDone);
  EXPECT_EQ(bench->fileContent("UserFile2"), (std::vector<uint8_t>{1, 2, 9, 8, 7}));
}

TEST(DeviceFiles, RefuseWhatTheyAreNotFor) {
  const struct {
    const char* what;
    uint64_t file, mode, opened;
    FileOperation operation;
    uint64_t offset, length, status;
  } cases[] = {
      {"write a read-only file", kFactoryCalibration, kForWrite, kUnavailable, FileOperation::kWrite, 0, 4, kFailed},
      {"both ways into a read-only file", kFactoryCalibration, kForBoth, kUnavailable, FileOperation::kRead, 0, 4,
       kFailed},
      {"read a write-only file", kDebugScript, kForRead, kUnavailable, FileOperation::kRead, 0, 4, kFailed},
      {"write while open for reading", kUserFile1, kForRead, kDone, FileOperation::kWrite, 0, 4, kFailed},
      {"delete while open", kUserFile1, kForWrite, kDone, FileOperation::kDelete, 0, 0, kFailed},
      {"open twice", kUserFile1, kForWrite, kDone, FileOperation::kOpen, 0, 0, kFailed},
      {"behind the end", kUserFile1, kForWrite, kDone, FileOperation::kWrite, 1, 4, kInvalidParameter},
      {"more than the buffer", kUserFile1, kForWrite, kDone, FileOperation::kWrite, 0, 4097, kInvalidParameter},
      {"unknown mode", kUserFile1, 3, kInvalidParameter, FileOperation::kClose, 0, 0, kFailed}};
  for (const auto& c : cases) {
    FileBench bench;
    EXPECT_EQ(bench.open(c.file, c.mode), c.opened) << c.what;
    EXPECT_EQ(bench.move(c.operation, c.offset, c.length), c.status) << c.what;
  }
  FileBench bench;
  EXPECT_EQ(bench.trySet("FileSelectorReg", kNoFile), kInvalidArgument);
  EXPECT_EQ(bench->fileContent("FactoryCalibration").size(), 10'000u);
}

TEST(DeviceFiles, FailAndDawdleOnDemand) {
  FileBench bench;
  bench->judgeFileOperations([](const FileRequest& request) -> FileVerdict {
    if (request.operation == FileOperation::kWrite && request.offset >= 8) return {.status = FileStatus::kFailure};
    if (request.operation == FileOperation::kWrite) return {.maxBytes = 3};
    if (request.operation == FileOperation::kClose) return {.durationNs = 50'000'000};
    if (request.file == "UserFile2") return {.refusal = kRuntimeFailure};
    return {};
  });
  ASSERT_EQ(bench.open(kUserFile1, kForWrite), kDone);
  bench.buffer({1, 2, 3, 4});
  EXPECT_EQ(bench.move(FileOperation::kWrite, 0, 4), kDone);
  EXPECT_EQ(bench.get("FileOperationResultReg"), 3u);
  EXPECT_EQ(bench.move(FileOperation::kWrite, 8, 4), kFailed);
  bench.operate(FileOperation::kClose);
  EXPECT_EQ(bench.get("FileOperationExecuteReg"), 1u) << "still working";
  bench.wait(50);
  EXPECT_EQ(bench.get("FileOperationExecuteReg"), 0u);
  EXPECT_EQ(bench.get("FileOperationStatusReg"), kDone);

  bench.set("FileSelectorReg", kUserFile2);
  bench.set("FileOperationSelectorReg", 0);
  EXPECT_EQ(bench.trySet("FileOperationExecuteReg", 1), kRuntimeFailure);
  EXPECT_NE(RegisterDevice::lastFailureText().find("UserFile2"), std::string::npos);
  EXPECT_EQ(bench.get("FileOperationExecuteReg"), 0u);
}

TEST(DeviceFiles, MoveThroughABufferOfAnyLength) {
  FileBench bench({.fileBufferBytes = 65536});
  EXPECT_EQ(bench.get("FileAccessBufferLengthReg"), 65536u);
  bench->setFileContent("UserFile1", std::vector<uint8_t>(100'000, 7));
  ASSERT_EQ(bench.open(kUserFile1, kForRead), kDone);
  EXPECT_EQ(bench.move(FileOperation::kRead, 0, 65536), kDone);
  EXPECT_EQ(bench.get("FileOperationResultReg"), 65536u);
  EXPECT_THROW(SimulatedCamera({.clock = {}, .fileBufferBytes = 10}), std::invalid_argument);
}

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
