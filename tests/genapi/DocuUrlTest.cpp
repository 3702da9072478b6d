// Addresses of documentation with placeholders.
#include <cstdlib>
#include <filesystem>

#include "TestMap.h"

namespace {

std::string urlOf(const TestMap& map, const char* node) { return map.node(node)->GetDocuURL().c_str(); }

TEST(DocuUrls, ReplaceWhatStandsInBrackets) {
  const std::string application = std::filesystem::read_symlink("/proc/self/exe").filename();
  const char* const locale = std::getenv("OX_TEST_LOCALE");
  const std::pair<std::string, std::string> cases[] = {
      {"http://example.org/a?b=c&amp;d#e", "http://example.org/a?b=c&d#e"},
      {"$(Sys::NodeName)", "X"},
      {"$(Sys::ModelName)/$(Sys::VendorName)", "Model/Vendor"},
      {"$(Sys::StandardNamespace)", "None"},
      {"$(Sys::GenApiVersion)", "3.4.2"},
      {"$(Sys::DeviceVersion)", "1.2.3"},
      {"$(Sys::SchemaVersion)", "1.1.0"},
      {"$(Sys::Application)", application},
      {"$(Sys::OperatingSystem)", "Linux"},
      {"$(Sys::Language)", locale == nullptr ? "en" : std::string(locale, 2)},
      {"a$(Gain)b$(Mode)/", "a2.5bFast/"},
      {"$(Std::Mode)", "Unknown"},
      {"$(Cust::Mode)", "Fast"},
      {"$(Sys::Weather)/$(Nobody)/$()/$(Device)", "Unknown/Unknown/Unknown/Unknown"},
      {"$(Hidden)/$(Broken)", "Unknown/Unknown"},
      {"$(Gain", "$(Gain"},
      {"$(Gain)/$(Gain", "2.5/$(Gain"},
      {"$Gain) $ (Gain) ()", "$Gain) $ (Gain) ()"},
  };
  for (const auto& [given, expected] : cases) {
    TestMap map("<Integer Name=\"X\">" + tag("DocuURL", given) + "<Value>1</Value></Integer>" + R"(
      <Float Name="Gain"><Value>2.5</Value></Float>
      <Float Name="Hidden"><ImposedAccessMode>WO</ImposedAccessMode><Value>2.5</Value></Float>
      <SwissKnife Name="Broken"><Formula>1 / 0</Formula></SwissKnife>
      <Enumeration Name="Mode"><EnumEntry Name="Fast"><Value>0</Value></EnumEntry><Value>0</Value></Enumeration>)");
    EXPECT_EQ(urlOf(map, "X"), expected) << given;
  }
}

TEST(DocuUrls, FollowTheNodesTheyName) {
  TestMap map("<Node Name=\"X\"><DocuURL>$(Raw)</DocuURL></Node>" + reg("IntReg", "Raw", 0, 4));
  EXPECT_EQ(urlOf(map, "Raw"), "") << "none is given";
  EXPECT_EQ(urlOf(map, "X"), "0");
  map.integer("Raw")->SetValue(12);
  EXPECT_EQ(urlOf(map, "X"), "12");
}

}  // namespace
