// What can be asked about a node: every item of every kind of node, in every form.
#include <array>

#include "Device.h"

namespace {

const char* const kNodes = R"(
  <Boolean Name="Bool"><Streamable>Yes</Streamable><Value>true</Value></Boolean>
  <Command Name="Go"><pValue>Reg</pValue><CommandValue>1</CommandValue><PollingTime>40</PollingTime></Command>
  <Enumeration Name="Choice"><Visibility>Guru</Visibility><IsDeprecated>Yes</IsDeprecated>
    <EnumEntry Name="A"><ToolTip>first</ToolTip><DisplayName>Entry A</DisplayName><Value>3</Value></EnumEntry>
    <EnumEntry Name="B"><Visibility>Guru</Visibility><Value>4</Value></EnumEntry><Value>3</Value></Enumeration>
  <Float Name="Float"><Value>1.5</Value><Min>-2.5</Min><Max>8.75</Max><Inc>0.5</Inc><Unit>us</Unit>
    <Representation>Logarithmic</Representation></Float>
  <Float Name="Steps"><Value>1.5</Value></Float>
  <Integer Name="Int"><ToolTip>tip</ToolTip><Description>long</Description><DisplayName>An int</DisplayName>
    <Visibility>Expert</Visibility><ImposedAccessMode>RO</ImposedAccessMode><pAlias>Float</pAlias>
    <Streamable>Yes</Streamable><Value>6</Value><Min>2</Min><Max>20</Max><Inc>4</Inc><Unit>px</Unit>
    <Representation>HexNumber</Representation></Integer>
  <String Name="Text"><EventID>9A01</EventID><Value>abc</Value></String>
  <Register Name="Block"><Visibility>Invisible</Visibility><Address>0x20</Address><Length>8</Length>
    <AccessMode>RO</AccessMode><pPort>Device</pPort><Cachable>NoCache</Cachable></Register>
  <Node Name="Plain"/>
  <IntReg Name="Reg"><Address>0x10</Address><Length>4</Length><AccessMode>WO</AccessMode><pPort>Device</pPort>
    <Cachable>WriteAround</Cachable><PollingTime>250</PollingTime><Sign>Unsigned</Sign>
    <Endianess>LittleEndian</Endianess><Representation>MACAddress</Representation></IntReg>
  <Integer Name="Zero"><Value>0</Value><Representation>IPV4Address</Representation></Integer>
  <Integer Name="Absent"><pIsImplemented>Zero</pIsImplemented><Value>1</Value></Integer>
  <Integer Name="Locked"><pIsAvailable>Zero</pIsAvailable><Value>1</Value></Integer>
  <FloatReg Name="FReg"><Address>0x40</Address><Length>8</Length><AccessMode>RW</AccessMode><pPort>Device</pPort></FloatReg>)";

// The four forms of an answer: boolean, integer, float, text; a refusal as its text after "!".
using Forms = std::array<std::string, 4>;

// One kind of node per column.
constexpr std::array kColumns = {"Bool",  "Root",  "Go",  "Choice", "EnumEntry_Choice_A",
                                 "Float", "Steps", "Int", "Text",   "Device",
                                 "Block", "Plain", "Reg"};
constexpr size_t kEntryColumn = 4;

// A cell: "=<text>" for text; "<integer> <text>", or the integer alone where the text is its digits;
// "<integer>/<float> <text>" where the two differ; "-" where the kind of node has no such item.
struct Row {
  uint32_t info;
  const char* name;
  std::array<const char*, kColumns.size()> cells;
};

constexpr const char* kMin64 = "-9223372036854775808/-1.7976931348623157e308 -1.79769e+308";
constexpr const char* kMax64 = "9223372036854775807/1.7976931348623157e308 1.79769e+308";
constexpr const char* kRw = "4 Read/Write";
constexpr const char* kRo = "2 Read Only";
constexpr const char* kWo = "3 Write Only";
constexpr const char* kThrough = "1 Write Through";
constexpr const char* kAround = "2 Write Around";
constexpr const char* kBeg = "0 Beginner";
constexpr const char* kNoIncrement = "no increment";

// clang-format off
const Row kRows[] = {
  //                            Bool     Root      Go      Choice   Entry     Float  Steps     Int     Text    Device   Block    Plain   Reg
  {0, "NI_Name",             {"=Bool", "=Root", "=Go",  "=Choice", "=EnumEntry_Choice_A", "=Float", "=Steps", "=Int", "=Text", "=Device", "=Block", "=Plain", "=Reg"}},
  {1, "NI_DisplayName",      {"=Bool", "=Root", "=Go",  "=Choice", "=Entry A", "=Float", "=Steps", "=An int", "=Text", "=Device", "=Block", "=Plain", "=Reg"}},
  {2, "NI_AccessMode",       {kRw,     kRo,     kWo,     kRw,     kRo,     kRw,     kRw,     kRo,     kRw,     kRw,     kRo,     kRw,     kWo}},
  {3, "NI_Max",              {"-",     "-",     "-",     "-",     "-",     "8/8.75 8.75", kMax64, "20", "-",   "-",     "-",     "-",     "4294967295"}},
  {4, "NI_Min",              {"-",     "-",     "-",     "-",     "-",     "-2/-2.5 -2.5", kMin64, "2", "-",   "-",     "-",     "-",     "0"}},
  {5, "NI_Increment",        {"-",     "-",     "-",     "-",     "-",     "0/0.5", kNoIncrement, "4", "-",    "-",     "-",     "-",     "1"}},
  {6, "NI_NumEnumEntries",   {"-",     "-",     "-",     "2",     "-",     "-",     "-",     "-",     "-",     "-",     "-",     "-",     "-"}},
  {7, "NI_IsStreamable",     {"1",     "0",     "0",     "0",     "0",     "0",     "0",     "1",     "0",     "0",     "0",     "0",     "0"}},
  {8, "NI_CachingMode",      {kThrough, kThrough, kAround, kThrough, kThrough, kAround, kAround, kThrough, kThrough, kThrough, "0 No Cache", kThrough, kAround}},
  {9, "NI_ToolTip",          {"=",     "=",     "=",     "=",     "=first", "=",    "=",     "=tip",  "=",     "=",     "=",     "=",     "="}},
  {10, "NI_Description",     {"=",     "=",     "=",     "=",     "=",     "=",     "=",     "=long", "=",     "=",     "=",     "=",     "="}},
  {11, "NI_Visibility",      {kBeg, "1 Expert", kBeg, "2 Guru",   kBeg,    kBeg,    kBeg, "1 Expert", kBeg,    kBeg, "-1 Invisible", kBeg, kBeg}},
  {12, "NI_PollingTime",     {"-1",    "-1",    "40",    "-1",    "-1",    "-1",    "-1",    "-1",    "-1",    "-1",    "-1",    "-1",    "250"}},
  {13, "NI_EventID",         {"=",     "=",     "=",     "=",     "=",     "=",     "=",     "=",     "=9A01", "=",     "=",     "=",     "="}},
  {14, "NI_RegisterAddress", {"-",     "-",     "-",     "-",     "-",     "-",     "-",     "-",     "-",     "-",     "32",    "-",     "-"}},
  {15, "NI_RegisterLength",  {"-",     "-",     "-",     "-",     "-",     "-",     "-",     "-",     "-",     "-",     "8",     "-",     "-"}},
  {16, "NI_Representation",  {"-",     "-",     "-",     "-",     "-",     "1 Logarithmic", "3 PureNumber", "4 HexNumber", "-", "-", "-", "-", "6 Undefined"}},
  {17, "NI_Unit",            {"-",     "-",     "-",     "-",     "-",     "=us",   "=",     "=px",   "-",     "-",     "-",     "-",     "="}},
  {18, "NI_AliasName",       {"=",     "=",     "=",     "=",     "=",     "=",     "=",     "=Float", "=",    "=",     "=",     "=",     "="}},
  {19, "NI_IsDeprecated",    {"0",     "0",     "0",     "1",     "0",     "0",     "0",     "0",     "0",     "0",     "0",     "0",     "0"}},
  {20, "NI_IsFeature",       {"0",     "0",     "0",     "1",     "0",     "0",     "0",     "1",     "0",     "0",     "0",     "0",     "0"}},
};
// clang-format on

// What a cell says about each form.
Forms formsOf(const Row& row, const std::string& cell) {
  const bool isUnit = row.info == NI_Unit;
  const bool isIncrement = row.info == NI_Increment;
  Forms forms;
  if (cell[0] == '=' || isUnit) {
    forms = {"!Strings can not be converted to boolean", "!Strings can not be converted to integer",
             "!Strings can not be converted to float", cell[0] == '=' ? cell.substr(1) : ""};
    if (cell == "-") forms[3] = "!Type does not support NI_Unit";
  } else if (cell == "-" || cell == kNoIncrement) {
    forms.fill(std::string("!Type does not support ") + row.name);
    if (cell == kNoIncrement)
      forms[2] = "!Node does not support NI_INcrement";
    else if (isIncrement)
      forms[2] = "!Type does not support NI_INcrement";
  } else {
    const size_t blank = cell.find(' ');
    const std::string number = cell.substr(0, blank);
    const size_t slash = number.find('/');
    forms[1] = number.substr(0, slash);
    forms[0] = forms[1] == "0" ? "no" : "yes";
    forms[2] = slash == std::string::npos ? number : number.substr(slash + 1);
    forms[3] = blank == std::string::npos ? forms[1] : cell.substr(blank + 1);
  }
  if (isIncrement) forms[3] = "!Unknown info command";
  return forms;
}

class NodeInfo : public testing::Test {
 protected:
  static constexpr double kNoReal = 4711;
  // The forms that the library gives; a number is compared as a number, and written as `expected` has it.
  Forms ask(NODE node, uint32_t command, const Forms& expected) {
    const auto info = static_cast<TNodeInfo>(command);
    bool boolean = false;
    int64_t integer = 4711;
    double real = kNoReal;
    char text[64] = "old";
    wchar_t wide[64] = L"old";
    size_t size = 64;
    Forms forms = {failure(NInfoAsBoolean(node, info, &boolean)), failure(NInfoAsInteger(node, info, &integer)),
                   failure(NInfoAsFloat(node, info, &real)), failure(NInfoAsString(node, info, text, size))};
    EXPECT_EQ(failure(NInfoAsStringW(node, info, wide, size)), forms[3]);
    EXPECT_EQ(std::wstring(wide), std::wstring(text, text + std::strlen(text)));
    EXPECT_EQ(size, 64u);
    size_t needed = 0;
    EXPECT_EQ(failure(NInfoAsString(node, info, nullptr, needed)), forms[3]);
    EXPECT_EQ(needed, std::strlen(text) + 1);
    if (forms[3].empty())
      forms[3] = text;
    else {
      EXPECT_STREQ(text, "") << "a refused text is empty";
    }
    if (forms[0].empty()) forms[0] = boolean ? "yes" : "no";
    if (forms[1].empty()) forms[1] = std::to_string(integer);
    if (forms[2].empty())
      forms[2] = numberIn(expected[2]) == real ? expected[2] : std::to_string(real);
    else {
      EXPECT_EQ(real, kNoReal);
    }
    return forms;
  }
  static std::string failure(uint32_t result) {
    if (result == 0) return "";
    EXPECT_EQ(outcome(result).code, OXGENAPI_E_NOT_SUPPORTED);
    return "!" + lastErrorText();
  }
  Device device{kNodes, "<pFeature>Int</pFeature><pFeature>Choice</pFeature>"};
};

TEST_F(NodeInfo, EveryItemOfEveryKindOfNodeInEveryForm) {
  for (const Row& row : kRows) {
    for (size_t i = 0; i < kColumns.size(); ++i) {
      const Forms expected = formsOf(row, row.cells[i]);
      EXPECT_EQ(ask(device.node(kColumns[i]), row.info, expected), expected) << row.name << " of " << kColumns[i];
    }
  }
}

TEST_F(NodeInfo, ItemsThatDependOnTheStateOfTheNode) {
  const std::tuple<const char*, Row> cells[] = {
      {"Locked", {NI_AccessMode, "", {"1 Not Available"}}},
      {"Absent", {NI_AccessMode, "", {"0 Not Implemented"}}},
      {"Zero", {NI_Representation, "", {"5 Undefined"}}},
      {"FReg", {NI_RegisterAddress, "NI_RegisterAddress", {"-"}}},
  };
  for (const auto& [node, row] : cells) {
    const Forms expected = formsOf(row, row.cells[0]);
    EXPECT_EQ(ask(device.node(node), row.info, expected), expected) << node;
  }
}

TEST_F(NodeInfo, CommandsThatAreNoneAreRefusedByEveryKindInEveryForm) {
  Forms refused;
  refused.fill("!Unknown info command");
  for (const char* name : kColumns)
    for (const uint32_t command : {21u, 22u, 0x7fffffffu, 0x80000000u, 0xffffffffu})
      EXPECT_EQ(ask(device.node(name), command, refused), refused) << name << " " << command;
}

TEST_F(NodeInfo, EntriesAnswerInBothFormsAtOnce) {
  const NODE choice = device.node("Choice");
  for (const Row& row : kRows) {
    const auto info = static_cast<TNodeInfo>(row.info);
    const Forms expected = formsOf(row, row.cells[kEntryColumn]);
    const bool isText = row.cells[kEntryColumn][0] == '=';
    int64_t number = 77;
    char text[64] = "old";
    wchar_t wide[64] = L"old";
    size_t size = 64;
    const std::string refusal = failure(NInfoEnum(choice, info, 0, &number, text, &size));
    EXPECT_EQ(failure(NInfoEnumW(choice, info, 0, &number, wide, &size)), refusal);
    if (std::string(row.cells[kEntryColumn]) == "-") {
      EXPECT_EQ(refusal, row.info == NI_Unit ? expected[3] : expected[1]) << row.name;
      EXPECT_EQ(number, 77);
      EXPECT_STREQ(text, "");
    } else {
      EXPECT_EQ(refusal, "") << row.name;
      EXPECT_EQ(std::to_string(number), isText ? "0" : expected[1]) << row.name;  // no number: 0
      EXPECT_EQ(text, expected[3]) << row.name;
      EXPECT_EQ(std::wstring(wide), std::wstring(expected[3].begin(), expected[3].end())) << row.name;
    }
  }
  char text[8];
  size_t size = sizeof text;
  EXPECT_OK(NInfoEnum(choice, NI_Visibility, 1, nullptr, text, &size));  // either half may be left out
  EXPECT_STREQ(text, "Guru");
  int64_t number = 0;
  EXPECT_OK(NInfoEnum(choice, NI_Visibility, 1, &number, nullptr, nullptr));
  EXPECT_EQ(number, 2);
}

TEST_F(NodeInfo, EntriesThatAreNoneAreRefused) {
  const NODE choice = device.node("Choice");
  int64_t number = 77;
  char text[8] = "old";
  size_t size = sizeof text;
  for (const int64_t index : {int64_t{2}, int64_t{-1}, INT64_MAX, INT64_MIN}) {
    for (const uint32_t info : {0u, 5u, 21u}) {  // the index is looked at before the command
      EXPECT_FAILS(NInfoEnum(choice, static_cast<TNodeInfo>(info), index, &number, text, &size),
                   OXGENAPI_E_INVALID_ARGUMENT, ("Index out of range: 0 <= " + std::to_string(index) + " < 2").c_str());
    }
  }
  EXPECT_STREQ(text, "");
  EXPECT_EQ(number, 77);
  EXPECT_FAILS(NInfoEnum(choice, static_cast<TNodeInfo>(21), 0, &number, text, &size), OXGENAPI_E_NOT_SUPPORTED,
               "Unknown info command");
  for (const char* name : kColumns) {
    if (std::string(name) == "Choice") continue;
    EXPECT_FAILS(NInfoEnum(device.node(name), NI_Name, 9, &number, text, &size), OXGENAPI_E_INVALID_HANDLE,
                 "This is not an IEnum node");
  }
}

}  // namespace
