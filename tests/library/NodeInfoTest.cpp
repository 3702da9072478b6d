// What can be asked about a node, cell by cell.
#include <array>

#include "Device.h"

namespace {

const char* const kNodes = R"(
  <Integer Name="Int"><ToolTip>tip</ToolTip><Description>long</Description><DisplayName>An int</DisplayName>
    <Visibility>Expert</Visibility><ImposedAccessMode>RO</ImposedAccessMode><pAlias>Float</pAlias>
    <Streamable>Yes</Streamable><Value>6</Value><Min>2</Min><Max>20</Max><Inc>4</Inc><Unit>px</Unit>
    <Representation>HexNumber</Representation></Integer>
  <Float Name="Float"><Value>1.5</Value><Min>-2.5</Min><Max>1e300</Max><Inc>0.5</Inc><Unit>us</Unit>
    <Representation>Logarithmic</Representation></Float>
  <Float Name="Steps"><Value>1.5</Value></Float>
  <Integer Name="Address"><Value>1</Value><Representation>IPV4Address</Representation></Integer>
  <IntReg Name="Reg"><Visibility>Invisible</Visibility><Address>0x10</Address><Length>4</Length><AccessMode>WO</AccessMode>
    <pPort>Device</pPort><Cachable>WriteAround</Cachable><PollingTime>250</PollingTime>
    <Sign>Unsigned</Sign><Endianess>LittleEndian</Endianess></IntReg>
  <Enumeration Name="Choice" MergePriority="0"><IsDeprecated>Yes</IsDeprecated>
    <EnumEntry Name="A"><DisplayName>Entry A</DisplayName><Value>3</Value></EnumEntry>
    <EnumEntry Name="B"><Visibility>Guru</Visibility><Value>4</Value></EnumEntry><Value>3</Value></Enumeration>
  <Integer Name="Absent"><pIsImplemented>Zero</pIsImplemented><Value>1</Value></Integer>
  <Integer Name="Locked"><pIsAvailable>Zero</pIsAvailable><Value>1</Value></Integer>
  <Integer Name="Zero"><Value>0</Value></Integer>
  <Port Name="Events"><EventID>9A01</EventID></Port>)";

class NodeInfo : public testing::Test {
 protected:
  // The four forms of an answer, or the texts of their refusals after "!".
  std::array<std::string, 4> forms(const char* name, uint32_t command) {
    const NODE node = device.node(name);
    const auto info = static_cast<TNodeInfo>(command);
    bool boolean = false;
    int64_t integer = 0;
    double real = 0;
    char text[64] = "";
    size_t size = sizeof text;
    const std::array<std::string, 4> failures = {
        failure(NInfoAsBoolean(node, info, &boolean)), failure(NInfoAsInteger(node, info, &integer)),
        failure(NInfoAsFloat(node, info, &real)), failure(NInfoAsString(node, info, text, size))};
    std::array<std::string, 4> forms = {boolean ? "yes" : "no", std::to_string(integer), std::to_string(real), text};
    for (size_t i = 0; i < forms.size(); ++i) {
      if (!failures[i].empty()) forms[i] = failures[i];
    }
    return forms;
  }
  static std::string failure(uint32_t result) {
    if (result == 0) return "";
    EXPECT_EQ(outcome(result).code, OXGENAPI_E_NOT_SUPPORTED);
    return "!" + lastErrorText();
  }
  Device device{kNodes, "<pFeature>Int</pFeature>"};
};

using Forms = std::array<std::string, 4>;

Forms refusedEverywhere(const std::string& text) {
  return {"!" + text, "!" + text, "!" + text, "!" + text};
}

Forms textOnly(const std::string& text) {
  return {"!Strings can not be converted to boolean", "!Strings can not be converted to integer",
          "!Strings can not be converted to float", text};
}

TEST_F(NodeInfo, EveryItemInEveryForm) {
  const struct {
    const char* node;
    TNodeInfo info;
    Forms expected;
  } cells[] = {
      {"Int", NI_Name, textOnly("Int")},
      {"Int", NI_DisplayName, textOnly("An int")},
      {"Int", NI_AccessMode, {"yes", "2", "2.000000", "Read Only"}},
      {"Reg", NI_AccessMode, {"yes", "3", "3.000000", "Write Only"}},
      {"Float", NI_AccessMode, {"yes", "4", "4.000000", "Read/Write"}},
      {"Locked", NI_AccessMode, {"yes", "1", "1.000000", "Not Available"}},
      {"Absent", NI_AccessMode, {"no", "0", "0.000000", "Not Implemented"}},
      {"Int", NI_Max, {"yes", "20", "20.000000", "20"}},
      {"Float", NI_Min, {"yes", "-2", "-2.500000", "-2.5"}},
      {"Choice", NI_Max, refusedEverywhere("Type does not support NI_Max")},
      {"Choice", NI_Min, refusedEverywhere("Type does not support NI_Min")},
      {"Int", NI_Increment, {"yes", "4", "4.000000", "!Unknown info command"}},
      {"Float", NI_Increment, {"no", "0", "0.500000", "!Unknown info command"}},
      {"Steps",
       NI_Increment,
       {"!Type does not support NI_Increment", "!Type does not support NI_Increment",
        "!Node does not support NI_INcrement", "!Unknown info command"}},
      {"Choice",
       NI_Increment,
       {"!Type does not support NI_Increment", "!Type does not support NI_Increment",
        "!Type does not support NI_INcrement", "!Unknown info command"}},
      {"Choice", NI_NumEnumEntries, {"yes", "2", "2.000000", "2"}},
      {"Int", NI_NumEnumEntries, refusedEverywhere("Type does not support NI_NumEnumEntries")},
      {"Int", NI_IsStreamable, {"yes", "1", "1.000000", "1"}},
      {"Zero", NI_IsStreamable, {"no", "0", "0.000000", "0"}},
      {"Reg", NI_CachingMode, {"yes", "2", "2.000000", "Write Around"}},
      {"Int", NI_CachingMode, {"yes", "1", "1.000000", "Write Through"}},
      {"Int", NI_ToolTip, textOnly("tip")},
      {"Int", NI_Description, textOnly("long")},
      {"Int", NI_Visibility, {"yes", "1", "1.000000", "Expert"}},
      {"Reg", NI_Visibility, {"yes", "-1", "-1.000000", "Invisible"}},
      {"Zero", NI_Visibility, {"no", "0", "0.000000", "Beginner"}},
      {"Reg", NI_PollingTime, {"yes", "250", "250.000000", "250"}},
      {"Int", NI_PollingTime, {"yes", "-1", "-1.000000", "-1"}},
      {"Events", NI_EventID, textOnly("9A01")},
      {"Int", NI_EventID, textOnly("")},
      {"Reg", NI_RegisterAddress, {"yes", "16", "16.000000", "16"}},
      {"Int", NI_RegisterAddress, refusedEverywhere("Type does not support NI_RegisterAddress")},
      {"Reg", NI_RegisterLength, {"yes", "4", "4.000000", "4"}},
      {"Float", NI_RegisterLength, refusedEverywhere("Type does not support NI_RegisterLength")},
      {"Int", NI_Representation, {"yes", "4", "4.000000", "HexNumber"}},
      {"Float", NI_Representation, {"yes", "1", "1.000000", "Logarithmic"}},
      {"Address", NI_Representation, {"yes", "5", "5.000000", "Undefined"}},
      {"Choice", NI_Representation, refusedEverywhere("Type does not support NI_Representation")},
      {"Float", NI_Unit, textOnly("us")},
      {"Choice", NI_Unit, textOnly("!Type does not support NI_Unit")},
      {"Int", NI_AliasName, textOnly("Float")},
      {"Float", NI_AliasName, textOnly("")},
      {"Choice", NI_IsDeprecated, {"yes", "1", "1.000000", "1"}},
      {"Int", NI_IsFeature, {"yes", "1", "1.000000", "1"}},
      {"Reg", NI_IsFeature, {"no", "0", "0.000000", "0"}},
      {"Int", static_cast<TNodeInfo>(21), refusedEverywhere("Unknown info command")},
      {"Int", static_cast<TNodeInfo>(0xffffffff), refusedEverywhere("Unknown info command")},
  };
  for (const auto& cell : cells) EXPECT_EQ(forms(cell.node, cell.info), cell.expected) << cell.node << cell.info;
}

TEST_F(NodeInfo, LimitsBeyondTheIntegersShowAsTheNearestInteger) {
  int64_t value = 0;
  EXPECT_OK(NInfoAsInteger(device.node("Float"), NI_Max, &value));
  EXPECT_EQ(value, INT64_MAX);
}

TEST_F(NodeInfo, EntriesAnswerInBothFormsAtOnce) {
  const NODE choice = device.node("Choice");
  const auto ask = [&](TNodeInfo info, int64_t index, int64_t* integer) {
    return textOf(
        [&, index](char* buffer, size_t& size) { return NInfoEnum(choice, info, index, integer, buffer, &size); });
  };
  int64_t number = 77;
  EXPECT_EQ(ask(NI_DisplayName, 0, &number), "Entry A");
  EXPECT_EQ(number, 0);  // an item that is text only
  EXPECT_EQ(ask(NI_Visibility, 1, &number), "Guru");
  EXPECT_EQ(number, 2);
  EXPECT_EQ(ask(NI_Visibility, 1, nullptr), "Guru");
  wchar_t wide[16];
  size_t size = 16;
  EXPECT_OK(NInfoEnumW(choice, NI_Visibility, 1, &number, wide, &size));
  EXPECT_EQ(std::wstring(wide), L"Guru");

  char text[8] = "old";
  size = sizeof text;
  EXPECT_FAILS(NInfoEnum(choice, NI_Name, 2, &number, text, &size), OXGENAPI_E_INVALID_ARGUMENT,
               "Index out of range: 0 <= 2 < 2");
  EXPECT_STREQ(text, "");
  EXPECT_FAILS(NInfoEnum(choice, NI_Name, -1, &number, text, &size), OXGENAPI_E_INVALID_ARGUMENT,
               "Index out of range: 0 <= -1 < 2");
  EXPECT_FAILS(NInfoEnum(device.node("Int"), NI_Name, 0, &number, text, &size), OXGENAPI_E_INVALID_HANDLE,
               "This is not an IEnum node");
  EXPECT_FAILS(NInfoEnum(choice, NI_Increment, 0, &number, text, &size), OXGENAPI_E_NOT_SUPPORTED,
               "Type does not support NI_Increment");
}

}  // namespace
