// Loading a description into a node map that already has one.
#include "Device.h"

namespace {

TEST(Reload, NodesOfTheEarlierDescriptionStayButFindNoPort) {
  Device device(integerRegister("Width", 0) + "<Integer Name=\"Kept\"><Value>4</Value></Integer>");
  const NODE width = device.node("Width");
  const NODE kept = device.node("Kept");
  int calls = 0;
  TCallbackHandle handle = 0;
  ASSERT_OK(NRegisterUpdate(
      kept, [](NODE, void* count) { ++*static_cast<int*>(count); }, &calls, &handle));
  device.setInteger(0, 11);
  device.load(description(integerRegister("Width", 4) + "<Float Name=\"Kept\"><Value>2.5</Value></Float>"));
  device.connect();

  EXPECT_NE(device.node("Width"), width);
  TNodeType type = NT_Invalid;
  EXPECT_OK(NType(device.node("Kept"), &type));
  EXPECT_EQ(type, NT_Float);
  EXPECT_OK(NType(kept, &type));
  EXPECT_EQ(type, NT_Integer);
  int64_t value = 0;
  EXPECT_OK(NGetAsInteger(kept, &value));
  EXPECT_EQ(value, 4);
  EXPECT_EQ(NGetAsInteger(width, &value), OXGENAPI_E_NOT_READABLE);
  EXPECT_EQ(NSetAsInteger(width, 1), OXGENAPI_E_NOT_WRITABLE);
  EXPECT_EQ(device.reads + device.writes, 0);
  EXPECT_OK(NSetAsInteger(device.node("Width"), 12));
  EXPECT_EQ(device.integerAt(0), 11);
  EXPECT_EQ(device.integerAt(4), 12);

  EXPECT_OK(NSetAsFloat(device.node("Kept"), 5));
  EXPECT_EQ(calls, 0) << "callbacks stay with their description";
  EXPECT_OK(NSetAsInteger(kept, 5));
  EXPECT_EQ(calls, 1);
  EXPECT_OK(NDeregisterUpdate(kept, handle));
}

TEST(Reload, AnEarlierDescriptionOutlivesItsNodeMapHandle) {
  NODEMAP map = nullptr;
  NODE before = nullptr;
  ASSERT_OK(CreateNodeMap(map));
  const std::string xml = description("<Integer Name=\"A\"><Value>4</Value></Integer>");
  ASSERT_OK(NMLoadXMLString(map, xml.c_str()));
  ASSERT_OK(NMGetNode(map, "A", before));
  for (int i = 0; i < 3; ++i) ASSERT_OK(NMLoadXMLString(map, xml.c_str()));
  OxIfaceContainerReleaseUseCounter(map);
  EXPECT_OK(NSetAsInteger(before, 6));
  OxIfaceContainerReleaseUseCounter(before);
}

}  // namespace
