// Applying an update: the order of calls, and what happens when something fails on the way.
#include <FirmwareUpdate/FirmwareUpdate.h>

#include "FileCamera.h"
#include "GufBuilder.h"
#include "PassingTime.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;

// What happened, in order; device and observer write into it.
using Story = std::vector<std::string>;

struct Device : IFirmwareUpdatableDevice {
  Device(Story& itsStory, INodeMap* itsMap) : story(itsStory), map(itsMap) {}
  void PrepareForFirmwareUpdate() override {
    story.push_back("prepare");
    if (failsToPrepare) throw std::runtime_error("not now");
  }
  INodeMap* DeviceResetWhileUpdatingFirmware(unsigned int estimated, unsigned int delay) override {
    story.push_back("reset " + std::to_string(estimated) + " " + std::to_string(delay));
    return afterReset;
  }
  void CleanupAfterFirmwareUpdate() override {
    story.push_back("cleanup");
    if (failsToCleanUp) throw std::runtime_error("dirt left");
  }
  INodeMap* GetNodeMapOfDeviceToUpdate() override { return map; }
  gcstring GetDisplayName() override { return "device"; }

  Story& story;
  INodeMap* map;
  INodeMap* afterReset = nullptr;
  bool failsToPrepare = false;
  bool failsToCleanUp = false;
};

struct Observer : IFirmwareUpdateProgressObserver {
  explicit Observer(Story& itsStory) : story(itsStory) {}
  void OnFirmwareUpdateBegin(const CFirmwareUpdateInfo&, unsigned int estimated) override {
    story.push_back("begin " + std::to_string(estimated));
    if (throwsAtBegin) throw std::runtime_error("user said no");
  }
  void OnFirmwareUpdateProgressStepBegin(EFirmwareUpdateProgressStepType type, unsigned int estimated,
                                         const char* text) override {
    story.push_back("step " + std::to_string(type) + " " + std::to_string(estimated) + " " + text);
    throw std::runtime_error("a broken progress bar");
  }
  void OnFirmwareUpdateProgressStepPartialProgress(EFirmwareUpdateProgressStepType, double percent) override {
    story.push_back(std::to_string(static_cast<int>(percent)) + "%");
    throw 1;
  }
  void OnFirmwareUpdateProgressStepEnd(EFirmwareUpdateProgressStepType type, unsigned int) override {
    story.push_back("end " + std::to_string(type));
  }
  void OnFirmwareUpdateEnd() override { story.push_back("done"); }
  void OnFirmwareUpdateError(const GenericException& e) override {
    story.push_back(std::string("error ") + e.GetDescription());
    throw 1;
  }
  Story& story;
  bool throwsAtBegin = false;
};

std::string control(const std::string& steps) {
  return R"(<FirmwareUpdateControl SchemaMajorVersion="1"><Update Procedure="Main"><Info Key="Version">1</Info>
    <Info Key="Description">d</Info><Condition Feature="DeviceModelName">EX-(100|200)</Condition></Update>
    <Procedure Name="Main">)" +
         steps + "</Procedure></FirmwareUpdateControl>";
}

struct Attempt {
  explicit Attempt(const std::string& steps)
      : file(guf(control(steps), {{"data/main.bin", "0123456789abcdefghijklmn!", true}})) {
    CFirmwareUpdateDefaultInfoCollector infos;
    CFirmwareUpdater().ReadFirmwareUpdateInfos(file.path(), infos);
    info = infos[0];
  }
  void apply(const char* language = nullptr) { CFirmwareUpdater().ApplyUpdate(&device, info, &observer, language); }
  // What the update is refused with; it cleans up in the end.
  template <class Exception>
  std::string refused() {
    const std::string text = refusal<Exception>([&] { apply(); });
    EXPECT_EQ(story.back(), "cleanup");
    EXPECT_EQ(std::count(story.begin(), story.end(), "cleanup"), 1);
    return text;
  }

  FileBench<> bench;
  TemporaryFile file;
  CFirmwareUpdateInfo info;
  Story story;
  Device device{story, bench.map};
  Observer observer{story};
};

const char kUpload[] = R"(<FileUpload FileSelector="Firmware" File="data/main.bin" EstimatedDurationMs="7">
  <Description Lang="en">Writing</Description><Description Lang="de">Schreibe</Description></FileUpload>)";

TEST(FirmwareApply, CarriesOutEveryStepInOrder) {
  Attempt run(std::string(R"(<FeatureWrite Feature="Mode" Value="5" EstimatedDurationMs="1"/>)") + kUpload +
              R"(<FeatureExecute Feature="Activate"/><DeviceReset EstimatedDurationMs="20" DelayEnumerationMs="3"/>
             <FeatureAssert Feature="Mode" Pattern="5|6"/>)");
  FileBench<> after;
  after.camera.setWord(FileCamera::Mode, 6);
  run.device.afterReset = after.map;

  run.apply("DE");
  EXPECT_THAT(run.story, ElementsAre("prepare", "begin 28", "step 0 0 ", "end 0", "step 1 0 ", "end 1", "step 2 1 ",
                                     "end 2", "step 5 7 Schreibe", "48%", "96%", "100%", "end 5", "step 3 0 ", "end 3",
                                     "step 6 20 ", "reset 20 3", "end 6", "step 4 0 ", "end 4", "done", "cleanup"));
  EXPECT_EQ(run.bench.camera.files[1], "0123456789abcdefghijklmn!");
  EXPECT_EQ(run.bench.camera.word(FileCamera::Mode), 5u);
  EXPECT_EQ(run.bench.camera.opened, 0);
}

TEST(FirmwareApply, AnAssertionAsksTheDevice) {
  Attempt run(R"(<FeatureAssert Feature="Mode" Pattern="6"/>)");
  run.bench.t.integer("Mode")->GetValue();
  run.bench.camera.setWord(FileCamera::Mode, 6);
  run.apply();
}

TEST(FirmwareApply, AFailedStepIsReportedCleanedUpAndRethrown) {
  const struct {
    const char* steps;
    const char* text;
  } cases[] = {
      {R"(<FeatureWrite Feature="Nothing" Value="5"/>)",
       "step 1 FeatureWrite 'Nothing': the device has no such feature"},
      {R"(<FeatureExecute Feature="Mode"/>)", "step 1 FeatureExecute 'Mode': is not a command"},
      {R"(<FeatureWrite Feature="Mode" Value="2"/><FeatureAssert Feature="Mode" Pattern="3"/>)",
       "step 2 FeatureAssert 'Mode': value '2' does not match '3'"},
      {R"(<DeviceReset/><FeatureWrite Feature="Mode" Value="2"/>)", "no node map after device reset"},
      {R"(<DeviceReset/><FileUpload FileSelector="Firmware" File="data/main.bin"/>)", "no node map after device reset"},
  };
  for (const auto& c : cases) {
    Attempt run(c.steps);
    run.device.failsToCleanUp = true;
    EXPECT_EQ(run.refused<RuntimeException>(), c.text);
    EXPECT_EQ(run.story[run.story.size() - 2], std::string("error ") + c.text);
  }
  Attempt last("<DeviceReset/>");
  last.apply();
  EXPECT_EQ(last.story.back(), "cleanup") << "a reset without a new node map may be the last step";
}

TEST(FirmwareApply, ACommandWithoutEndIsGivenUpUnlessAResetFollows) {
  const PassingTime time;
  const struct {
    const char* step;
    int limitMs;
  } cases[] = {{"<FeatureExecute Feature='Activate'/>", 60000},
               {"<FeatureExecute Feature='Activate' EstimatedDurationMs='20001'/>", 60003}};
  for (const auto& c : cases) {
    Attempt run(c.step);  // the register keeps the command's value: never done
    const auto start = time.now();
    EXPECT_EQ(run.refused<TimeoutException>(),
              "step 1 FeatureExecute 'Activate': has not finished within " + std::to_string(c.limitMs) + " ms");
    EXPECT_GT(time.now() - start, std::chrono::milliseconds(c.limitMs));
    Attempt leaving(std::string(c.step) + "<DeviceReset/>");
    leaving.apply();
    EXPECT_EQ(leaving.story.back(), "cleanup");
  }
}

TEST(FirmwareApply, AnUploadNeedsTheFileFeatures) {
  Attempt run(kUpload);
  TestMap without(fileDescription("", "FileAccessBuffer"));
  without.map->Connect(&run.bench.camera);
  run.device.map = without.map;
  EXPECT_EQ(run.refused<RuntimeException>(), "step 1 FileUpload 'Firmware': the device has no FileAccessBuffer");
}

TEST(FirmwareApply, NothingIsWrittenWhenFileOrDeviceDoNotFit) {
  Attempt changed(kUpload);  // another size, another byte, no update file at all
  for (const std::string& bytes :
       {guf(control(kUpload), {{"data/main.bin", "other bytes of it", true}}),
        guf(control(kUpload), {{"data/main.bin", "0123456789abcdefghijklmn?", true}}), std::string("-")}) {
    changed.file.write(bytes);
    changed.story.clear();
    EXPECT_THAT(changed.refused<RuntimeException>(), HasSubstr("has changed since it was read"));
    EXPECT_EQ(changed.bench.camera.executions, 0);
  }

  Attempt other(kUpload);
  std::memcpy(&other.bench.camera.memory[FileCamera::Model], "EX-300", 6);
  EXPECT_THAT(other.refused<InvalidArgumentException>(), HasSubstr("DeviceModelName"));
  EXPECT_FALSE(CFirmwareUpdater().FirmwareUpdateMatchesDevice(other.bench.map, other.info));
  EXPECT_EQ(other.bench.camera.executions, 0);

  Attempt stopped(kUpload);
  stopped.observer.throwsAtBegin = true;
  EXPECT_EQ(stopped.refused<std::runtime_error>(), "user said no");
  EXPECT_EQ(stopped.bench.camera.accesses, 0);

  Attempt unprepared(kUpload);
  unprepared.device.failsToPrepare = true;
  EXPECT_EQ(refusal<std::runtime_error>([&] { unprepared.apply(); }), "not now");
  EXPECT_THAT(unprepared.story, ElementsAre("prepare"));

  const std::string write = R"(<FeatureWrite Feature="Mode" Value="5"/>)";
  Attempt incomplete(write + R"(<FileUpload FileSelector="Firmware" File="missing.bin"/>)");
  EXPECT_THAT(incomplete.refused<FileNotFoundException>(), HasSubstr("missing.bin"));
  EXPECT_EQ(incomplete.bench.camera.word(FileCamera::Mode), 0U);

  Attempt mapless(kUpload);
  mapless.device.map = nullptr;
  EXPECT_EQ(mapless.refused<RuntimeException>(), "device has no node map");

  EXPECT_THROW(CFirmwareUpdater().ApplyUpdate(nullptr, changed.info), InvalidArgumentException);
  EXPECT_THROW(CFirmwareUpdater().ApplyUpdate(&changed.device, CFirmwareUpdateInfo()), InvalidArgumentException);
  EXPECT_TRUE(CFirmwareUpdater().FirmwareUpdateMatchesDevice(changed.bench.map, changed.info));
  EXPECT_FALSE(CFirmwareUpdater().FirmwareUpdateMatchesDevice(changed.bench.map, CFirmwareUpdateInfo()));
  EXPECT_THROW(CFirmwareUpdater().FirmwareUpdateMatchesDevice(nullptr, changed.info), InvalidArgumentException);
}

TEST(FirmwareApply, AFailureOfCleaningUpAfterSuccessLeaves) {
  Attempt run(R"(<FeatureWrite Feature="Mode" Value="5"/>)");
  run.device.failsToCleanUp = true;
  EXPECT_EQ(run.refused<std::runtime_error>(), "dirt left");
  EXPECT_EQ(run.story[run.story.size() - 2], "done");
  run.device.failsToCleanUp = false;
  run.apply();
  EXPECT_EQ(run.story.back(), "cleanup") << "the same updater and device again";
}

TEST(FirmwareApply, EveryPortFailureIsReportedAndCleanedUp) {
  const std::string steps = std::string(R"(<FeatureWrite Feature="Mode" Value="5"/>)") + kUpload;
  int failures = 0;
  for (int n = 1;; ++n) {
    Attempt run(steps);
    run.bench.camera.failAt = n;
    std::string text;
    try {
      run.apply();
    } catch (const TimeoutException& e) {
      text = e.what();
    }
    EXPECT_EQ(run.story.back(), "cleanup");
    if (run.bench.camera.accesses < n) {
      EXPECT_EQ(text, "");
      break;
    }
    ++failures;
    EXPECT_EQ(text, "the line is dead") << n;
    EXPECT_EQ(run.story[run.story.size() - 2], "error the line is dead") << n;
    EXPECT_EQ(run.bench.camera.opened, 0) << n;
  }
  EXPECT_GT(failures, 20);
}

}  // namespace
