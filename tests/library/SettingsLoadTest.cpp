// Applying settings text, what is reported on the way, and the way there and back.
#include <OxSimulatedCamera.h>

#include <OxGenApi/oxgenapi.hpp>
#include <algorithm>
#include <fstream>

#include "Records.h"
#include "SettingsBench.h"

TEST(SettingsLoad, AcceptsAllSpellings) {
  const std::pair<const char*, const char*> kCases[] = {
      // line, value of the text feature afterwards
      {"Text = \"plain\"", "plain"},
      {"  \t Text=bare words \r", "bare words"},
      {"Text = \"a\\\"b\\'c\\\\d\"", "a\"b'c\\d"},
      {"Text = \\x41\\X6a\\t|\\n|\\a\\b\\f\\r\\v", "Aj\t|\n|\a\b\f\r\v"},
      {"Text = \"cut\\0off\"", "cut"},
      {"Text = \"\\xFFFFFFC3\"",
       "\xff"
       "FFFFC3"},  // only two digits count
      {"Text = a = b", "a = b"},
      {"Text =", ""},
      {"Text = \"  kept  \"", "  kept  "},
      {"Text [ Index ( 1 ) , Other(2)] = \"selected\"", "selected"},
      {"; Text = comment", "start"},
      {" \t ", "start"},
      {"\n\n;\nText = last", "last"},
  };
  for (const auto& [line, value] : kCases) {
    Device device(stringReg("Text", "0") + intReg("Index", "0x100") + intReg("Other", "0x104"));
    ASSERT_EQ(device.set("Text", "start"), 0u);
    Heard heard;
    EXPECT_EQ(NMLoadSetString(device.map, line, false, &Heard::callback, &heard), 0u);
    EXPECT_TRUE(heard.problems.empty()) << line << ": " << heard.problems[0].text;
    EXPECT_EQ(device.get("Text"), value) << line;
  }
}

TEST(SettingsLoad, ReportsEachBadLineWithItsNumber) {
  const struct {
    const char* line;
    const char* text;  // behind line number and line, or behind the node
    uint32_t code = 0x80000016;
    const char* node = "-";
  } kCases[] = {
      {"Width", "Format error"},
      {" = 5", "Format error"},
      {"A[B(1) = 5", "Missing ']' for selector list"},
      {"A[] = 5", "Missing selector value start identifier '('"},
      {"A[B] = 5", "Missing selector value start identifier '('"},
      {"A[B(1,C(2)] = 5", "Missing selector value end identifier ')'"},
      {"Width = \"2", "Missing value end identifier '\"'"},
      {"Width = \"", "Missing value end identifier '\"'"},
      {"Width = \\", "Incomplete escape sequence"},
      {"Width = \\x4", "Incomplete escape sequence"},
      {"Width = \\x4g", "Incomplete escape sequence"},
      {"Width = \\q", "Unknown escape identifier", 0x80000013},
      {"Absent = 1", "Absent: GenApi error in line 3: NULL pointer dereferenced", 0x8000002D},
      {"Width[Absent(1)] = 1", "Width: GenApi error in line 3: NULL pointer dereferenced", 0x8000002D, "Width"},
      {"Device = 1", "Device: GenApi error in line 3: NULL pointer dereferenced", 0x8000002D, "Device"},
  };
  Device device(intReg("Width", "0"));
  for (const auto& entry : kCases) {
    const bool isRead = entry.code == 0x8000002D;
    const std::string expected = (isRead ? "" : std::string("3:  \"") + entry.line + "\" : ") + entry.text;
    const std::string text = std::string("; comment\n\n") + entry.line + "\nWidth = 77\n";
    device.memory[0] = 0;
    Heard heard;
    EXPECT_EQ(NMLoadSetString(device.map, text.c_str(), false, &Heard::callback, &heard), 0u);
    EXPECT_EQ(heard.all(), Heard::line(entry.node, entry.code, expected));
    EXPECT_EQ(device.memory[0], 77) << "the lines after it are applied";

    device.memory[0] = 0;
    heard = {.goOn = false, .problems = {}};
    EXPECT_EQ(NMLoadSetString(device.map, text.c_str(), false, &Heard::callback, &heard), entry.code);
    EXPECT_EQ(lastErrorText(), expected);
    EXPECT_EQ(device.memory[0], 0) << "a stop is a stop";
  }
}

TEST(SettingsLoad, ValidationComparesTheTexts) {
  Device device(intReg("Width", "0") + intReg("Fickle", "8", "<Cachable>NoCache</Cachable>") +
                "<Integer Name='Vanishing'><pIsAvailable>Here</pIsAvailable><pValue>Leaver</pValue></Integer>" +
                intReg("Here", "12", "<Cachable>NoCache</Cachable>") + intReg("Leaver", "16"));
  device.memory[12] = 1;
  device.after = [&](int64_t address, bool isWrite) {
    if (isWrite && address == 8) device.memory[8] &= 0xf0;  // the device keeps another value
    if (isWrite && address == 16) device.memory[12] = 0;    // writing makes the feature unavailable
  };
  Heard heard;
  const char* text = "Width = 0x10\nFickle = 33\nVanishing = 1\n";
  ASSERT_EQ(NMLoadSetString(device.map, text, true, &Heard::callback, &heard), 0u);
  EXPECT_EQ(heard.all(),
            "Width 8000002d Width: Validation failed in line 1: Actual value \"16\" != \"0x10\"\n"
            "Fickle 8000002d Fickle: Validation failed in line 2: Actual value \"32\" != \"33\"\n");
  EXPECT_EQ(device.memory[16], 1);

  // Not asked to validate, it reads nothing back.
  device.load(description(intReg("Width", "0")));
  device.connect();
  device.after = nullptr;
  device.accesses = 0;
  ASSERT_EQ(NMLoadSetString(device.map, "Width = 3\n", false, nullptr, nullptr), 0u);
  EXPECT_EQ(device.accesses, 1);
}

TEST(SettingsLoad, SurvivesLongLinesAndHostileBytes) {
  Device device(intReg("Width", "0"));
  const TemporaryFile file;
  {
    std::ofstream out(file.path, std::ios::binary);
    out << "Width = " << std::string(1 << 20, ' ') << "12\r\n";  // 1 MB
    out << std::string("Wi\0dth = 3\n", 11);                     // NUL inside the name
    out << std::string("\0\xff\xfe[[((]\n", 9) << "\r\r\r\n";
    out << "Width[" << std::string(100000, ',') << "] = 4\n";
    out << "Width = \"0x" << std::string(1 << 20, '0') << "\"";  // no line feed at the end
  }
  Heard heard;
  EXPECT_EQ(NMLoadSet(device.map, file.path.c_str(), &Heard::callback, &heard), 0u);
  std::vector<uint32_t> codes;
  for (const auto& problem : heard.problems) codes.push_back(problem.code);
  EXPECT_EQ(codes, (std::vector<uint32_t>{0x8000002D, 0x80000016, 0x80000016, 0x8000002D}));
  EXPECT_EQ(device.memory[0], 12);
}

TEST(SettingsLoad, ACallbackMayReloadOrThrow) {
  Device device(intReg("Width", "0") + intReg("Height", "4"));
  struct Context {
    Device& device;
    int calls = 0;
  } context{device};
  const auto reloading = [](NODE, uint32_t, void* pointer) {
    auto& self = *static_cast<Context*>(pointer);
    if (++self.calls == 1) {
      self.device.load(description(intReg("Width", "0x40")));
      self.device.connect();
    }
    return true;
  };
  // The rest works on the description with which it began, whose port is gone.
  ASSERT_EQ(NMLoadSetString(device.map, "bad\nHeight = 3\nWidth = 4\n", false, reloading, &context), 0u);
  EXPECT_EQ(context.calls, 3);
  EXPECT_EQ(device.memory[0x40], 0);

  const auto throwing = [](NODE, uint32_t, void*) -> bool { throw 5; };
  ASSERT_EQ(NMLoadSetString(device.map, "bad\nWidth = 4\n", false, throwing, nullptr), 0u) << "counts as go on";
  EXPECT_EQ(device.memory[0x40], 4);
}

TEST(SettingsLoad, WritesASelectorOnlyWhenItsValueChanges) {
  Device device(intReg("Selector", "0") + intReg("Width", "4"));
  EXPECT_EQ(NMLoadSetString(device.map, "Width[Selector(1)] = 2\nWidth[Selector(1)] = 3\n", false, nullptr, nullptr),
            0u);
  EXPECT_EQ(device.writes, 3);
}

TEST(SettingsReport, SendsAWarningWhenItGoesOnAndAnErrorWhenItStops) {
  Device device(intReg("Width", "0"));
  const std::string text = "NodeMapSerializer: Absent: Node not present in node map";
  size_t size = 0;
  Heard heard;
  const auto save = [&] {
    return NMSaveSetStringEx(device.map, nullptr, &size, "Absent|Width", &Heard::callback, &heard);
  };
  {
    const Records records;
    EXPECT_EQ(save(), 0u);
    EXPECT_EQ(records.texts(2), std::vector<std::string>{text});
    EXPECT_EQ(records.texts(3), std::vector<std::string>{});
  }
  heard.goOn = false;
  const Records records;
  EXPECT_EQ(save(), 0x8000002Eu);
  EXPECT_EQ(records.texts(2), std::vector<std::string>{});
  EXPECT_EQ(records.texts(3), std::vector<std::string>{text}) << "one record for one failure";
}

// Gives every streamable feature that takes it another value; returns how many took one.
int changeEverything(const oxgenapi::NodeMap& map) {
  int changed = 0;
  for (const std::string& name : map.nodeNames()) {
    try {
      const oxgenapi::Node node = map[name];
      if (!node.infoBoolean(NI_IsStreamable)) continue;
      const std::string before = node.text();
      std::vector<std::string> others{"changed", "1", "0"};
      if (node.type() == NT_Enumeration)
        for (const auto& entry : map.related(node, NL_EnumEntries)) others.push_back(entry.text());
      else if (node.type() == NT_Integer || node.type() == NT_Float)
        others = {node.infoText(NI_Min), node.infoText(NI_Max)};
      changed += std::any_of(others.begin(), others.end(),
                             [&](const std::string& other) { return other != before && node.trySet(other); });
    } catch (const oxgenapi::Error&) {  // not to be read now
    }
  }
  return changed;
}

// Save, change whatever can be changed, load, save again: the same text.
TEST(SettingsRoundTrip, BringsASimulatedCameraBack) {
  OxSimulatedCamera* const camera = OxSimulatedCameraCreate();
  {
    oxgenapi::NodeMap map;
    map.loadText(OxSimulatedCameraDescription(camera));
    map.connect(OxSimulatedCameraRead, OxSimulatedCameraWrite, OxSimulatedCameraAccess, camera);
    map["TestString"].set("plain ASCII");  // bytes above 0x7f do not come back
    map.settings();                        // leaves selectors where saving leaves them
    const std::string before = map.settings();
    ASSERT_GT(std::count(before.begin(), before.end(), '\n'), 100);
    EXPECT_GT(changeEverything(map), 40);
    map.settings();
    ASSERT_NE(map.settings(), before);

    // Lines are applied in their order: the size fits only once the offsets further down are back.
    map.loadSettingsText(before);
    for (const auto& problem : map.loadSettingsText(before, true)) ADD_FAILURE() << problem.what();
    map.settings();
    EXPECT_EQ(map.settings(), before);
  }
  OxSimulatedCameraDestroy(camera);
}
