#include <gmock/gmock.h>

#include <sstream>

#include "ToolRun.h"

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

class Reference : public ToolTest {
 protected:
  // The words that the program offers for the last of `words`.
  std::vector<std::string> offered(std::vector<std::string> words) const {
    words.insert(words.begin(), "__complete");
    const ToolResult result = run(words);
    EXPECT_EQ(result.status, 0) << result.err;
    std::vector<std::string> found;
    std::istringstream lines(result.out);
    for (std::string line; std::getline(lines, line);) {
      found.push_back(line.substr(0, line.find('\t')));
    }
    return found;
  }
};

TEST_F(Reference, CompletionKnowsCommandsOptionsAndTheDevicesFeatures) {
  const std::string xml = describe("<pFeature>Alpha</pFeature>", "<Integer Name='Alpha'><Value>1</Value></Integer>");
  EXPECT_THAT(offered({"sna"}), ElementsAre("snapshot"));
  EXPECT_THAT(offered({"firmware", "up"}), ElementsAre("update"));
  EXPECT_THAT(offered({"tree", "--vis"}), ElementsAre("--visibility"));
  EXPECT_THAT(offered({"--sta"}), ElementsAre("--state"));
  EXPECT_THAT(offered({"get", "ExposureTim"}), Contains("ExposureTime"));
  EXPECT_THAT(offered({"set", "Widt"}), Contains("Width="));
  EXPECT_THAT(offered({"--xml", xml, "get", "A"}), ElementsAre("Alpha"));
  EXPECT_THAT(offered({"get", "--xml", xml, "Alpha", "A"}), ElementsAre("Alpha"));
  EXPECT_THAT(offered({"save", "x", "--features", "Width,Heigh"}), Contains("Width,Height"));
  EXPECT_THAT(offered({"--xml", ""}), ElementsAre());  // a file: the shell's own business
}

TEST_F(Reference, CompletionScriptsAreValidForTheirShells) {
  for (const char* shell : {"bash", "zsh", "fish"}) {
    const ToolResult script = run({"completion", shell});
    EXPECT_EQ(script.status, 0);
    EXPECT_THAT(script.out, HasSubstr("__complete"));
    if (runProgram({"which", shell}).status == 0) {
      EXPECT_EQ(runProgram({shell, "-n", write(shell, script.out)}).status, 0) << shell;
    }
  }
  EXPECT_EQ(run({"completion", "cmd"}).status, 2);
}

TEST_F(Reference, ManualPageHasEveryCommand) {
  const ToolResult page = run({"__man"});
  EXPECT_THAT(page.out, testing::StartsWith(".TH OXGENAPI 1"));
  for (const char* command : {"get", "firmware update", "doc", "report"}) {
    EXPECT_THAT(page.out, HasSubstr(std::string(".SS ") + command + "\n"));
  }
}

TEST_F(Reference, UnknownFeatureComesWithTheNamesThatAreNear) {
  EXPECT_THAT(run({"get", "ExposureTme"}).err, HasSubstr("Did you mean ExposureTime?"));
  EXPECT_THAT(run({"set", "width=5"}).err, HasSubstr("Did you mean Width?"));
  EXPECT_EQ(run({"describ", "Width"}).err, "oxgenapi: there is no command 'describ'\n  Did you mean describe?\n");
  EXPECT_THAT(run({"get", "Zzzzzzzzz"}).err, Not(HasSubstr("Did you mean")));
}

TEST_F(Reference, ReportNamesWhatFails) {
  const std::string xml = describe("<pFeature>Good</pFeature><pFeature>Bad</pFeature>",
                                   "<Integer Name='Good'><Value>1</Value></Integer>"
                                   "<IntSwissKnife Name='Bad'><Formula>1/0</Formula></IntSwissKnife>");
  const nlohmann::json report = runJson({"--xml", xml, "report"});
  EXPECT_EQ(report.at("featuresRead"), 1);
  ASSERT_EQ(report.at("failing").size(), 1u);
  EXPECT_EQ(report.at("failing")[0].at("name"), "Bad");
  EXPECT_EQ(report.at("description").at("bytes"), read("camera.xml").size());
}

TEST_F(Reference, PageCarriesEveryNodeAndCannotBeBrokenByATooltip) {
  const std::string xml = describe("<pFeature>Mode</pFeature>",
                                   "<Enumeration Name='Mode'><ToolTip>&lt;/script>&lt;!--</ToolTip>"
                                   "<EnumEntry Name='On'><Value>7</Value></EnumEntry><pValue>Reg</pValue></Enumeration>"
                                   "<IntReg Name='Reg'><Address>0x10</Address><Length>4</Length>"
                                   "<AccessMode>RO</AccessMode><pPort>Device</pPort></IntReg><Port Name='Device'/>");
  ASSERT_EQ(run({"doc", xml, "-o", path("page.html")}).status, 0);
  const std::string page = read("page.html");
  const std::string open = "<script type=\"application/json\" id=\"reference\">";
  const size_t start = page.find(open) + open.size();
  const auto reference = nlohmann::json::parse(page.substr(start, page.find("</script>", start) - start));
  EXPECT_EQ(reference.at("version"), "1.2.3");
  const auto& mode = reference.at("nodes").at("Mode");
  EXPECT_EQ(mode.at("toolTip"), "</script><!--");
  EXPECT_EQ(mode.at("access"), "RO");
  EXPECT_EQ(mode.at("entries"), nlohmann::json::parse(R"([["On", "7", ""]])"));
  EXPECT_EQ(mode.at("links")[0], nlohmann::json::parse(R"(["pValue", "Reg"])"));
  EXPECT_EQ(reference.at("nodes").at("Root").at("features"), nlohmann::json::parse(R"(["Mode"])"));
  EXPECT_EQ(run({"doc", write("no.xml", "text"), "-o", path("no.html")}).status, 1);
  EXPECT_FALSE(std::filesystem::exists(path("no.html")));
}

TEST_F(Reference, PageWorksInABrowser) {
  if (runProgram({"which", "chromium"}).status != 0) {
    GTEST_SKIP() << "needs the browser chromium";
  }
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
