// Saving feature values as settings text, and applying such text again.
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "CameraUnderTest.h"
#include "MemoryDevice.h"
#include "Records.h"

namespace {

std::string intReg(const std::string& name, const std::string& address, const std::string& more = "") {
  return "<IntReg Name='" + name + "'><Streamable>Yes</Streamable><Address>" + address +
         "</Address><Length>4</Length><AccessMode>RW</AccessMode><pPort>Device</pPort>" + more + "</IntReg>";
}

std::string stringReg(const std::string& name, const std::string& address) {
  return "<StringReg Name='" + name + "'><Streamable>Yes</Streamable><Address>" + address +
         "</Address><Length>64</Length><AccessMode>RW</AccessMode><pPort>Device</pPort></StringReg>";
}

// What a settings callback heard; it answers `goOn`.
struct Heard {
  struct Problem {
    std::string node;  // "-" for a null handle
    uint32_t code;
    std::string text;
  };
  bool goOn = true;
  std::vector<Problem> problems;

  static bool callback(NODE node, uint32_t code, void* self) {
    auto& heard = *static_cast<Heard*>(self);
    std::string text = lastErrorText();
    std::string name = "-";
    if (node != NODE{}) {
      char buffer[64] = {};
      size_t size = sizeof buffer;
      NInfoAsString(node, NI_Name, buffer, size);
      name = buffer;
    }
    heard.problems.push_back({name, code, text});
    return heard.goOn;
  }
};

std::string saved(const MemoryDevice& device, const char* names, Heard* heard = nullptr, uint32_t expected = 0) {
  const auto save = [&](char* buffer, size_t* size) {
    return names != nullptr
               ? NMSaveSetStringEx(device.map, buffer, size, names, heard ? &Heard::callback : nullptr, heard)
               : NMSaveSetString(device.map, buffer, size, heard ? &Heard::callback : nullptr, heard);
  };
  size_t size = 0;
  EXPECT_EQ(save(nullptr, &size), expected) << lastErrorText();
  if (expected != 0) return {};
  if (heard) heard->problems.clear();
  std::string text(size, '\0');
  EXPECT_EQ(save(text.data(), &size), expected);
  EXPECT_EQ(size, text.size());
  text.pop_back();  // room for the zero
  return text;
}

std::string fileText(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  std::stringstream text;
  text << file.rdbuf();
  return text.str();
}

class TemporaryFile {
 public:
  TemporaryFile() : path(testing::TempDir() + "ox_settings_" + std::to_string(::getpid())) {}
  ~TemporaryFile() { std::remove(path.c_str()); }
  const std::string path;
};

}  // namespace

TEST(SettingsSave, WritesOneLineForEachCombinationOfUsableSelectors) {
  MemoryDevice device(
      intReg("Width", "0") +
      // Counted by steps of 2; the range ends before 3 + 2.
      "<Integer "
      "Name='Index'><Value>0</Value><Min>-1</Min><Max>4</Max><Inc>2</Inc><pSelected>Table</pSelected></Integer>"
      // Only the current value of a read-only integer.
      "<Integer Name='Fixed'><ImposedAccessMode>RO</ImposedAccessMode><Value>7</Value><Min>0</Min><Max>9</Max>"
      "<pSelected>Table</pSelected></Integer>"
      // No value at all: left out. Not readable: left out.
      "<Integer Name='Inverted'><Value>0</Value><Min>1</Min><Max>0</Max><pSelected>Table</pSelected></Integer>"
      "<Integer Name='Secret'><ImposedAccessMode>WO</ImposedAccessMode><Value>0</Value>"
      "<pSelected>Table</pSelected></Integer>"
      "<Integer Name='No'><Value>0</Value></Integer>"
      "<Enumeration Name='Channel'><EnumEntry Name='Red'><Value>0</Value></EnumEntry>"
      "<EnumEntry Name='Green'><pIsAvailable>No</pIsAvailable><Value>1</Value></EnumEntry>"
      "<EnumEntry Name='Blue'><Value>2</Value></EnumEntry><Value>0</Value><pSelected>Table</pSelected></Enumeration>"
      "<Integer Name='Table'><Streamable>Yes</Streamable><Value>5</Value></Integer>");
  device.memory[0] = 42;
  EXPECT_EQ(saved(device, nullptr),
            "Width = \"42\"\n"
            "Table[Index(-1),Fixed(7),Channel(Red)] = \"5\"\n"
            "Table[Index(-1),Fixed(7),Channel(Blue)] = \"5\"\n"
            "Table[Index(1),Fixed(7),Channel(Red)] = \"5\"\n"
            "Table[Index(1),Fixed(7),Channel(Blue)] = \"5\"\n"
            "Table[Index(3),Fixed(7),Channel(Red)] = \"5\"\n"
            "Table[Index(3),Fixed(7),Channel(Blue)] = \"5\"\n");
  // Selectors stay where the last combination left them.
  EXPECT_EQ(device.get("Index"), "3");
  EXPECT_EQ(device.get("Channel"), "Blue");
}

TEST(SettingsSave, SkipsCombinationsInWhichTheFeatureIsNotAvailable) {
  MemoryDevice device(
      "<Integer Name='Index'><Value>0</Value><Min>0</Min><Max>2</Max><pSelected>Odd</pSelected>"
      "<pSelected>Never</pSelected></Integer>"
      "<IntSwissKnife Name='IsOdd'><pVariable Name='I'>Index</pVariable><Formula>I % 2</Formula></IntSwissKnife>"
      "<Integer Name='No'><Value>0</Value></Integer>"
      "<Integer Name='Odd'><pIsAvailable>IsOdd</pIsAvailable><Streamable>Yes</Streamable><Value>9</Value></Integer>"
      "<Integer Name='Never'><pIsAvailable>No</pIsAvailable><Streamable>Yes</Streamable><Value>9</Value></Integer>"
      "<Integer Name='Gone'><pIsImplemented>No</pIsImplemented><Streamable>Yes</Streamable><Value>9</Value></Integer>");
  Heard heard;
  EXPECT_EQ(saved(device, nullptr, &heard), "Odd[Index(1)] = \"9\"\n");
  ASSERT_EQ(heard.problems.size(), 2u);
  EXPECT_EQ(heard.problems[0].node, "Never");
  EXPECT_EQ(heard.problems[0].code, 0x8000002Du);
  EXPECT_EQ(heard.problems[0].text, "Never: Node not available in any Selector-combination");
  EXPECT_EQ(heard.problems[1].text, "Gone: Node not available");
}

TEST(SettingsSave, EscapesWhatDoesNotPrint) {
  MemoryDevice device(stringReg("Text", "0"));
  const struct {
    const char* value;
    const char* written;
  } kCases[] = {
      {"a \t\"'\\;=~", "a \t\"'\\;=~"},  // printing characters and white space stay
      {"two\nlines", "two\nlines"},      // even if that splits the line
      {"\x01\x07\x08\x1b\x7f", "\\x01\\a\\b\\x1B\\x7F"},
      {"\xc3\xa9\xff", "\\xFFFFFFC3\\xFFFFFFA9\\xFFFFFFFF"},  // negative as signed bytes
  };
  for (const auto& entry : kCases) {
    ASSERT_EQ(device.set("Text", entry.value), 0u) << lastErrorText();
    EXPECT_EQ(saved(device, "Text"), std::string("Text = \"") + entry.written + "\"\n");
  }
}

TEST(SettingsSave, ReportsMissingNamesAndWrongSelectorsAndGoesOn) {
  MemoryDevice device(intReg("Width", "0") + intReg("Height", "4") +
                      "<Boolean Name='Switch'><Value>true</Value><pSelected>Switched</pSelected></Boolean>" +
                      "<Integer Name='Switched'><Value>1</Value></Integer>");
  Heard heard;
  EXPECT_EQ(saved(device, "|Height||Absent|Switched|Device|Width|", &heard), "Height = \"0\"\nWidth = \"0\"\n");
  const struct {
    const char* node;
    uint32_t code;
    const char* text;
  } kExpected[] = {
      {"-", 0x8000002E, "Absent: Node not present in node map"},
      {"Switched", 0x8000002F, "Switched: Switched: Invalid selector type of node 'Switch'"},
      {"-", 0x8000002E, "Device: Node not present in node map"},
  };
  ASSERT_EQ(heard.problems.size(), std::size(kExpected));
  for (size_t i = 0; i < std::size(kExpected); ++i) {
    EXPECT_EQ(heard.problems[i].node, kExpected[i].node);
    EXPECT_EQ(heard.problems[i].code, kExpected[i].code);
    EXPECT_EQ(heard.problems[i].text, kExpected[i].text);
  }

  heard = {.goOn = false, .problems = {}};
  saved(device, "Absent|Width", &heard, 0x8000002E);
  EXPECT_EQ(lastErrorText(), "Absent: Node not present in node map");
  EXPECT_EQ(heard.problems.size(), 1u);
}

TEST(SettingsSave, AFailingAccessEndsTheFeatureAndAsks) {
  const std::string nodes =
      "<Integer Name='Index'><Value>0</Value><Min>0</Min><Max>9</Max><pSelected>Table</pSelected></Integer>"
      "<IntReg Name='Table'><Streamable>Yes</Streamable><Address>0x100</Address><pIndex Offset='4'>Index</pIndex>"
      "<Length>4</Length><AccessMode>RW</AccessMode><pPort>Device</pPort></IntReg>" +
      intReg("Width", "0");
  for (int64_t failing = 1; failing <= 11; ++failing) {
    MemoryDevice device(nodes);
    device.failingAccess = failing;
    Heard heard;
    size_t size = 0;
    ASSERT_EQ(NMSaveSetString(device.map, nullptr, &size, &Heard::callback, &heard), 0u);
    ASSERT_EQ(heard.problems.size(), 1u) << failing;
    EXPECT_EQ(heard.problems[0].node, failing <= 10 ? "Table" : "Width");
    EXPECT_EQ(heard.problems[0].code, 0x8000002Du);
    EXPECT_NE(heard.problems[0].text.find("port broken"), std::string::npos) << heard.problems[0].text;
  }
}

TEST(SettingsSave, ASelectorWithHugeRangeIsSteppedNotListed) {
  MemoryDevice device(
      "<Integer Name='Last'><Value>0</Value><Min>9223372036854775800</Min><Max>9223372036854775807</Max><Inc>5</Inc>"
      "<pSelected>Few</pSelected></Integer><Integer Name='Few'><Value>1</Value></Integer>"
      "<Integer Name='Huge'><Value>0</Value><Min>-9223372036854775808</Min><Max>9223372036854775807</Max>"
      "<pSelected>Endless</pSelected></Integer>"
      "<IntReg Name='Endless'><Address>0</Address><Length>4</Length><AccessMode>RW</AccessMode><pPort>Device</pPort>"
      "<Cachable>NoCache</Cachable></IntReg>");
  EXPECT_EQ(saved(device, "Few"), "Few[Last(9223372036854775800)] = \"1\"\nFew[Last(9223372036854775805)] = \"1\"\n");
  device.failingAccess = 100;
  Heard heard{.goOn = false, .problems = {}};
  saved(device, "Endless", &heard, 0x8000002D);
}

TEST(SettingsSave, WritesASelectorOnlyWhenItsValueChanges) {
  MemoryDevice device(
      "<IntReg Name='Selector'><Address>0</Address><Length>4</Length><AccessMode>RW</AccessMode>"
      "<pPort>Device</pPort></IntReg>"
      "<Integer Name='Outer'><pValue>Selector</pValue><Min>0</Min><Max>1</Max><pSelected>Table</pSelected></Integer>"
      "<IntReg Name='Position'><Address>4</Address><Length>4</Length><AccessMode>RW</AccessMode>"
      "<pPort>Device</pPort></IntReg>"
      "<Integer Name='Inner'><pValue>Position</pValue><Min>0</Min><Max>4095</Max><pSelected>Table</pSelected></Integer>"
      "<IntReg Name='Table'><Streamable>Yes</Streamable><Address>8</Address><Length>4</Length>"
      "<AccessMode>RW</AccessMode><pPort>Device</pPort></IntReg>");
  size_t size = 0;
  ASSERT_EQ(NMSaveSetString(device.map, nullptr, &size, nullptr, nullptr), 0u);
  // 8192 combinations: every step writes the inner selector, only one the outer; it starts where it has to.
  EXPECT_EQ(device.writes, 8192 - 1 + 1);
}

TEST(SettingsSave, FillsBuffersByTheirOwnRule) {
  MemoryDevice device(intReg("Width", "0"));
  const std::string text = "Width = \"0\"\n";
  size_t size = 99;
  ASSERT_EQ(NMSaveSetString(device.map, nullptr, &size, nullptr, nullptr), 0u);
  EXPECT_EQ(size, text.size() + 1);
  for (const size_t room : {size_t{0}, size_t{1}, size_t{5}, text.size(), text.size() + 1, size_t{40}}) {
    std::string narrow(64, '#');
    size = room;
    ASSERT_EQ(NMSaveSetString(device.map, narrow.data(), &size, nullptr, nullptr), 0u);
    EXPECT_EQ(size, std::min(room, text.size() + 1));
    const size_t copied = std::min(room, text.size());
    EXPECT_EQ(narrow, text.substr(0, copied) + std::string(64 - copied, '#'));

    std::wstring wide(64, L'#');
    size = room;
    ASSERT_EQ(NMSaveSetStringW(device.map, wide.data(), &size, nullptr, nullptr), 0u);
    EXPECT_EQ(size, std::min(room, text.size() + 1));
    std::wstring expected(text.begin(), text.begin() + static_cast<ptrdiff_t>(copied));
    if (room > text.size()) expected.push_back(L'\0');
    EXPECT_EQ(wide.substr(0, expected.size()), expected);
    EXPECT_EQ(wide[63], L'#');
  }
  EXPECT_EQ(NMSaveSetString(device.map, nullptr, nullptr, nullptr, nullptr), 0x80000002u);
}

TEST(SettingsSave, WidensTheTextByteByByte) {
  MemoryDevice device(intReg("Breite\xc3\xa4", "0"));
  wchar_t buffer[32] = {};
  size_t size = 32;
  ASSERT_EQ(NMSaveSetStringExW(device.map, buffer, &size, L"Breite\u00e4", nullptr, nullptr), 0u) << lastErrorText();
  EXPECT_EQ(std::wstring(buffer), L"Breite\u00c3\u00a4 = \"0\"\n");
}

TEST(SettingsFile, AFileThatCannotTakeEveryByteIsNotSaved) {
  MemoryDevice device(intReg("Width", "0"));
  EXPECT_EQ(NMSaveSet(device.map, "/dev/full", nullptr, nullptr), 0x80000003u);
  EXPECT_EQ(lastErrorText(), "Filename not writable");
  EXPECT_EQ(NMSaveSet(device.map, "/nowhere/set.txt", nullptr, nullptr), 0x80000003u);
  EXPECT_EQ(lastErrorText(), "Filename not readable");

  const TemporaryFile file;
  rlimit former{};
  getrlimit(RLIMIT_FSIZE, &former);
  rlimit tight = former;
  tight.rlim_cur = 5;
  setrlimit(RLIMIT_FSIZE, &tight);  // past it the system would end the process with a signal
  const uint32_t result = NMSaveSet(device.map, file.path.c_str(), nullptr, nullptr);
  setrlimit(RLIMIT_FSIZE, &former);
  EXPECT_EQ(result, 0x80000003u);
  EXPECT_EQ(lastErrorText(), "Filename not writable");
}

TEST(SettingsFile, OpensNamesAsGivenInBothForms) {
  MemoryDevice device(intReg("Width", "0") + intReg("Height", "4"));
  const TemporaryFile file;
  const std::wstring wide(file.path.begin(), file.path.end());
  ASSERT_EQ(NMSaveSetEx(device.map, file.path.c_str(), "Height|Width", nullptr, nullptr), 0u);
  EXPECT_EQ(fileText(file.path), "Height = \"0\"\nWidth = \"0\"\n");
  ASSERT_EQ(device.set("Width", "5"), 0u);
  ASSERT_EQ(NMSaveSetW(device.map, wide.c_str(), nullptr, nullptr), 0u);
  EXPECT_EQ(fileText(file.path), "Width = \"5\"\nHeight = \"0\"\n");

  ASSERT_EQ(device.set("Width", "6"), 0u);
  ASSERT_EQ(NMLoadSet(device.map, file.path.c_str(), nullptr, nullptr), 0u);
  EXPECT_EQ(device.get("Width"), "5");
  ASSERT_EQ(device.set("Width", "6"), 0u);
  ASSERT_EQ(NMLoadSetExW(device.map, wide.c_str(), true, nullptr, nullptr), 0u);
  EXPECT_EQ(device.get("Width"), "5");

  std::remove(file.path.c_str());
  for (const char* names : {static_cast<const char*>(nullptr), "", "||"}) {
    EXPECT_EQ(NMSaveSetEx(device.map, file.path.c_str(), names, nullptr, nullptr), 0x80000002u);
    EXPECT_EQ(lastErrorText(), "No feature names");
  }
  EXPECT_FALSE(std::filesystem::exists(file.path));
  const std::string folder = testing::TempDir();
  for (const char* path : {file.path.c_str(), folder.c_str(), "", static_cast<const char*>(nullptr)}) {
    EXPECT_EQ(NMLoadSet(device.map, path, nullptr, nullptr), 0x80000003u);
    EXPECT_EQ(lastErrorText(), "Filename not readable");
  }
  EXPECT_EQ(NMLoadSetString(device.map, nullptr, false, nullptr, nullptr), 0x80000003u);
  EXPECT_EQ(lastErrorText(), "String not readable");
}

TEST(SettingsExports, RefuseBadHandlesAndEmptyNodeMaps) {
  size_t size = 0;
  EXPECT_EQ(NMSaveSet(NODEMAP{}, "x", nullptr, nullptr), 0x8000001Du);
  EXPECT_EQ(lastErrorText(), "Invalid NODEMAP handle");
  NODEMAP empty{};
  ASSERT_EQ(CreateNodeMap(empty), 0u);
  EXPECT_EQ(NMSaveSetString(empty, nullptr, &size, nullptr, nullptr), 0x8000001Eu);
  EXPECT_EQ(lastErrorText(), "No nodemap loaded.");
  EXPECT_EQ(NMLoadSetString(empty, "", false, nullptr, nullptr), 0x8000001Eu);
  EXPECT_EQ(lastErrorText(), "No nodemap loaded");
  release(empty);
  EXPECT_EQ(NMLoadSetString(empty, "", false, nullptr, nullptr), 0x8000001Du);
}

TEST(SettingsLoad, AcceptsAllSpellings) {
  const struct {
    const char* line;
    const char* value;  // of the text feature afterwards
  } kCases[] = {
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
  for (const auto& entry : kCases) {
    MemoryDevice device(stringReg("Text", "0") + intReg("Index", "0x100") + intReg("Other", "0x104"));
    ASSERT_EQ(device.set("Text", "start"), 0u);
    Heard heard;
    EXPECT_EQ(NMLoadSetString(device.map, entry.line, false, &Heard::callback, &heard), 0u);
    EXPECT_TRUE(heard.problems.empty()) << entry.line << ": " << heard.problems[0].text;
    EXPECT_EQ(device.get("Text"), entry.value) << entry.line;
  }
}

TEST(SettingsLoad, ReportsEachBadLineWithItsNumber) {
  const struct {
    const char* line;
    const char* node;
    uint32_t code;
    const char* text;
  } kCases[] = {
      {"Width", "-", 0x80000016, "3:  \"Width\" : Format error"},
      {" = 5", "-", 0x80000016, "3:  \" = 5\" : Format error"},
      {"A[B(1) = 5", "-", 0x80000016, "3:  \"A[B(1) = 5\" : Missing ']' for selector list"},
      {"A[] = 5", "-", 0x80000016, "3:  \"A[] = 5\" : Missing selector value start identifier '('"},
      {"A[B] = 5", "-", 0x80000016, "3:  \"A[B] = 5\" : Missing selector value start identifier '('"},
      {"A[B(1,C(2)] = 5", "-", 0x80000016, "3:  \"A[B(1,C(2)] = 5\" : Missing selector value end identifier ')'"},
      {"Width = \"2", "-", 0x80000016, "3:  \"Width = \"2\" : Missing value end identifier '\"'"},
      {"Width = \"", "-", 0x80000016, "3:  \"Width = \"\" : Missing value end identifier '\"'"},
      {"Width = \\", "-", 0x80000016, "3:  \"Width = \\\" : Incomplete escape sequence"},
      {"Width = \\x4", "-", 0x80000016, "3:  \"Width = \\x4\" : Incomplete escape sequence"},
      {"Width = \\x4g", "-", 0x80000016, "3:  \"Width = \\x4g\" : Incomplete escape sequence"},
      {"Width = \\q", "-", 0x80000013, "3:  \"Width = \\q\" : Unknown escape identifier"},
      {"Absent = 1", "-", 0x8000002D, "Absent: GenApi error in line 3: NULL pointer dereferenced"},
      {"Width[Absent(1)] = 1", "Width", 0x8000002D, "Width: GenApi error in line 3: NULL pointer dereferenced"},
      {"Device = 1", "Device", 0x8000002D, "Device: GenApi error in line 3: NULL pointer dereferenced"},
  };
  MemoryDevice device(intReg("Width", "0"));
  for (const auto& entry : kCases) {
    const std::string text = std::string("; comment\n\n") + entry.line + "\nWidth = 77\n";
    device.memory[0] = 0;
    Heard heard;
    EXPECT_EQ(NMLoadSetString(device.map, text.c_str(), false, &Heard::callback, &heard), 0u);
    ASSERT_EQ(heard.problems.size(), 1u) << entry.line;
    EXPECT_EQ(heard.problems[0].node, entry.node) << entry.line;
    EXPECT_EQ(heard.problems[0].code, entry.code) << entry.line;
    EXPECT_EQ(heard.problems[0].text, entry.text);
    EXPECT_EQ(device.memory[0], 77) << "the lines after it are applied";

    device.memory[0] = 0;
    heard = {.goOn = false, .problems = {}};
    EXPECT_EQ(NMLoadSetString(device.map, text.c_str(), false, &Heard::callback, &heard), entry.code);
    EXPECT_EQ(lastErrorText(), entry.text);
    EXPECT_EQ(device.memory[0], 0) << "a stop is a stop";
  }
}

TEST(SettingsLoad, ValidationComparesTheTexts) {
  MemoryDevice device(intReg("Width", "0") +
                      "<IntReg Name='Fickle'><Address>8</Address><Length>4</Length><AccessMode>RW</AccessMode>"
                      "<pPort>Device</pPort><Cachable>NoCache</Cachable></IntReg>"
                      "<Integer Name='Vanishing'><pIsAvailable>Here</pIsAvailable><pValue>Leaver</pValue></Integer>"
                      "<IntReg Name='Here'><Address>12</Address><Length>4</Length><AccessMode>RO</AccessMode>"
                      "<pPort>Device</pPort><Cachable>NoCache</Cachable></IntReg>"
                      "<IntReg Name='Leaver'><Address>16</Address><Length>4</Length><AccessMode>RW</AccessMode>"
                      "<pPort>Device</pPort></IntReg>");
  device.memory[12] = 1;
  device.after = [&](int64_t address, bool isWrite) {
    if (isWrite && address == 8) device.memory[8] &= 0xf0;  // the device keeps another value
    if (isWrite && address == 16) device.memory[12] = 0;    // writing makes the feature unavailable
  };
  Heard heard;
  const char* text = "Width = 0x10\nFickle = 33\nVanishing = 1\n";
  ASSERT_EQ(NMLoadSetString(device.map, text, true, &Heard::callback, &heard), 0u);
  ASSERT_EQ(heard.problems.size(), 2u);
  EXPECT_EQ(heard.problems[0].text, "Width: Validation failed in line 1: Actual value \"16\" != \"0x10\"");
  EXPECT_EQ(heard.problems[1].node, "Fickle");
  EXPECT_EQ(heard.problems[1].code, 0x8000002Du);
  EXPECT_EQ(heard.problems[1].text, "Fickle: Validation failed in line 2: Actual value \"32\" != \"33\"");
  EXPECT_EQ(device.memory[16], 1);

  // The twelfth access is the one that reads the feature back.
  device.load(intReg("Width", "0"));
  device.after = nullptr;
  device.accesses = 0;
  ASSERT_EQ(NMLoadSetString(device.map, "Width = 3\n", false, nullptr, nullptr), 0u);
  EXPECT_EQ(device.accesses, 1);
}

TEST(SettingsLoad, SurvivesLongLinesAndHostileBytes) {
  MemoryDevice device(intReg("Width", "0"));
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
  ASSERT_EQ(heard.problems.size(), 4u);
  EXPECT_EQ(heard.problems[0].code, 0x8000002Du);
  EXPECT_EQ(heard.problems[1].code, 0x80000016u);
  EXPECT_EQ(heard.problems[2].code, 0x80000016u);
  EXPECT_EQ(heard.problems[3].code, 0x8000002Du);
  EXPECT_EQ(device.memory[0], 12);
}

TEST(SettingsLoad, ACallbackMayReloadOrThrow) {
  MemoryDevice device(intReg("Width", "0") + intReg("Height", "4"));
  struct Context {
    MemoryDevice& device;
    int calls = 0;
  } context{device};
  const auto reloading = [](NODE, uint32_t, void* pointer) {
    auto& self = *static_cast<Context*>(pointer);
    if (++self.calls == 1) self.device.load(intReg("Width", "0x40"));
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

TEST(SettingsReport, SendsAWarningWhenItGoesOnAndAnErrorWhenItStops) {
  MemoryDevice device(intReg("Width", "0"));
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

TEST(SettingsReport, SendsOneRecordForACallThatCannotBegin) {
  NODEMAP empty{};
  ASSERT_EQ(CreateNodeMap(empty), 0u);
  size_t size = 0;
  const Records records;
  EXPECT_EQ(NMSaveSetString(empty, nullptr, &size, nullptr, nullptr), 0x8000001Eu);
  EXPECT_EQ(NMLoadSetString(empty, "", false, nullptr, nullptr), 0x8000001Eu);
  EXPECT_EQ(NMLoadSet(empty, "/nowhere", nullptr, nullptr), 0x80000003u);
  const std::vector<std::string> texts = records.texts();
  ASSERT_EQ(texts.size(), 3u);
  EXPECT_EQ(texts[0], "NodeMapSerializer::SaveSet: No nodemap loaded.");
  EXPECT_EQ(texts[1], "NodeMapSerializer::LoadSet: No nodemap loaded");
  EXPECT_NE(texts[2].find(" Filename=\"/nowhere\""), std::string::npos) << texts[2];
  EXPECT_NE(texts[2].find("): Filename not readable"), std::string::npos) << texts[2];
  release(empty);
}

// Save, change whatever can be changed, load, save again: the same text.
TEST(SettingsRoundTrip, BringsASimulatedCameraBack) {
  CameraUnderTest camera;
  ASSERT_EQ(NMLoadSetString(camera.map, "TestString = plain ASCII", true, nullptr, nullptr), 0u)
      << "bytes above 0x7f do not come back";
  camera.save();  // leaves selectors where saving leaves them
  const std::string before = camera.save();
  ASSERT_GT(std::count(before.begin(), before.end(), '\n'), 100);

  EXPECT_GT(camera.changeEverything(), 40);
  camera.save();
  ASSERT_NE(camera.save(), before);

  // Lines are applied in their order: the size fits only once the offsets further down are back. So it takes two loads.
  Heard heard;
  ASSERT_EQ(NMLoadSetString(camera.map, before.c_str(), false, nullptr, nullptr), 0u);
  ASSERT_EQ(NMLoadSetString(camera.map, before.c_str(), true, &Heard::callback, &heard), 0u);
  for (const auto& problem : heard.problems) EXPECT_EQ(problem.node, "ChunkEnable") << problem.text;  // one is fixed
  camera.save();
  EXPECT_EQ(camera.save(), before);
}
