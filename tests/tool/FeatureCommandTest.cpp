#include <gmock/gmock.h>

#include <algorithm>
#include <map>

#include "ToolRun.h"

using nlohmann::json;
using testing::Contains;
using testing::HasSubstr;

namespace {

// One feature of each kind that the memory tests need, over a port whose memory is zero where nothing was written.
constexpr const char* kFeatures = "<pFeature>Speed</pFeature><pFeature>Mode</pFeature><pFeature>Double</pFeature>";
constexpr const char* kNodes = R"(
  <Integer Name="Speed">
    <ToolTip>Turns per second</ToolTip>
    <pValue>SpeedReg</pValue><Min>0</Min><Max>1000</Max><Inc>5</Inc><Unit>1/s</Unit>
  </Integer>
  <IntReg Name="SpeedReg">
    <Address>0x1000</Address><Length>4</Length><AccessMode>RW</AccessMode><pPort>Device</pPort>
    <Sign>Unsigned</Sign><Endianess>BigEndian</Endianess>
  </IntReg>
  <Enumeration Name="Mode">
    <EnumEntry Name="Slow"><Value>0</Value></EnumEntry>
    <EnumEntry Name="Fast"><Value>1</Value></EnumEntry>
    <pValue>ModeReg</pValue>
  </Enumeration>
  <IntReg Name="ModeReg">
    <Address>0x1004</Address><Length>4</Length><AccessMode>RW</AccessMode><pPort>Device</pPort>
    <Sign>Unsigned</Sign><Endianess>BigEndian</Endianess>
  </IntReg>
  <IntSwissKnife Name="Double"><pVariable Name="S">Speed</pVariable><Formula>S * 2</Formula></IntSwissKnife>
  <Port Name="Device"/>
)";

}  // namespace

class FeatureCommand : public ToolTest {
 protected:
  std::vector<std::string> bench(std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(), {"--xml", describe(kFeatures, kNodes), "--memory", path("bench.mem")});
    return arguments;
  }
  std::vector<std::string> camera(std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(), {"--state", path("camera.state")});
    return arguments;
  }
};

TEST_F(FeatureCommand, InfoNamesDeviceVersionsAndPorts) {
  const json info = runJson(bench({"info"}));
  EXPECT_EQ(info["vendor"], "V");
  EXPECT_EQ(info["model"], "M");
  EXPECT_EQ(info["schemaVersion"], "1.1.0");
  EXPECT_EQ(info["deviceVersion"], "1.2.3");
  const json nodes = runJson(bench({"nodes"}));
  EXPECT_EQ(info["nodes"], 9);  // entries count
  EXPECT_EQ(nodes.size(), 9);
  EXPECT_THAT(nodes, Contains(json({{"name", "SpeedReg"}, {"type", "integer"}})));
  EXPECT_EQ(info["ports"], json({"Device"}));
  EXPECT_EQ(info["libraryVersion"], "3.1.0");
  EXPECT_EQ(info["genApiVersion"], "3.4.2");
}

TEST_F(FeatureCommand, GetGivesEveryKindOfFeatureItsOwnJsonType) {
  const json values =
      runJson({"get", "Width", "ExposureTime", "ReverseX", "TestPattern", "DeviceVendorName", "TestRegister"});
  ASSERT_EQ(values.size(), 6);
  EXPECT_TRUE(values[0]["value"].is_number_integer());
  EXPECT_TRUE(values[1]["value"].is_number_float());
  EXPECT_TRUE(values[2]["value"].is_boolean());
  EXPECT_TRUE(values[3]["value"].is_string());
  EXPECT_EQ(values[4]["value"], "Ox Simulation");
  EXPECT_THAT(values[5]["value"].get<std::string>(), testing::MatchesRegex("([0-9a-f]{2} ?)+"));
  EXPECT_EQ(values[1]["type"], "float");
}

TEST_F(FeatureCommand, GetGoesOnAfterAFailureAndExitsWithOne) {
  const ToolResult text = run({"get", "NoSuchFeature", "DeviceVendorName"});
  EXPECT_EQ(text.status, 1);
  EXPECT_EQ(text.out, "DeviceVendorName = \"Ox Simulation\"\n");
  EXPECT_EQ(text.err, "oxgenapi: NoSuchFeature: Node 'NoSuchFeature' not present in NodeMap (0x8000002e)\n");

  const json values = runJson({"get", "NoSuchFeature", "DeviceVendorName"}, 1);
  EXPECT_EQ(values[0]["error"]["code"], "0x8000002e");
  EXPECT_EQ(values[0]["error"]["feature"], "NoSuchFeature");
  EXPECT_EQ(values[1]["value"], "Ox Simulation");
}

TEST_F(FeatureCommand, CameraStateLastsFromRunToRun) {
  EXPECT_EQ(run(camera({"set", "Width=640", "TestPattern=Off", "DeviceUserID=north gate",
                        "TestSigned64=-9223372036854775807"}))
                .status,
            0);
  EXPECT_EQ(run(camera({"get", "--bare", "Width", "TestPattern", "DeviceUserID", "TestSigned64"})).out,
            "640\nOff\nnorth gate\n-9223372036854775807\n");
  EXPECT_NE(run({"get", "--bare", "DeviceUserID"}).out, "north gate\n");  // without a state: factory settings
}

TEST_F(FeatureCommand, SetStopsAtTheFirstFailureUnlessToldToGoOn) {
  const ToolResult stopped = run(bench({"set", "Speed=10", "Speed=7", "Mode=Fast"}));
  EXPECT_EQ(stopped.status, 1);
  EXPECT_THAT(stopped.err, HasSubstr("oxgenapi: Speed: "));
  EXPECT_THAT(stopped.err, HasSubstr("(0x80000002)"));
  EXPECT_EQ(run(bench({"get", "-b", "Speed", "Mode"})).out, "10\nSlow\n");  // what was written before is kept

  EXPECT_EQ(run(bench({"set", "-k", "Speed=7", "Mode=Fast"})).status, 1);
  EXPECT_EQ(run(bench({"get", "-b", "Speed", "Mode"})).out, "10\nFast\n");
}

TEST_F(FeatureCommand, ExecRunsACommandAndWaitsForIt) {
  const int before = std::stoi(run(camera({"get", "-b", "TestCommandCount"})).out);
  const json done = runJson(camera({"exec", "TestCommand"}));
  EXPECT_EQ(done, json({{"name", "TestCommand"}, {"done", true}}));
  EXPECT_EQ(std::stoi(run(camera({"get", "-b", "TestCommandCount"})).out), before + 1);
  const ToolResult refused = run({"exec", "Width"});
  EXPECT_EQ(refused.status, 1);
  EXPECT_EQ(refused.err, "oxgenapi: Width: is no command (0x80000013)\n");
}

TEST_F(FeatureCommand, TreeStopsAtDepthAndVisibility) {
  const json tree = runJson({"tree", "--depth", "1"});
  EXPECT_EQ(tree["name"], "Root");
  for (const json& category : tree["features"]) {
    EXPECT_EQ(category["type"], "category");
    EXPECT_FALSE(category.contains("features")) << category["name"];
  }
  const auto names = [&](const char* visibility) {
    std::vector<std::string> found;
    const json category = runJson({"tree", "TestControl", "-v", visibility});
    for (const json& feature : category["features"]) {
      found.push_back(feature["name"]);
    }
    return found;
  };
  EXPECT_THAT(names("beginner"), Contains("TestBeginner"));
  EXPECT_THAT(names("beginner"), testing::Not(Contains("TestExpert")));
  EXPECT_THAT(names("expert"), Contains("TestExpert"));
  EXPECT_THAT(names("guru"), testing::Not(Contains("TestInvisible")));
}

TEST_F(FeatureCommand, TreeShowsValuesAndTheReasonWhereOneCannotBeRead) {
  const std::string tree = run(bench({"tree", "--values"})).out;
  EXPECT_EQ(tree,
            "Root\n"
            "  Speed  integer RW = 0 1/s\n"
            "  Mode  enumeration RW = Slow\n"
            "  Double  integer RO = 0\n");
  EXPECT_EQ(run(bench({"poke", "0x1004", "00000009"})).status, 0);
  EXPECT_THAT(run(bench({"tree", "--values"})).out, HasSubstr("Mode  enumeration RW = "));
  EXPECT_THAT(run(bench({"tree", "--values"})).out, HasSubstr("(0x8000000"));
}

TEST_F(FeatureCommand, DescribeTellsLimitsEntriesAndDependents) {
  const json speed = runJson(bench({"describe", "Speed"}));
  EXPECT_EQ(speed["toolTip"], "Turns per second");
  EXPECT_EQ(speed["access"], "Read/Write");
  EXPECT_EQ(speed["min"], 0);
  EXPECT_EQ(speed["max"], 1000);
  EXPECT_EQ(speed["increment"], 5);
  EXPECT_EQ(speed["unit"], "1/s");
  EXPECT_EQ(speed["feature"], true);
  EXPECT_EQ(speed["dependents"], json({"Double"}));

  const json mode = runJson(bench({"describe", "Mode"}));
  ASSERT_EQ(mode["entries"].size(), 2);
  EXPECT_EQ(mode["entries"][1]["name"], "Fast");
  EXPECT_EQ(mode["entries"][1]["value"], 1);
  EXPECT_THAT(run(bench({"describe", "Mode"})).out, HasSubstr("Slow (0, RO), Fast (1, RO)"));

  // Availability and selection are dependencies too.
  EXPECT_THAT(runJson({"describe", "AdcBitDepth"})["dependents"], Contains("PixelFormat"));
  const json selector = runJson({"describe", "GainSelector"});
  EXPECT_THAT(selector["dependents"], Contains("Gain"));
  EXPECT_THAT(selector["selects"], Contains("Gain"));
  EXPECT_THAT(runJson({"describe", "Gain"})["selectedBy"], Contains("GainSelector"));
  EXPECT_EQ(runJson({"describe", "GevCurrentIPAddress"})["representation"], "IPV4Address");
}

TEST_F(FeatureCommand, PokedBytesArePeekedAndReadAsFeatures) {
  EXPECT_EQ(run(bench({"peek", "0x1000", "2", "--json"})).json()["bytes"], "00 00");
  EXPECT_EQ(run(bench({"poke", "0x1000", "00 00", "01", "f4"})).status, 0);
  EXPECT_EQ(run(bench({"peek", "4098", "4", "--json"})).json()["bytes"], "01 f4 00 00");
  EXPECT_EQ(run(bench({"get", "-b", "Speed", "Double"})).out, "500\n1000\n");
  EXPECT_THAT(run(bench({"peek", "0x1000", "4"})).out, HasSubstr("0000000000001000  00 00 01 f4"));
}

TEST_F(FeatureCommand, RegisterShowsBytesAndRefusesOtherKinds) {
  const json bytes = runJson({"register", "TestRegister"});
  EXPECT_EQ(bytes["bytes"].get<std::string>().size(), bytes["length"].get<size_t>() * 3 - 1);
  const json refused = runJson({"register", "Width"}, 1);
  EXPECT_EQ(refused["error"]["code"], "0x80000013");
  EXPECT_EQ(refused["error"]["text"], "The node does not implement the IRegister interface");
}

TEST_F(FeatureCommand, WatchShowsTheFirstValueAndEveryPolledChange) {
  const ToolResult result = run({"watch", "TestPolledCounter", "Width", "--poll", "5", "--seconds", "1", "--json"});
  EXPECT_EQ(result.status, 0);
  std::vector<int64_t> counts;
  int widths = 0;
  for (const json& record : result.records()) {
    record["name"] == "Width" ? ++widths : (counts.push_back(record["value"]), 0);
  }
  EXPECT_EQ(widths, 1);  // nothing changes it
  EXPECT_FALSE(counts.empty());
  EXPECT_TRUE(std::is_sorted(counts.begin(), counts.end()));
}

TEST_F(FeatureCommand, WatchShowsWhatAWriteBringsAbout) {
  const ToolResult result =
      run({"watch", "TestCommandSlow", "EnumEntry_PixelFormat_Mono12", "--set", "TestCommandSlow=1", "--set",
           "AdcBitDepth=Bpp12", "--poll", "10", "--seconds", "2", "--json"});
  EXPECT_EQ(result.status, 0) << result.err;
  std::map<std::string, std::vector<json>> values, accesses;
  for (const json& record : result.records()) {
    values[record["name"]].push_back(record["value"]);
    accesses[record["name"]].push_back(record["access"]);
  }
  const auto& slow = values["TestCommandSlow"];
  EXPECT_EQ(slow.front(), true);
  EXPECT_THAT(slow, Contains(false));
  EXPECT_EQ(slow.back(), true);  // done before the watch ends
  EXPECT_EQ(values["EnumEntry_PixelFormat_Mono12"], (std::vector<json>{nullptr, "Mono12"}));  // entries come and go
  EXPECT_EQ(accesses["EnumEntry_PixelFormat_Mono12"], (std::vector<json>{"NA", "RO"}));
  EXPECT_EQ(run({"watch", "Width", "--set", "Width"}).status, 2);
}

TEST_F(FeatureCommand, EventsAndChunksShowTheFeaturesTheyFill) {
  const json event = runJson({"events", "--enable", "Test", "--exec", "TestEventGenerate", "--seconds", "0.1"});
  EXPECT_EQ(event["event"], "9040");
  EXPECT_THAT(event["features"].items().begin().key(), HasSubstr("EventTest"));
  EXPECT_THAT(run({"events", "--enable", "Test", "--seconds", "0"}).err, HasSubstr("--enable"));
  EXPECT_THAT(run({"events", "--seconds", "0.2"}).out, HasSubstr("EventExposureEndTimestamp = "));
  EXPECT_THAT(run({"chunks"}).out, testing::AllOf(HasSubstr("ChunkTimestamp = "), HasSubstr("ChunkGain = ")));
  EXPECT_EQ(runJson({"events", "deliver", "9040", std::string(32, '0')})["event"], "9040");
  EXPECT_THAT(runJson({"events", "list"})["9040"], Contains("EventTestTimestamp"));

  const std::vector<std::string> take{"chunks", "--enable", "ExposureTime", "--frames", "2"};
  std::vector<std::string> table = take;
  table.emplace_back("--csv");
  EXPECT_THAT(run(take).out, HasSubstr("  ChunkExposureTime = "));
  EXPECT_THAT(run(table).out, testing::MatchesRegex("frame,bytes,[^\n]*ChunkExposureTime[^\n]*\n1,[^\n]*\n2,[^\n]*\n"));
  const json image = runJson({"chunks", "--enable", "ExposureTime"});
  EXPECT_TRUE(image["features"]["ChunkExposureTime"].is_number());
}

TEST_F(FeatureCommand, DamagedFilesAreRefusedAndLeftAsTheyAre) {
  write("camera.state", "no state");
  const ToolResult state = run(camera({"get", "Width"}));
  EXPECT_EQ(state.status, 1);
  EXPECT_THAT(state.err, HasSubstr("camera.state"));
  EXPECT_EQ(read("camera.state"), "no state");

  write("bench.mem", "no image");
  EXPECT_EQ(run(bench({"get", "Speed"})).status, 1);
  EXPECT_EQ(read("bench.mem"), "no image");
}
