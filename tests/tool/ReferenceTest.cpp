#include <gmock/gmock.h>

#include "ToolRun.h"

using testing::HasSubstr;
using testing::Not;

class Reference : public ToolTest {};

TEST_F(Reference, PageCarriesEveryNodeAndCannotBeBrokenByATooltip) {
  const std::string xml = describe("<pFeature>Mode</pFeature><pFeature>Level</pFeature>",
                                   "<Enumeration Name='Mode'><ToolTip>&lt;/script>&lt;!--</ToolTip>"
                                   "<EnumEntry Name='On'><pIsAvailable>High</pIsAvailable><Value>7</Value></EnumEntry>"
                                   "<pValue>Reg</pValue></Enumeration>"
                                   "<IntSwissKnife Name='High'><pVariable Name='L'>LevelReg</pVariable>"
                                   "<Formula>L &gt; 3</Formula></IntSwissKnife>"
                                   "<Integer Name='Level'><pValue>LevelReg</pValue></Integer>"
                                   "<IntReg Name='LevelReg'><Address>0x20</Address><Length>4</Length>"
                                   "<AccessMode>RW</AccessMode><pPort>Device</pPort></IntReg>"
                                   "<IntReg Name='Reg'><Address>0x10</Address><Length>4</Length>"
                                   "<AccessMode>RO</AccessMode><pPort>Device</pPort></IntReg><Port Name='Device'/>");
  ASSERT_EQ(run({"--xml", xml, "doc", "-o", path("page.html")}).status, 0);
  const std::string page = read("page.html");
  const std::string open = "<script type=\"application/json\" id=\"reference\">";
  const size_t start = page.find(open) + open.size();
  const auto reference = nlohmann::json::parse(page.substr(start, page.find("</script>", start) - start));
  EXPECT_EQ(reference.at("version"), "1.2.3");
  const auto& mode = reference.at("nodes").at("Mode");
  EXPECT_EQ(mode.at("toolTip"), "</script><!--");
  EXPECT_EQ(mode.at("access"), "RO");
  EXPECT_EQ(mode.at("entries"), nlohmann::json::parse(R"([["On", "7", "", ["Level"]]])"));
  EXPECT_EQ(mode.at("links")[0], nlohmann::json::parse(R"(["pValue", "Reg"])"));
  EXPECT_EQ(reference.at("nodes").at("Root").at("features"), nlohmann::json::parse(R"(["Mode", "Level"])"));
  EXPECT_EQ(run({"doc", write("no.xml", "text"), "-o", path("no.html")}).status, 1);
  EXPECT_FALSE(std::filesystem::exists(path("no.html")));
}

TEST_F(Reference, PageWorksInABrowser) {
  if (runProgram({"which", "chromium"}).status != 0) GTEST_SKIP() << "needs the browser chromium";
  ASSERT_EQ(run({"xml", "-o", path("camera.xml")}).status, 0);
  ASSERT_EQ(run({"doc", path("camera.xml"), "-o", path("page.html")}).status, 0);
  const ToolResult shown = runProgram({"chromium", "--headless", "--no-sandbox", "--disable-gpu",
                                       "--user-data-dir=" + path("profile"), "--enable-logging=stderr", "--dump-dom",
                                       "file://" + path("page.html") + "?q=exposure time#ExposureTime"});
  EXPECT_THAT(shown.out, HasSubstr("<h2>ExposureTime</h2>"));
  EXPECT_THAT(shown.out, HasSubstr("<span class=\"\">ExposureTime</span>"));  // found by the search
  EXPECT_THAT(shown.out, Not(HasSubstr("<span class=\"\">Gamma</span>")));
  EXPECT_THAT(shown.out, HasSubstr("<svg"));
  EXPECT_THAT(shown.err, Not(HasSubstr("CONSOLE")));
}
