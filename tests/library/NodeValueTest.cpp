// The kinds of nodes, and typed values with their conversions.
#include <array>
#include <limits>

#include "Device.h"

namespace {

// One node of every kind. Registers: Integer at 0, Float at 8, Text at 16, Block at 32, Trigger at 48.
const char* const kNodes = R"(
  <Integer Name="Integer"><pValue>IntegerReg</pValue><Min>-100</Min><Max>1000</Max></Integer>
  <IntReg Name="IntegerReg"><Address>0</Address><Length>4</Length><AccessMode>RW</AccessMode><pPort>Device</pPort>
    <Sign>Signed</Sign><Endianess>LittleEndian</Endianess></IntReg>
  <FloatReg Name="Float"><Address>8</Address><Length>8</Length><AccessMode>RW</AccessMode><pPort>Device</pPort>
    <Endianess>LittleEndian</Endianess></FloatReg>
  <StringReg Name="Text"><Address>16</Address><Length>16</Length><AccessMode>RW</AccessMode><pPort>Device</pPort></StringReg>
  <Register Name="Block"><Address>32</Address><Length>8</Length><AccessMode>RW</AccessMode><pPort>Device</pPort></Register>
  <Boolean Name="Boolean"><Value>0</Value><OnValue>1</OnValue><OffValue>0</OffValue></Boolean>
  <Command Name="Command"><pValue>Trigger</pValue><CommandValue>9</CommandValue></Command>
  <IntReg Name="Trigger"><Address>48</Address><Length>4</Length><AccessMode>RW</AccessMode><pPort>Device</pPort>
    <Sign>Signed</Sign><Endianess>LittleEndian</Endianess></IntReg>
  <Enumeration Name="Choice">
    <EnumEntry Name="Low"><Value>3</Value></EnumEntry>
    <EnumEntry Name="High"><Value>7</Value></EnumEntry>
    <Value>7</Value></Enumeration>
  <Node Name="Plain"/>
  <Integer Name="ReadOnly"><Value>5</Value><ImposedAccessMode>RO</ImposedAccessMode></Integer>
  <Category Name="Group"/>)";

constexpr size_t kTriggerAddress = 48;

class NodeValue : public testing::Test {
 protected:
  std::string text(const char* name) {
    const NODE node = device.node(name);
    return textOf([&](char* buffer, size_t& size) { return NGetAsString(node, buffer, size); });
  }
  void setFloat(double value) { ASSERT_OK(NSetAsFloat(device.node("Float"), value)); }
  Device device{kNodes};
};

TEST_F(NodeValue, TheKindFollowsFromTheFirstInterfaceThatTheNodeHas) {
  const std::pair<const char*, int> kinds[] = {
      {"Boolean", 1}, {"Root", 2},    {"Command", 3},    {"Choice", 4}, {"EnumEntry_Choice_Low", 5},
      {"Float", 6},   {"Integer", 7}, {"IntegerReg", 7}, {"Text", 8},   {"Device", 9},
      {"Plain", 10},  {"Block", 11}};
  for (const auto& [name, kind] : kinds) {
    TNodeType type = NT_Invalid;
    EXPECT_OK(NType(device.node(name), &type));
    EXPECT_EQ(type, kind) << name;
  }
}

constexpr const char* kRefused = nullptr;

TEST_F(NodeValue, ReadsConvertBetweenKindsThatAllowIt) {
  device.setInteger(0, 5);
  setFloat(2.9);
  std::memcpy(device.memory.data() + 16, "abc", 4);
  const struct {
    const char *name, *asBoolean, *asInteger, *asFloat, *asText;
  } cells[] = {
      {"Integer", "1", "5", "5", "5"},
      {"Float", "1", "2", "2.9", "2.9"},
      {"Boolean", "0", "0", "0", "0"},
      {"Command", "1", "1", "1", nullptr},  // its text is the engine's own; not executing: done
      {"Choice", kRefused, "7", "7", "High"},
      {"EnumEntry_Choice_Low", kRefused, "3", "3", "Low"},
      {"Text", kRefused, kRefused, kRefused, "abc"},
      {"Block", kRefused, kRefused, kRefused, kRefused},
      {"Device", kRefused, kRefused, kRefused, kRefused},
      {"Root", kRefused, kRefused, kRefused, nullptr},
  };
  const auto expected = [](const char* cell, const std::string& form) {
    return cell ? succeeds()
                : fails(OXGENAPI_E_NOT_SUPPORTED, ("Value of this feature can not be returned as " + form).c_str());
  };
  for (const auto& cell : cells) {
    const NODE node = device.node(cell.name);
    bool boolean = false;
    int64_t integer = 0;
    double real = 0;
    EXPECT_EQ(outcome(NGetAsBoolean(node, &boolean)), expected(cell.asBoolean, "boolean")) << cell.name;
    EXPECT_EQ(outcome(NGetAsInteger(node, &integer)), expected(cell.asInteger, "integer")) << cell.name;
    EXPECT_EQ(outcome(NGetAsFloat(node, &real)), expected(cell.asFloat, "float")) << cell.name;
    if (cell.asBoolean) {
      EXPECT_EQ(boolean, std::string(cell.asBoolean) == "1") << cell.name;
    }
    if (cell.asInteger) {
      EXPECT_EQ(std::to_string(integer), cell.asInteger) << cell.name;
    }
    if (cell.asFloat) {
      EXPECT_EQ(real, numberIn(cell.asFloat)) << cell.name;
    }
    if (cell.asText) {
      EXPECT_EQ(text(cell.name), cell.asText) << cell.name;
    }
  }
  for (const char* name : {"Block", "Device"}) {
    char buffer[4] = "old";
    size_t size = sizeof buffer;
    EXPECT_FAILS(NGetAsString(device.node(name), buffer, size), OXGENAPI_E_NOT_SUPPORTED,
                 "Value of this feature can not be returned as string");
    EXPECT_STREQ(buffer, "");
  }
}

TEST_F(NodeValue, NumbersAreCutTowardsZeroOrRefused) {
  for (const auto& [written, kept] : {std::pair{2.9, 2}, {-2.9, -2}, {0.99, 0}}) {
    EXPECT_OK(NSetAsFloat(device.node("Integer"), written));
    EXPECT_EQ(device.integerAt(0), kept);
    setFloat(written);
    int64_t value = 77;
    EXPECT_OK(NGetAsInteger(device.node("Float"), &value));
    EXPECT_EQ(value, kept);
  }
  int64_t value = 77;
  for (const auto& [written, shown] : {std::pair{1e300, "1e+300"}, {0x1p63, "9.22337e+18"}}) {
    setFloat(written);
    EXPECT_FAILS(NGetAsInteger(device.node("Float"), &value), OXGENAPI_E_UNSPECIFIED,
                 (std::string("Float: ") + shown + " does not fit a 64-bit integer").c_str());
  }
  EXPECT_EQ(value, 77);
  for (const double written : {1e300, -1e300, std::numeric_limits<double>::quiet_NaN(), 9223372036854775808.0})
    EXPECT_EQ(NSetAsFloat(device.node("Integer"), written), OXGENAPI_E_INVALID_ARGUMENT) << written;
}

TEST_F(NodeValue, WritesConvertBetweenKindsThatAllowIt) {
  const NODE integer = device.node("Integer");
  EXPECT_OK(NSetAsBoolean(integer, true));
  EXPECT_EQ(device.integerAt(0), 1);
  EXPECT_OK(NSetAsString(integer, "0x10"));
  EXPECT_EQ(device.integerAt(0), 16);
  EXPECT_OK(NSetAsInteger(device.node("Float"), -3));
  EXPECT_EQ(text("Float"), "-3");
  EXPECT_OK(NSetAsInteger(device.node("Boolean"), 2));
  EXPECT_EQ(text("Boolean"), "1");
  EXPECT_OK(NSetAsInteger(device.node("Choice"), 3));
  EXPECT_EQ(text("Choice"), "Low");
  EXPECT_OK(NSetAsFloat(device.node("Choice"), 7.9));
  EXPECT_EQ(text("Choice"), "High");
  EXPECT_OK(NSetAsStringW(device.node("Text"), L"\u00e9"));
  wchar_t wide[16];
  size_t wideSize = 16;
  EXPECT_OK(NGetAsStringW(device.node("Text"), wide, wideSize));
  EXPECT_EQ(std::wstring(wide), L"\u00e9");

  for (const char* name : {"Choice", "EnumEntry_Choice_Low", "Text", "Block", "Device", "Root", "Plain"}) {
    EXPECT_FAILS(NSetAsBoolean(device.node(name), true), OXGENAPI_E_NOT_SUPPORTED,
                 "Value of this feature can not be set as boolean");
  }
  for (const char* name : {"EnumEntry_Choice_Low", "Text", "Block", "Device", "Root", "Plain"}) {
    EXPECT_FAILS(NSetAsInteger(device.node(name), 1), OXGENAPI_E_NOT_SUPPORTED,
                 "Value of this feature can not be set as integer");
    EXPECT_FAILS(NSetAsFloat(device.node(name), 1), OXGENAPI_E_NOT_SUPPORTED,
                 "Value of this feature can not be set as float");
  }
  EXPECT_FAILS(NSetAsString(device.node("Root"), "x"), OXGENAPI_E_NOT_WRITABLE, "Category is RO");
  EXPECT_FAILS(NSetAsString(device.node("Device"), "x"), OXGENAPI_E_NOT_SUPPORTED,
               "Value of this feature can not be set as string");
}

TEST_F(NodeValue, ACommandIsExecutedByTrueAlone) {
  const NODE command = device.node("Command");
  EXPECT_OK(NSetAsBoolean(command, false));
  EXPECT_OK(NSetAsInteger(command, 0));
  EXPECT_EQ(device.integerAt(kTriggerAddress), 0);
  EXPECT_OK(NSetAsBoolean(command, true));
  EXPECT_EQ(device.integerAt(kTriggerAddress), 9);
  bool done = true;
  EXPECT_OK(NGetAsBoolean(command, &done));
  EXPECT_FALSE(done);
  device.setInteger(kTriggerAddress, 0);
  EXPECT_OK(NGetAsBoolean(command, &done));
  EXPECT_TRUE(done);
}

TEST_F(NodeValue, FailuresBelowBecomeCodesByTheirKind) {
  int64_t value = 77;
  EXPECT_EQ(NSetAsInteger(device.node("Integer"), 1001), OXGENAPI_E_INVALID_ARGUMENT);  // above the maximum
  EXPECT_NE(lastErrorText().find("1001"), std::string::npos);
  EXPECT_EQ(NSetAsString(device.node("Choice"), "Middle"), OXGENAPI_E_INVALID_ARGUMENT);  // no such entry
  EXPECT_EQ(NSetAsString(device.node("Integer"), nullptr), OXGENAPI_E_INVALID_ARGUMENT);  // empty: no number
  EXPECT_EQ(NSetAsInteger(device.node("ReadOnly"), 1), OXGENAPI_E_NOT_WRITABLE);
  device.memory.clear();  // every access is refused with 0x8000000e
  EXPECT_FAILS(NGetAsInteger(device.node("IntegerReg"), &value), OXGENAPI_E_NOT_READABLE,
               "Address 0x0 is not readable");
  EXPECT_EQ(value, 77);
}

TEST_F(NodeValue, TheVerifyModeDecidesWhoChecksLimits) {
  const NODE node = device.node("Integer");
  for (const TVerifyMode mode : {VM_None, VM_WriteOnly, VM_ReadOnly, VM_ReadWrite}) {
    ASSERT_OK(NSetVerifyMode(node, mode));
    device.setInteger(0, 2000);
    ASSERT_OK(NInvalidate(node));
    int64_t value = 0;
    EXPECT_EQ(NGetAsInteger(node, &value) == 0, mode == VM_None || mode == VM_WriteOnly) << mode;
    EXPECT_EQ(NSetAsInteger(node, 2001) == 0, mode == VM_None || mode == VM_ReadOnly) << mode;
  }
}

}  // namespace
