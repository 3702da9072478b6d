// Update files asked and applied through the flat interface.
#include <filesystem>

#include "Base/GCException.h"
#include "FileDevice.h"
#include "FirmwareUpdatableNodeMap.h"
#include "NodeMap.h"
#include "Records.h"
#include "UpdateFile.h"

namespace {

// A device with files, a model name and a register that says which firmware runs.
class UpdatableDevice : public FileDevice {
 public:
  UpdatableDevice() {
    load(description(features()));
    connect();
  }

  static std::string features() {
    return nodes() + "<String Name='DeviceModelName'><Value>EX-100</Value></String>" + integerRegister("Mode", 0x200) +
           integerRegister("Running", 0x204, "<ImposedAccessMode>RO</ImposedAccessMode>");
  }
};

std::string control(const std::string& steps) {
  return "<?xml version='1.0'?><FirmwareUpdateControl SchemaMajorVersion='1' SchemaMinorVersion='0'>"
         "<Update Procedure='Main'><Info Key='Description' Lang='de'>Schneller</Info>"
         "<Info Key='Description' Lang='en'>Faster \xc3\xa9</Info><Info Key='Version'>2.1.0</Info>"
         "<Condition Feature='DeviceModelName'>EX-[0-9]+</Condition></Update>"
         "<Update Procedure='Main'><Info Key='Version'>3</Info><Info Key='Description'>Other</Info>"
         "<Condition Feature='DeviceModelName'>Another device</Condition></Update>"
         "<Procedure Name='Main'>" +
         steps + "</Procedure></FirmwareUpdateControl>";
}

const std::string kWrite = "<FeatureWrite Feature='Mode' Value='7'/>";
const std::string kUpload = "<FileUpload FileSelector='Firmware' File='main.bin'/>";
const std::string kReset = "<DeviceReset EstimatedDurationMs='20000' DelayEnumerationMs='5000'/>";
const std::string kAssert = "<FeatureAssert Feature='Running' Pattern='2'/>";

class Updater {
 public:
  explicit Updater(const std::string& path) {
    EXPECT_EQ(CreateFirmwareUpdater(path.c_str(), 0, &handle), 0u) << lastErrorText();
  }
  ~Updater() { release(handle); }
  FWUPDATER handle{};
};

// What the reset callback does and has seen.
struct Reset {
  bool answer = true;
  void* newNodeMap = nullptr;
  std::function<void()> action;
  int calls = 0;
  unsigned duration = 0, delay = 0;

  static bool callback(unsigned duration, unsigned delay, void*& newNodeMap, void* self) {
    auto& reset = *static_cast<Reset*>(self);
    ++reset.calls;
    reset.duration = duration;
    reset.delay = delay;
    EXPECT_EQ(newNodeMap, nullptr);
    newNodeMap = reset.newNodeMap;
    if (reset.action) reset.action();
    return reset.answer;
  }
};

}  // namespace

TEST(FirmwareQueries, TellEveryTextOfEveryEntry) {
  const UpdateFile file("ox_queries.guf", control(kWrite), {});
  const Updater updater(file.path);
  size_t count = 0;
  ASSERT_EQ(FWUpdateFileCount(updater.handle, &count), 0u) << lastErrorText();
  EXPECT_EQ(count, 2u);
  ASSERT_EQ(FWUpdateFileInfoCount(updater.handle, 0, &count), 0u);
  EXPECT_EQ(count, 2u);
  ASSERT_EQ(FWUpdateFileInfoCount(updater.handle, 9, &count), 0u);
  EXPECT_EQ(count, 0u) << "no such entry, so no informations";

  const struct {
    size_t file, info;
    TFirmwareUpdateInfo what;
    uint32_t code;
    const char* text;  // the answer, or the last error's text
  } kCases[] = {
      {0, 0, FUI_Key, 0, "Description"},
      {0, 0, FUI_Value, 0, "Faster \xc3\xa9"},
      {0, 0, FUI_LanguageCode, 0, "en"},
      {0, 1, FUI_Value, 0, "2.1.0"},
      {0, 1, FUI_LanguageCode, 0, ""},
      {1, 0, FUI_Key, 0, "Version"},
      {0, 2, FUI_Key, 0x80000030, "InfoIndex not present in guf file."},
      {2, 0, FUI_Key, 0x80000030, "InfoIndex not present in guf file."},
      {3, 0, FUI_Key, 0x80000030, "FileIndex not present in guf file."},
      {0, 0, static_cast<TFirmwareUpdateInfo>(3), 0x80000013, "FirmwareUpdateInfo command not supported."},
  };
  for (const auto& entry : kCases) {
    char narrow[64] = "before";
    size_t size = sizeof narrow;
    EXPECT_EQ(FWUpdateFileInfo(updater.handle, entry.file, entry.info, entry.what, narrow, &size), entry.code);
    if (entry.code == 0) {
      EXPECT_STREQ(narrow, entry.text);
      ASSERT_EQ(FWUpdateFileInfo(updater.handle, entry.file, entry.info, entry.what, nullptr, &size), 0u);
      EXPECT_EQ(size, std::strlen(entry.text) + 1);
    } else {
      EXPECT_EQ(lastErrorText(), entry.text);
      EXPECT_STREQ(narrow, "");
    }
  }
  wchar_t wide[32];
  size_t size = 32;
  ASSERT_EQ(FWUpdateFileInfoW(updater.handle, 0, 0, FUI_Value, wide, &size), 0u);
  EXPECT_EQ(std::wstring(wide), L"Faster \u00e9");
}

TEST(FirmwareUpdate, GoesOnWithTheNodeMapThatTheResetCallbackAnswers) {
  const std::string image(1000, 'i');
  const UpdateFile file("ox_reset.guf", control(kWrite + kUpload + kReset + kAssert + kWrite), {{"main.bin", image}});
  const Updater updater(file.path);
  auto before = std::make_unique<UpdatableDevice>();
  UpdatableDevice after;
  after.memory[0x204] = 2;
  Reset reset{.newNodeMap = after.map, .action = {}};
  const NODEMAP former = before->map;
  reset.action = [&] {
    EXPECT_EQ(before->memory[0x200], 7);
    EXPECT_EQ(before->file("Firmware"), image);
    before.reset();
  };
  ASSERT_EQ(FWUpdate(updater.handle, former, 0, &Reset::callback, &reset), 0u) << lastErrorText();
  EXPECT_FALSE(IsNodeMap(former)) << "the updater holds the new one instead";
  EXPECT_EQ(reset.calls, 1);
  EXPECT_EQ(reset.duration, 20000u);
  EXPECT_EQ(reset.delay, 5000u);
  EXPECT_EQ(after.memory[0x200], 7);
}

TEST(FirmwareUpdate, NamesWhatFailed) {
  const UpdateFile file("ox_failures.guf", control(kReset + kWrite), {});
  const Updater updater(file.path);
  Device other(integerRegister("Mode", 0));
  const NODE node = other.node("Mode");  // alive, but not a node map
  NODEMAP undescribed{};
  ASSERT_EQ(CreateNodeMap(undescribed), 0u);
  const struct {
    bool answer;
    void* newNodeMap;
    std::function<void()> action;
    const char* text;
  } kCases[] = {
      {false, nullptr, {}, "no node map after device reset"},
      {true, nullptr, {}, "Failed to get device node map after reset."},
      {true, reinterpret_cast<void*>(node), {}, "Failed to get device node map after reset."},
      {true, nullptr, [] { throw 5; }, "Unknown error updating firmware"},
      {true, nullptr, [] { throw std::runtime_error("the caller's own"); }, "the caller's own"},
      {true, undescribed, {}, "no node map after device reset"},
  };
  for (const auto& entry : kCases) {
    UpdatableDevice device;
    Reset reset{.answer = entry.answer, .newNodeMap = entry.newNodeMap, .action = entry.action};
    EXPECT_EQ(FWUpdate(updater.handle, device.map, 0, &Reset::callback, &reset), 0x80000001u);
    EXPECT_EQ(reset.calls, 1);
    EXPECT_EQ(lastErrorText(), entry.text);
    EXPECT_EQ(device.memory[0x200], 0);
  }
  release(undescribed);

  UpdatableDevice device;
  Reset same{.newNodeMap = device.map, .action = {}};
  EXPECT_EQ(FWUpdate(updater.handle, device.map, 0, &Reset::callback, &same), 0u) << "the old map may be the new one";
  EXPECT_EQ(device.memory[0x200], 7);
  EXPECT_EQ(FWUpdate(updater.handle, device.map, 0, nullptr, nullptr), 0x80000001u) << "nobody can reset";
  EXPECT_EQ(FWUpdate(updater.handle, device.map, 1, nullptr, nullptr), 0x80000001u) << "for another device";
  EXPECT_EQ(FWUpdate(updater.handle, device.map, 2, nullptr, nullptr), 0x80000001u) << "no such entry";
  NODEMAP empty{};
  ASSERT_EQ(CreateNodeMap(empty), 0u);
  EXPECT_FAILS(FWUpdate(updater.handle, empty, 0, nullptr, nullptr), 0x80000001, "No NodeMap loaded, yet");
  release(empty);
  EXPECT_FAILS(FWUpdate(updater.handle, empty, 0, nullptr, nullptr), 0x8000001D, "Invalid NODEMAP handle");
  EXPECT_FAILS(FWUpdate(FWUPDATER{}, empty, 0, nullptr, nullptr), 0x8000001D, "Invalid FWUPDATER handle");
}

// The engine's updater keeps the order; other users of the class are told where they broke it.
TEST(FirmwareUpdatableNodeMap, KeepsTheOrderAndHoldsOneNodeMapAtATime) {
  using orxBase::detail::make_shared_t;
  auto map = make_shared_t<orxGenApi::NodeMap>();
  const std::string text = description("");
  ASSERT_EQ(map->LoadXMLString(text.data(), text.size()), 0u);
  const auto device = make_shared_t<orxGenApi::CFirmwareUpdateableNodeMap>(map->shared_from_this());
  const auto refusal = [](const auto& call) -> std::string {
    try {
      call();
    } catch (const orxGenApi::orx_error& error) {
      return std::to_string(error.code()) + " " + error.what();
    } catch (const GENICAM_NAMESPACE::LogicalErrorException& error) {
      return std::string(error.GetSourceFileName()) + ":" + std::to_string(error.GetSourceLine()) + " " +
             error.GetDescription();
    }
    return "";
  };
  const auto end = [&] { device->CleanupAfterFirmwareUpdate(); };
  const auto begin = [&] { device->PrepareForFirmwareUpdate(); };
  EXPECT_EQ(refusal(end), "1 Device is not in updating state.");
  EXPECT_EQ(refusal([&] { device->DeviceResetWhileUpdatingFirmware(1, 1); }),
            "src/FirmwareUpdatableNodeMap:84 Device is not in updating state (status = 0)");
  EXPECT_EQ(refusal(begin), "");
  EXPECT_EQ(refusal(begin), "1 Device is not in idle state.");

  static OxHandle former;
  former = map.container();
  map.reset();
  static int resets;
  resets = 0;
  const TFirmwareReset gone = [](unsigned, unsigned, void*&, void*) {
    ++resets;
    EXPECT_FALSE(IsNodeMap(static_cast<NODEMAP>(former))) << "released before the device is reopened";
    return false;
  };
  device->setReset(gone, nullptr);
  EXPECT_EQ(device->DeviceResetWhileUpdatingFirmware(1, 1), nullptr);
  end();
  begin();
  EXPECT_EQ(device->DeviceResetWhileUpdatingFirmware(1, 1), nullptr) << "the callback was that of the former update";
  EXPECT_EQ(resets, 1);
}
