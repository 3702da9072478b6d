// Casting pointers, and which interfaces each type of node has.
#include "NodeNames.h"

namespace {

const std::string kEveryType = R"(
  <Node Name="Node"/>
  <Category Name="Category"/>
  <Integer Name="Integer"><Value>0</Value></Integer>
  <IntConverter Name="IntConverter"><FormulaTo>FROM</FormulaTo><FormulaFrom>TO</FormulaFrom><pValue>Integer</pValue>
  </IntConverter>
  <IntSwissKnife Name="IntSwissKnife"><Formula>1</Formula></IntSwissKnife>
  <MaskedIntReg Name="MaskedIntReg"><Address>0</Address><Length>4</Length><pPort>Device</pPort><Bit>3</Bit>
  </MaskedIntReg>
  <Boolean Name="Boolean"><Value>true</Value></Boolean>
  <Command Name="Command"><Value>0</Value><CommandValue>1</CommandValue></Command>
  <Enumeration Name="Enumeration"><EnumEntry Name="Off"><Value>0</Value></EnumEntry><Value>0</Value></Enumeration>
  <Float Name="Float"><Value>0</Value></Float>
  <Converter Name="Converter"><FormulaTo>FROM</FormulaTo><FormulaFrom>TO</FormulaFrom><pValue>Float</pValue></Converter>
  <SwissKnife Name="SwissKnife"><Formula>1</Formula></SwissKnife>
  <String Name="String"><Value>x</Value></String>
  <ConfRom Name="ConfRom"><Address>0</Address><Length>4</Length><pPort>Device</pPort><Unit>0</Unit>
    <TextDesc Name="TextDesc">1</TextDesc><IntKey Name="IntKey">2</IntKey></ConfRom>
  <AdvFeatureLock Name="AdvFeatureLock"><Address>0</Address><Length>4</Length><pPort>Device</pPort>
    <FeatureID>1</FeatureID><Timeout>1</Timeout></AdvFeatureLock>
  <SmartFeature Name="SmartFeature"><FeatureID>1</FeatureID><Address>0</Address><pPort>Device</pPort></SmartFeature>)" +
                               reg("IntReg", "IntReg", 0, 4) + reg("FloatReg", "FloatReg", 0, 4) +
                               reg("StringReg", "StringReg", 0, 4) + reg("Register", "Register", 0, 4);

std::string interfacesOf(INode* node) {
  std::string found;
  const auto note = [&](bool has, const char* name) {
    if (has) found += std::string(name) + " ";
  };
  note(CValuePtr(node).IsValid(), "value");
  note(CIntegerPtr(node).IsValid(), "integer");
  note(CBooleanPtr(node).IsValid(), "boolean");
  note(CCommandPtr(node).IsValid(), "command");
  note(CFloatPtr(node).IsValid(), "float");
  note(CStringPtr(node).IsValid(), "string");
  note(CRegisterPtr(node).IsValid(), "register");
  note(CCategoryPtr(node).IsValid(), "category");
  note(CEnumerationPtr(node).IsValid(), "enumeration");
  note(CEnumEntryPtr(node).IsValid(), "entry");
  note(CPortPtr(node).IsValid(), "port");
  note(CPortConstructPtr(node).IsValid(), "construct");
  note(CChunkPortPtr(node).IsValid(), "chunk");
  EXPECT_TRUE(CNodePtr(node).IsValid());
  EXPECT_TRUE(CSelectorPtr(node).IsValid());
  EXPECT_TRUE(CBasePtr(node).IsValid());
  return found;
}

TEST(Interfaces, OfANodeAreThoseOfItsTypeAndNoOther) {
  TestMap map(kEveryType);
  struct {
    Names nodes;
    EInterfaceType principal;
    const char* interfaces;
  } const cases[] = {
      {{"Node"}, intfIValue, "value "},
      {{"Category"}, intfICategory, "value category "},
      {{"Integer", "IntConverter", "IntSwissKnife", "IntKey"}, intfIInteger, "value integer "},
      {{"IntReg", "MaskedIntReg", "AdvFeatureLock", "SmartFeature"}, intfIInteger, "value integer register "},
      {{"Boolean"}, intfIBoolean, "value boolean "},
      {{"Command"}, intfICommand, "value command "},
      {{"Enumeration"}, intfIEnumeration, "value enumeration "},
      {{"EnumEntry_Enumeration_Off"}, intfIEnumEntry, "value entry "},
      {{"Float", "Converter", "SwissKnife"}, intfIFloat, "value float "},
      {{"FloatReg"}, intfIFloat, "value float register "},
      {{"String", "TextDesc"}, intfIString, "value string "},
      {{"StringReg"}, intfIString, "value string register "},
      {{"Register", "ConfRom"}, intfIRegister, "value register "},
      {{"Device"}, intfIPort, "port construct chunk "},
  };
  size_t count = 0;
  for (const auto& each : cases) {
    for (const std::string& name : each.nodes) {
      ++count;
      INode* node = map.node(name);
      EXPECT_EQ(interfacesOf(node), each.interfaces) << name;
      EXPECT_EQ(node->GetPrincipalInterfaceType(), each.principal) << name;
      EXPECT_EQ(node->GetNodeMap(), map.map) << name;
      const CValuePtr value = node;
      EXPECT_TRUE(!value || value->GetNode() == node) << name;
    }
  }
  EXPECT_EQ(map.map->GetNumNodes(), count);
}

TEST(Interfaces, OfTypesThatAreOnlyLoadedRefuseTheirValue) {
  TestMap map(kEveryType);
  for (const char* each : {"ConfRom", "TextDesc", "IntKey", "AdvFeatureLock", "SmartFeature"}) {
    EXPECT_EQ(refusal<RuntimeException>([&] { map.value(each)->ToString(); }),
              std::string(each) + ": node type " + each + " is not supported");
    EXPECT_TRUE(IsImplemented(map.mode(each))) << each;
  }
}

}  // namespace
