// What the shared library shows to the outside.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <set>
#include <sstream>
#include <string>
#include <string_view>

#include "OxGenApi/OxGenApi.h"

extern "C" uint32_t oxCallFromC(void);

namespace {

std::string folder(const char* variable) {
  const char* value = std::getenv(variable);
  return value == nullptr ? std::string() : value;
}

std::set<std::string> dynamicSymbols(const std::string& library) {
  std::set<std::string> names;
  const std::unique_ptr<FILE, int (*)(FILE*)> pipe(
      popen(("nm -D --defined-only --format=posix " + library).c_str(), "r"), &pclose);
  char line[512];
  while (pipe && std::fgets(line, sizeof line, pipe.get()) != nullptr)
    names.insert(std::string(line).substr(0, std::string(line).find(' ')));
  return names;
}

std::set<std::string> declaredFunctions(const std::string& includeFolder) {
  std::set<std::string> names;
  for (const char* header : {"NodeMap.h", "Node.h", "FirmwareUpdate.h", "Version.h"}) {
    std::stringstream text;
    text << std::ifstream(includeFolder + header).rdbuf();
    // The name before the parenthesis, after each mark of an export.
    constexpr std::string_view kMark = "OXGENAPI_EXPORT ";
    const std::string source = text.str();
    for (size_t at = source.find(kMark); at != std::string::npos; at = source.find(kMark, at + 1)) {
      const size_t end = source.find('(', at);
      const size_t begin = source.find_last_of(" *\n", end) + 1;
      names.insert(source.substr(begin, end - begin));
    }
  }
  return names;
}

// What the linker is told to export; a name that does not exist exports nothing and shows nowhere else.
std::set<std::string> listedSymbols(const std::string& exportMap) {
  std::set<std::string> names;
  std::ifstream file(exportMap);
  std::string word;
  while (file >> word && word != "global:") {
  }
  while (file >> word && word != "local:") names.insert(word.substr(0, word.size() - 1));
  return names;
}

TEST(ExportList, TheLibraryExportsWhatTheHeadersDeclareAndNothingElse) {
  const std::string build = folder("OX_BUILD_DIR");
  const std::string source = folder("OX_SOURCE_DIR");
  if (build.empty() || source.empty()) GTEST_SKIP() << "OX_BUILD_DIR and OX_SOURCE_DIR are not set";
  const auto declared = declaredFunctions(source + "/include/OxGenApi/");
  EXPECT_EQ(declared.size(), 101u);
  EXPECT_EQ(dynamicSymbols(build + "/lib/libOxGenApi.so.3"), declared);
  EXPECT_EQ(listedSymbols(source + "/src/exports.map"), declared);
}

TEST(ExportList, TheHeadersServeC) { EXPECT_EQ(oxCallFromC(), 0u); }

TEST(ExportList, VersionsAreFixed) {
  uint32_t parts[3] = {};
  EXPECT_EQ(GetGenApiVersion(&parts[0], &parts[1], &parts[2]), 0u);
  EXPECT_EQ(parts[0] * 100 + parts[1] * 10 + parts[2], 342u);
  Resource_GetFileVersion(&parts[0], &parts[1], &parts[2]);
  EXPECT_EQ(parts[0] * 100 + parts[1] * 10 + parts[2], 310u);
  EXPECT_STREQ(Resource_GetOriginalFileName(), "libOxGenApi.so");
}

}  // namespace
