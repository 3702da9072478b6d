// The camera as an application sees it: its description loaded into a node map, its registers behind the port.
#include "CameraThroughEngine.h"

using namespace GENAPI_NAMESPACE;
using GENICAM_NAMESPACE::gcstring;
using GENICAM_NAMESPACE::GenericException;

TEST(CameraThroughEngine, LoadsWithoutFindings) {
  EngineBench bench;
  std::vector<Finding> findings;
  dynamic_cast<IFindings&>(*bench.map).GetFindings(findings);
  for (const Finding& f : findings)
    ADD_FAILURE() << f.Line << ": " << f.Node.c_str() << ": " << f.Element.c_str() << ": " << f.Reason.c_str();
  GENICAM_NAMESPACE::gcstring_vector errors;
  EXPECT_TRUE(bench.map->ParseSwissKnifes(&errors)) << (errors.empty() ? "" : errors[0].c_str());
}

TEST(CameraThroughEngine, ReadsEveryFeatureAndTakesBackEverySetting) {
  EngineBench bench;
  NodeList_t nodes;
  bench.map->GetNodes(nodes);
  int read = 0, written = 0;
  for (INode* node : nodes) {
    auto* value = dynamic_cast<IValue*>(node);
    if (!value || !IsReadable(node)) continue;
    try {
      const gcstring text = value->ToString();
      ++read;
      if (!node->IsStreamable() || GetAccess(node) != RW) continue;
      value->FromString(text);
      EXPECT_EQ(value->ToString(), text) << node->GetName().c_str();
      ++written;
    } catch (const GenericException& e) {
      ADD_FAILURE() << node->GetName().c_str() << ": " << e.GetDescription();
    }
  }
  EXPECT_GT(read, 400);
  EXPECT_GT(written, 60);
}

TEST(CameraThroughEngine, ConvertsBetweenUnitsAndRegistersAndReportsErrors) {
  EngineBench bench;
  CFloatPtr exposure = bench.map->GetNode("ExposureTime");
  EXPECT_DOUBLE_EQ(exposure->GetValue(), 10000);
  exposure->SetValue(1000.05);
  EXPECT_DOUBLE_EQ(exposure->GetValue(), 1000.08) << "whole ticks of 80 ns";
  EXPECT_EQ(bench.get("ExposureTimeRawReg"), 12501u);
  EXPECT_THROW(exposure->SetValue(1), GenericException);

  CFloatPtr gain = bench.map->GetNode("Gain");
  CEnumerationPtr selector = bench.map->GetNode("GainSelector");
  *selector = "Red";
  gain->SetValue(6.0);
  EXPECT_NEAR(gain->GetValue(), 6.0, 0.02);
  EXPECT_EQ(bench.get("GainRawReg", 1), 511u);
  *selector = "All";
  EXPECT_DOUBLE_EQ(gain->GetValue(), 0);

  EXPECT_EQ(CValuePtr(bench.map->GetNode("GevMACAddress"))->ToString(), "02:00:5e:10:c2:00");
  EXPECT_EQ(CValuePtr(bench.map->GetNode("GevCurrentIPAddress"))->ToString(), "192.168.10.20");
  EXPECT_EQ(CIntegerPtr(bench.map->GetNode("DeviceStatusTrim"))->GetValue(), -3);
  EXPECT_TRUE(CBooleanPtr(bench.map->GetNode("DeviceStatusLinkUp"))->GetValue());

  CIntegerPtr value = bench.map->GetNode("TestErrorValue");
  try {
    value->SetValue(101);
    FAIL() << "accepted";
  } catch (const GenericException& e) {
    EXPECT_NE(std::string(e.GetDescription()).find("The value is above 100"), std::string::npos) << e.GetDescription();
  }
  EXPECT_EQ(value->GetValue(), 1);
}
