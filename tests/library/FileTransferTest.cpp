// Whole files between the host and a device: the checks in their order, and no failure that passes as success.
#include <gmock/gmock.h>

#include <cerrno>
#include <cstring>

#include "FileDevice.h"
#include "Records.h"
#include "SettingsBench.h"

namespace {

std::string pattern(size_t size) {
  std::string text(size, '\0');
  for (size_t i = 0; i < size; ++i) text[i] = static_cast<char>(i * 7 + i / 251);
  return text;
}

std::wstring widened(const std::string& text) { return {text.begin(), text.end()}; }

}  // namespace

TEST(FileTransfer, MovesFilesOfAnySizeBothWays) {
  for (const size_t size : {size_t{0}, size_t{1}, size_t{63}, size_t{64}, size_t{65}, size_t{1000}, size_t{70000}}) {
    FileDevice device;
    device.file("Firmware") = "what was there before, longer than some of what replaces it";
    const std::string content = pattern(size);
    const TemporaryFile source(content);
    ASSERT_EQ(NMUploadFile(device.map, "Firmware", source.path.c_str()), 0u) << lastErrorText();
    EXPECT_EQ(device.file("Firmware"), content);

    const TemporaryFile target("longer than nothing");
    ASSERT_EQ(NMDownloadFileW(device.map, L"Firmware", widened(target.path).c_str()), 0u) << lastErrorText();
    EXPECT_EQ(fileText(target.path), content);

    size_t told = 0;
    ASSERT_EQ(NMDownloadFileMemory(device.map, "Firmware", nullptr, &told), 0u) << lastErrorText();
    EXPECT_EQ(told, size);
    std::string memory(size + 10, '#');
    size_t room = memory.size();
    ASSERT_EQ(NMDownloadFileMemoryW(device.map, L"Firmware", memory.data(), &room), 0u) << lastErrorText();
    EXPECT_EQ(room, size);
    EXPECT_EQ(memory, content + std::string(10, '#'));

    // A buffer too small cuts the file.
    for (const size_t capacity : {size / 2, size}) {
      if (capacity == 0) continue;
      room = capacity;
      ASSERT_EQ(NMDownloadFileMemory(device.map, "Firmware", memory.data(), &room), 0u);
      EXPECT_EQ(room, capacity);
      EXPECT_EQ(memory.substr(0, capacity), content.substr(0, capacity));
    }
    if (size == 0) continue;
    ASSERT_EQ(NMUploadFileMemory(device.map, "UserSet", content.data(), size), 0u) << lastErrorText();
    EXPECT_EQ(device.file("UserSet"), content);
    ASSERT_EQ(NMUploadFileMemoryW(device.map, L"UserSet", content.data(), 1), 0u);
    EXPECT_EQ(device.file("UserSet"), content.substr(0, 1));
  }
}

TEST(FileTransfer, ChecksInTheirOrder) {
  FileDevice device;
  NODEMAP empty{};
  ASSERT_EQ(CreateNodeMap(empty), 0u);
  char byte = 0;
  size_t zero = 0, one = 1;
  const auto refused = [](uint32_t code, const std::string& text, std::initializer_list<Outcome> outcomes) {
    for (const Outcome& each : outcomes) {
      EXPECT_EQ(each.code, code) << each.text;
      EXPECT_TRUE(each.text.starts_with(text)) << each.text;
    }
  };
  const std::string folder = testing::TempDir();
  const NODEMAP none{};
  const auto up = [&](NODEMAP map, const char* path) { return outcome(NMUploadFile(map, "UserSet", path)); };
  const auto down = [&](NODEMAP map, const char* path) { return outcome(NMDownloadFile(map, "UserSet", path)); };
  const auto upMemory = [&](NODEMAP map, const char* from, size_t size) {
    return outcome(NMUploadFileMemory(map, "UserSet", from, size));
  };
  const auto downMemory = [&](NODEMAP map, char* to, size_t* size) {
    return outcome(NMDownloadFileMemory(map, "UserSet", to, size));
  };
  // The buffer comes before the handle, the handle before the state, the state before the host's file.
  refused(0x80000002, "Buffer must not be empty",
          {upMemory(none, &byte, 0), upMemory(none, nullptr, 1), downMemory(none, &byte, &zero),
           downMemory(none, &byte, nullptr)});
  refused(0x8000001D, "Invalid NODEMAP handle",
          {upMemory(none, &byte, 1), downMemory(none, nullptr, &one), up(none, "/nowhere"), down(none, "/nowhere/x")});
  refused(
      0x8000001E, "Invalid nodemap state",
      {up(empty, "/nowhere"), down(empty, "/nowhere/x"), upMemory(empty, &byte, 1), downMemory(empty, nullptr, &one)});
  refused(0x80000003, "Filename not ",
          {up(device.map, "/nowhere"), up(device.map, nullptr), up(device.map, folder.c_str()),
           down(device.map, folder.c_str()), down(device.map, "/nowhere/x")});
  EXPECT_EQ(lastErrorText(), "Filename not writable");
  EXPECT_EQ(device.accesses, 0) << "a host path is checked before the device is touched";
  release(empty);

  // More than streams can count, from a size that was computed wrongly.
  for (const size_t tooMany : {~size_t{0}, size_t{1} << 63}) {
    refused(0x8000000F, "INTEGRAL_CAST failed", {upMemory(device.map, &byte, tooMany)});
    EXPECT_EQ(device.accesses, 0);
  }
  // No such file in the device, in each direction.
  EXPECT_EQ(NMUploadFileMemory(device.map, "Nothing", &byte, 1), 0x8000000Fu);
  EXPECT_NE(lastErrorText().find("Nothing"), std::string::npos) << lastErrorText();
  EXPECT_EQ(NMDownloadFileMemory(device.map, nullptr, &byte, &one), 0x8000000Eu);
}

TEST(FileTransfer, TheSizeQueryNamesWhatIsMissing) {
  const std::string size = "<Integer Name='FileSize'><Value>77</Value></Integer>";
  const std::string selector =
      "<Enumeration Name='FileSelector'><EnumEntry Name='UserSet'><Value>0</Value></EnumEntry>"
      "<Value>0</Value></Enumeration>";
  const struct {
    std::string nodes;
    uint32_t code;
    const char* text;  // empty: the last error is left alone
  } kCases[] = {
      {size, 0x8000002E, "FileSelector not present"},
      {size + "<Integer Name='FileSelector'><Value>0</Value></Integer>", 0x8000002E, "FileSelector not present"},
      {FileDevice::nodes("RO"), 0x8000000C, "FileSelector not writable"},
      {selector, 0x80000001, ""},
      {selector + "<Float Name='FileSize'><Value>7</Value></Float>", 0x80000001, ""},
      {selector + "<Integer Name='FileSize'><ImposedAccessMode>WO</ImposedAccessMode><Value>7</Value></Integer>",
       0x80000001, ""},
      {selector + "<Integer Name='FileSize'><Value>-1</Value></Integer>", 0x80000001, ""},
  };
  for (const auto& entry : kCases) {
    Device device(entry.nodes);
    OxSetLastError(0, "");
    const Records records;
    size_t told = 5;
    EXPECT_EQ(NMDownloadFileMemory(device.map, "UserSet", nullptr, &told), entry.code);
    EXPECT_EQ(told, 5u);
    EXPECT_EQ(lastErrorText(), entry.text);
    const std::string reason = *entry.text != 0 ? entry.text : "FileSize is missing, not readable or negative";
    EXPECT_THAT(records.texts(), testing::ElementsAre(testing::EndsWith("): " + reason)));
  }
}

TEST(FileTransfer, AFileThatTheDeviceDoesNotOpenLeavesTheLastErrorAlone) {
  const TemporaryFile host("");
  char memory[4];
  for (const bool toMemory : {true, false}) {
    FileDevice device;
    device.refusedOperation = 1;
    OxSetLastError(0, "");
    const Records records;
    size_t size = sizeof memory;
    EXPECT_EQ(toMemory ? NMDownloadFileMemory(device.map, "Firmware", memory, &size)
                       : NMDownloadFile(device.map, "Firmware", host.path.c_str()),
              0x80000016u);
    EXPECT_EQ(lastErrorText(), "");
    EXPECT_THAT(records.texts(), testing::ElementsAre(testing::EndsWith("): the device does not open the file")));
  }
}

TEST(FileTransfer, AFullDiskFailsTheDownload) {
  FileDevice device;
  for (const size_t bytes : {10, 200000}) {  // noticed when the file is closed, and before
    device.file("Firmware") = pattern(bytes);
    EXPECT_EQ(NMDownloadFile(device.map, "Firmware", "/dev/full"), 0x80000003u);
    EXPECT_NE(lastErrorText().find("/dev/full"), std::string::npos) << lastErrorText();
    EXPECT_NE(lastErrorText().find(std::strerror(ENOSPC)), std::string::npos) << lastErrorText();
  }

  const TemporaryFile host("");
  for (const rlim_t limit : {rlim_t{10}, rlim_t{150000}}) {
    EXPECT_EQ(withFileLimit(limit, [&] { return NMDownloadFile(device.map, "Firmware", host.path.c_str()); }),
              0x80000003u);
    EXPECT_NE(lastErrorText().find(std::strerror(EFBIG)), std::string::npos) << lastErrorText();
  }
}
