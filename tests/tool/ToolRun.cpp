#include "ToolRun.h"

#include <sys/wait.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <sstream>

namespace {

std::string environment(const char* name) {
  const char* value = std::getenv(name);
  return value == nullptr ? "" : value;
}

std::string quoted(const std::string& text) {
  std::string word = "'";
  for (const char character : text) word += character == '\'' ? "'\\''" : std::string(1, character);
  return word + "'";
}

std::string contents(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

}  // namespace

nlohmann::json ToolResult::json() const {
  nlohmann::json document = nlohmann::json::parse(out, nullptr, false);
  EXPECT_FALSE(document.is_discarded()) << "not JSON: " << out << err;
  return document.is_discarded() ? nlohmann::json() : document;
}

std::vector<nlohmann::json> ToolResult::records() const {
  std::vector<nlohmann::json> found;
  std::istringstream lines(out);
  for (std::string line; std::getline(lines, line);) found.push_back(nlohmann::json::parse(line));
  return found;
}

ToolTest::ToolTest() {
  std::string name = (std::filesystem::temp_directory_path() / "oxgenapi-test.XXXXXX").string();
  if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("no folder for the test");
  folder_ = name;
}

ToolTest::~ToolTest() {
  std::error_code error;
  std::filesystem::remove_all(folder_, error);
}

ToolResult ToolTest::run(const std::vector<std::string>& arguments) const {
  std::vector<std::string> command{environment("OX_BUILD_DIR") + "/bin/oxgenapi"};
  command.insert(command.end(), arguments.begin(), arguments.end());
  return runProgram(command);
}

nlohmann::json ToolTest::runJson(std::vector<std::string> arguments, int status) const {
  arguments.emplace_back("--json");
  const ToolResult result = run(arguments);
  EXPECT_EQ(result.status, status) << result.out << result.err;
  return result.json();
}

ToolResult ToolTest::runProgram(const std::vector<std::string>& command) const {
  const std::filesystem::path out = folder_ / ".out";
  const std::filesystem::path err = folder_ / ".err";
  std::string line = "cd " + quoted(folder_.string()) + " &&";
  for (const std::string& word : command) line += " " + quoted(word);
  line += " >" + quoted(out.string()) + " 2>" + quoted(err.string()) + " </dev/null";
  const int status = std::system(line.c_str());
  return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, contents(out), contents(err)};
}

std::string ToolTest::write(const std::string& name, const std::string& text) const {
  std::ofstream(folder_ / name, std::ios::binary) << text;
  return path(name);
}

std::string ToolTest::describe(const std::string& features, const std::string& nodes) const {
  return write("camera.xml",
               "<?xml version=\"1.0\"?>\n"
               "<RegisterDescription ModelName=\"M\" VendorName=\"V\" StandardNameSpace=\"None\" "
               "SchemaMajorVersion=\"1\" SchemaMinorVersion=\"1\" SchemaSubMinorVersion=\"0\" MajorVersion=\"1\" "
               "MinorVersion=\"2\" SubMinorVersion=\"3\" ProductGuid=\"P\" VersionGuid=\"G\" "
               "xmlns=\"http://www.genicam.org/GenApi/Version_1_1\">\n" +
                   nodes + "<Category Name=\"Root\" NameSpace=\"Standard\">" + features +
                   "</Category>\n</RegisterDescription>\n");
}

std::string ToolTest::read(const std::string& name) const { return contents(folder_ / name); }

std::vector<std::string> ToolTest::files() const {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(folder_))
    if (const std::string name = entry.path().filename().string(); !name.starts_with(".")) names.push_back(name);
  std::sort(names.begin(), names.end());
  return names;
}
