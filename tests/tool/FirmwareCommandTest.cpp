// Update files made, looked into and applied from the command line.
#include <gmock/gmock.h>

#include <cstdlib>

#include "ToolRun.h"

using testing::HasSubstr;

namespace {

// Made by the build for the simulated camera.
std::string cameraUpdate() { return std::string(std::getenv("OX_BUILD_DIR")) + "/share/camera.guf"; }

std::string control(const std::string& steps) {
  return "<FirmwareUpdateControl SchemaMajorVersion='1' SchemaMinorVersion='0'><Update Procedure='Main'>"
         "<Info Key='Version'>1</Info><Info Key='Description' Lang='en'>A test</Info>"
         "<Condition Feature='DeviceModelName'>.*</Condition></Update>"
         "<Procedure Name='Main'>" +
         steps + "</Procedure></FirmwareUpdateControl>";
}

}  // namespace

class FirmwareCommand : public ToolTest {};

TEST_F(FirmwareCommand, TheCamerasUpdateBringsANewVersionAndANewFeature) {
  EXPECT_EQ(runJson({"firmware", "verify", cameraUpdate()})["valid"], true);
  const nlohmann::json info = runJson({"firmware", "info", cameraUpdate()});
  ASSERT_EQ(info.size(), 1u);
  EXPECT_THAT(info[0], testing::Contains(nlohmann::json{{"key", "Version"}, {"value", "2.0.0"}, {"language", ""}}));

  EXPECT_EQ(run({"--state", "camera", "get", "SensorReadoutMode"}).status, 1);
  const ToolResult result = run({"--state", "camera", "firmware", "update", cameraUpdate(), "--select", "0"});
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_THAT(result.out, HasSubstr("applied: 200048 bytes in "));
  const nlohmann::json after = runJson({"--state", "camera", "get", "DeviceFirmwareVersion", "SensorReadoutMode"});
  EXPECT_EQ(after[0]["value"], "FW 2.0.0");
  EXPECT_EQ(after[1]["value"], "Normal");
  EXPECT_EQ(run({"firmware", "update", cameraUpdate(), "--select", "1"}).status, 2);
}

TEST_F(FirmwareCommand, UpdateFilesAreMadeTheSameEveryTime) {
  write("control", control("<FileUpload FileSelector='UserFile1' File='data/a.bin'/>"));
  write("a", std::string(100'000, 'a'));
  write("signature", "SIGNED");
  const std::vector<std::string> create{"guf",          "create",      "first.guf", "control",
                                        "data/a.bin=a", "--signature", "signature"};
  ASSERT_EQ(run(create).status, 0);
  const std::string first = read("first.guf");
  ASSERT_EQ(run(create).status, 0);
  EXPECT_EQ(read("first.guf"), first);
  EXPECT_THAT(first, HasSubstr("SIGNED"));
  EXPECT_EQ(runJson({"guf", "create", "small.guf", "control", "data/a.bin=a", "--compress"})["members"], 2);
  EXPECT_LT(read("small.guf").size(), first.size() / 10);
  for (const char* file : {"first.guf", "small.guf"}) {
    EXPECT_EQ(run({"--state", "camera", "firmware", "update", file}).status, 0);
    EXPECT_EQ(runJson({"--state", "camera", "files", "list"})[0]["size"], 100'000);
  }
}

TEST_F(FirmwareCommand, WhatCannotBeAppliedIsNotMade) {
  write("kept.guf", "kept");
  write("control", control("<FileUpload FileSelector='UserFile1' File='data/a.bin'/>"));
  write("broken", "<FirmwareUpdateControl>");
  write("zeros", std::string(4 << 20, '\0'));
  const struct {
    std::vector<std::string> arguments;
    int status;
    const char* text;
  } kCases[] = {
      {{"kept.guf", "control"}, 1, "'kept.guf': member 'data/a.bin': is missing in package.zip (0x80000003)"},
      {{"kept.guf", "broken"}, 1, "'kept.guf': control.xml: is not well-formed"},
      {{"kept.guf", "control", "data/a.bin=zeros", "--compress"}, 1, "1000 times"},
      {{"kept.guf", "control", "data/a.bin=control", "data/a.bin=broken"}, 1, "data/a.bin"},
      {{"nowhere/x.guf", "control", "data/a.bin=control"}, 1, "nowhere/x.guf"},
      {{"kept.guf", "control", "control"}, 2, "is not MEMBER=FILE"},
      {{"kept.guf", "control", "data/a.bin=absent"}, 2, "no file 'absent'"},
  };
  for (const auto& entry : kCases) {
    std::vector<std::string> command{"guf", "create"};
    command.insert(command.end(), entry.arguments.begin(), entry.arguments.end());
    const ToolResult result = run(command);
    EXPECT_EQ(result.status, entry.status) << result.err;
    EXPECT_THAT(result.err, HasSubstr(entry.text));
  }
  EXPECT_EQ(read("kept.guf"), "kept");
  EXPECT_EQ(files(), (std::vector<std::string>{"broken", "control", "kept.guf", "zeros"}));
}

TEST_F(FirmwareCommand, AFailedUpdateSaysWhy) {
  const std::pair<const char*, const char*> kCases[] = {
      {"<FeatureWrite Feature='Width' Value='320'/><FeatureAssert Feature='Width' Pattern='640'/>",
       "step 2 FeatureAssert 'Width': value '320' does not match '640' (0x80000001)"},
      {"<FeatureWrite Feature='NoSuchFeature' Value='1'/>", "step 1 FeatureWrite 'NoSuchFeature': the device has no"},
      {"<FileUpload FileSelector='FactoryCalibration' File='a'/>", "FileOpenMode: entry 'Write' is not available"},
  };
  for (const auto& [steps, text] : kCases) {
    write("control", control(steps));
    ASSERT_EQ(run({"guf", "create", "x.guf", "control", "a=control"}).status, 0);
    const ToolResult result = run({"firmware", "update", "x.guf"});
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.err, HasSubstr(text));
  }
  write("not.guf", "nothing");
  for (const char* command : {"info", "verify", "update"})
    EXPECT_THAT(run({"firmware", command, "not.guf"}).err, HasSubstr("is not a zip archive"));
}
