// Saving feature values as settings text.
#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <new>

#include <gmock/gmock.h>

#include "SettingsBench.h"

TEST(SettingsSave, WritesOneLineForEachCombinationOfUsableSelectors) {
  Device device(
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
  Device device(
      "<Integer Name='Index'><Value>0</Value><Min>0</Min><Max>2</Max><pSelected>Odd</pSelected>"
      "<pSelected>Never</pSelected></Integer>"
      "<IntSwissKnife Name='IsOdd'><pVariable Name='I'>Index</pVariable><Formula>I % 2</Formula></IntSwissKnife>"
      "<Integer Name='No'><Value>0</Value></Integer>"
      "<Integer Name='Odd'><pIsAvailable>IsOdd</pIsAvailable><Streamable>Yes</Streamable><Value>9</Value></Integer>"
      "<Integer Name='Never'><pIsAvailable>No</pIsAvailable><Streamable>Yes</Streamable><Value>9</Value></Integer>"
      "<Integer Name='Gone'><pIsImplemented>No</pIsImplemented><Streamable>Yes</Streamable><Value>9</Value></Integer>");
  Heard heard;
  EXPECT_EQ(saved(device, nullptr, &heard), "Odd[Index(1)] = \"9\"\n");
  EXPECT_EQ(heard.all(),
            "Never 8000002d Never: Node not available in any Selector-combination\n"
            "Gone 8000002d Gone: Node not available\n");
}

TEST(SettingsSave, EscapesWhatDoesNotPrint) {
  Device device(stringReg("Text", "0"));
  const std::pair<const char*, const char*> kCases[] = {
      {"a \t\"'\\;=~", "a \t\"'\\;=~"},  // printing characters and white space stay
      {"two\nlines", "two\nlines"},      // even if that splits the line
      {"\x01\x07\x08\x1b\x7f", "\\x01\\a\\b\\x1B\\x7F"},
      {"\xc3\xa9\xff", "\\xFFFFFFC3\\xFFFFFFA9\\xFFFFFFFF"},  // negative as signed bytes
  };
  for (const auto& [value, written] : kCases) {
    ASSERT_EQ(device.set("Text", value), 0u) << lastErrorText();
    EXPECT_EQ(saved(device, "Text"), std::string("Text = \"") + written + "\"\n");
  }
}

TEST(SettingsSave, ReportsMissingNamesAndWrongSelectorsAndGoesOn) {
  Device device(intReg("Width", "0") + intReg("Height", "4") +
                "<Boolean Name='Switch'><Value>true</Value><pSelected>Switched</pSelected></Boolean>" +
                "<Integer Name='Switched'><Value>1</Value></Integer>");
  Heard heard;
  EXPECT_EQ(saved(device, "|Height||Absent|Switched|Device|Width|", &heard), "Height = \"0\"\nWidth = \"0\"\n");
  EXPECT_EQ(heard.all(),
            "- 8000002e Absent: Node not present in node map\n"
            "Switched 8000002f Switched: Switched: Invalid selector type of node 'Switch'\n"
            "- 8000002e Device: Node not present in node map\n");

  heard = {.goOn = false, .problems = {}};
  saved(device, "Absent|Width", &heard, 0x8000002E);
  EXPECT_EQ(lastErrorText(), "Absent: Node not present in node map");
  EXPECT_EQ(heard.problems.size(), 1u);
}

// An integer that cannot be written keeps its value; an enumeration is visited all the same and fails at the node.
TEST(SettingsSave, ALockedEnumerationSelectorFailsAtTheFirstEntryThatIsNotItsOwn) {
  for (const int current : {0, 1}) {
    Device device(
        "<Enumeration Name='Mode'><pIsLocked>Lock</pIsLocked><EnumEntry Name='A'><Value>0</Value></EnumEntry>"
        "<EnumEntry Name='B'><Value>1</Value></EnumEntry><Value>" +
        std::to_string(current) +
        "</Value><pSelected>Gain</pSelected></Enumeration><Integer Name='Lock'><Value>1</Value></Integer>"
        "<Integer Name='Index'><pIsLocked>Lock</pIsLocked><Value>5</Value><Min>0</Min><Max>9</Max>"
        "<pSelected>Gain</pSelected></Integer><Integer Name='Gain'><Value>3</Value></Integer>");
    Heard heard;
    const std::string text = saved(device, "Gain", &heard);
    EXPECT_EQ(text.empty(), current == 1) << text;
    if (current == 0) {
      EXPECT_NE(text.find("Mode(A)"), std::string::npos) << text;
      EXPECT_NE(text.find("Index(5)"), std::string::npos) << text;
    }
    EXPECT_THAT(heard.all(), testing::MatchesRegex("Gain 8000002d [^\n]*\n"));

    heard.problems.clear();
    const char* line = current == 0 ? "Gain[Mode(B)] = 4" : "Gain[Mode(A)] = 4";
    EXPECT_EQ(NMLoadSetString(device.map, line, false, &Heard::callback, &heard), 0u);
    EXPECT_THAT(heard.all(), testing::MatchesRegex("Gain .*Gain: GenApi error in line 1: [^\n]*\n"));
    EXPECT_EQ(device.get("Gain"), "3") << "not written for another selector value";
  }
}

TEST(SettingsSave, AFailingAccessEndsTheFeatureAndAsks) {
  const std::string nodes =
      "<Integer Name='Index'><Value>0</Value><Min>0</Min><Max>9</Max><pSelected>Table</pSelected></Integer>" +
      intReg("Table", "0x100", "<pIndex Offset='4'>Index</pIndex>") + intReg("Width", "0");
  for (int64_t failing = 1; failing <= 11; ++failing) {
    Device device(nodes);
    device.failingAccess = failing;
    Heard heard;
    size_t size = 0;
    ASSERT_EQ(NMSaveSetString(device.map, nullptr, &size, &Heard::callback, &heard), 0u);
    ASSERT_EQ(heard.problems.size(), 1u) << failing;
    EXPECT_THAT(heard.all(), testing::MatchesRegex((failing <= 10 ? "Table" : "Width") +
                                                   std::string(" 8000002d .*port broken.*\n")));
  }
}

// A register that answers garbage makes a range without an end: that feature fails, the rest is saved.
TEST(SettingsSave, CountsTheCombinationsOfAFeatureBeforeItVisitsThem) {
  struct Selector {
    const char *name, *selected, *minimum, *maximum, *increment = "1";
  };
  constexpr const char* kLargest = "9223372036854775807";
  std::string nodes = integerRegister("DeadReg", 0, "<Sign>Unsigned</Sign>");
  for (const Selector& each : {Selector{"Last", "Few", "9223372036854775800", kLargest, "5"},
                               {"A", "Most", "0", "511"},
                               {"B", "Most", "1", "512"},
                               {"C", "OneMore", "0", "262144"},
                               {"D", "All", "-9223372036854775808", kLargest},
                               {"E", "All", "0", "9"}}) {
    nodes += std::string("<Integer Name='") + each.name + "'><Value>0</Value><Min>" + each.minimum + "</Min><Max>" +
             each.maximum + "</Max><Inc>" + each.increment + "</Inc><pSelected>" + each.selected +
             "</pSelected></Integer>";
  }
  nodes += "<Integer Name='F'><Value>0</Value><Min>0</Min><pMax>DeadReg</pMax><pSelected>Dead</pSelected></Integer>";
  for (const char* name : {"Few", "OneMore", "All", "Dead", "Rest"}) nodes += intReg(name, "4");
  Device device(nodes + intReg("Most", "0x100", "<Cachable>NoCache</Cachable>"));
  std::fill_n(device.memory.begin(), 4, uint8_t{0xff});
  device.failingAccess = 100;  // as many combinations as are allowed are visited: up to here
  Heard heard;
  std::string text(500, '\0');
  size_t size = text.size();
  ASSERT_OK(NMSaveSetString(device.map, text.data(), &size, &Heard::callback, &heard));
  EXPECT_THAT(text, testing::StartsWith("Few[Last(9223372036854775800)] = \"0\"\n"
                                        "Few[Last(9223372036854775805)] = \"0\"\n"
                                        "Rest = \"0\"\nMost[A(0),B(1)] = \"0\"\nMost[A(0),B(2)] = \"0\"\n"));
  EXPECT_EQ(heard.all(),
            "OneMore 8000002d OneMore: 262145 selector combinations, more than 262144\n"
            "All 8000002d All: 18446744073709551615 selector combinations, more than 262144\n"
            "Dead 8000002d Dead: 4294967296 selector combinations, more than 262144\n"
            "Most 8000002d Most: port broken\n");
}

TEST(SettingsSave, MemoryThatRunsOutForOneFeatureIsToldAsSuch) {
  Device device(intReg("Width", "0") + intReg("Height", "4"));
  device.after = [](int64_t address, bool) {
    if (address == 0) throw std::bad_alloc();
  };
  Heard heard;
  EXPECT_EQ(saved(device, nullptr, &heard), "Height = \"0\"\n");
  EXPECT_EQ(heard.all(), "Width 80000005 Width: Unspecified error\n");
}

TEST(SettingsSave, WritesASelectorOnlyWhenItsValueChanges) {
  Device device(
      integerRegister("Selector", 0) +
      "<Integer Name='Outer'><pValue>Selector</pValue><Min>0</Min><Max>1</Max><pSelected>Table</pSelected></Integer>" +
      integerRegister("Position", 4) +
      "<Integer "
      "Name='Inner'><pValue>Position</pValue><Min>0</Min><Max>4095</Max><pSelected>Table</pSelected></Integer>" +
      intReg("Table", "8"));
  size_t size = 0;
  ASSERT_EQ(NMSaveSetString(device.map, nullptr, &size, nullptr, nullptr), 0u);
  // 8192 combinations: every step writes the inner selector, only one the outer; it starts where it has to.
  EXPECT_EQ(device.writes, 8192 - 1 + 1);
  // What depends on the selectors is read for each combination, the selectors only at the start.
  EXPECT_EQ(device.accesses - device.writes, 8192 + 2);
}

TEST(SettingsSave, FillsBuffersByTheirOwnRule) {
  Device device(intReg("Width", "0"));
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

  // Widened byte by byte.
  Device umlaut(intReg("Breite\xc3\xa4", "0"));
  wchar_t buffer[32] = {};
  size = 32;
  ASSERT_EQ(NMSaveSetStringExW(umlaut.map, buffer, &size, L"Breite\u00e4", nullptr, nullptr), 0u) << lastErrorText();
  EXPECT_EQ(std::wstring(buffer), L"Breite\u00c3\u00a4 = \"0\"\n");
}

TEST(SettingsFile, AFileThatCannotTakeEveryByteIsNotSaved) {
  Device device(intReg("Width", "0"));
  EXPECT_FAILS(NMSaveSet(device.map, "/dev/full", nullptr, nullptr), 0x80000003, "Filename not writable");
  EXPECT_FAILS(NMSaveSet(device.map, "/nowhere/set.txt", nullptr, nullptr), 0x80000003, "Filename not readable");

  const TemporaryFile file;
  const uint32_t result = withFileLimit(5, [&] { return NMSaveSet(device.map, file.path.c_str(), nullptr, nullptr); });
  EXPECT_FAILS(result, 0x80000003, "Filename not writable");
}

TEST(SettingsFile, ALineWithoutAnEndIsRefused) {
#ifdef __SANITIZE_ADDRESS__
  GTEST_SKIP() << "the release build takes a second for it";
#endif
  Device device(intReg("Width", "0"));
  const TemporaryFile file("Width = 1\n");
  std::filesystem::resize_file(file.path, (256 << 20) + 20);  // zeros that take no room on the disk
  EXPECT_FAILS(NMLoadSet(device.map, file.path.c_str(), nullptr, nullptr), 0x80000016, "line exceeds 268435456 bytes");
  EXPECT_EQ(device.memory[0], 1);
}
