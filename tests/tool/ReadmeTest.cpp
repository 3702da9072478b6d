#include <gmock/gmock.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "ToolRun.h"

namespace {

std::string sourceFolder() {
  return std::getenv("OX_SOURCE_DIR");
}
std::string libraryFolder() {
  return std::string(std::getenv("OX_BUILD_DIR")) + "/lib";
}

// The first fenced block of a language.
std::string codeBlock(const std::string& language) {
  std::ifstream file(sourceFolder() + "/README.md");
  const std::string text{std::istreambuf_iterator<char>(file), {}};
  const std::string fence = "```" + language + "\n";
  const size_t start = text.find(fence);
  const size_t end = text.find("\n```", start + 1);
  return start == std::string::npos ? "" : text.substr(start + fence.size(), end + 1 - start - fence.size());
}

// What an application would bring: here the simulated camera.
constexpr const char* kTransport = R"(
#include <OxSimulation/SimulatedCamera.h>
static ox::simulation::SimulatedCamera camera;
extern "C" int readCamera(void* to, int64_t at, int64_t size, void*) { return camera.read(to, at, size); }
extern "C" int writeCamera(const void* from, int64_t at, int64_t size, void*) { return camera.write(from, at, size); }
)";

}  // namespace

// The documents' examples are code like any other: they must compile without a warning and do what is said.
class Readme : public ToolTest {
 protected:
  std::string compile(const std::vector<std::string>& compiler, const std::string& source) const {
    std::vector<std::string> command = compiler;
    for (const char* folder : {"/include", "/platform/base/include", "/simulation/include"}) {
      command.push_back("-I" + sourceFolder() + folder);
    }
    for (const char* word : {"-Wall", "-Wextra", "-pedantic", "-Werror", "-c"}) {
      command.emplace_back(word);
    }
    command.insert(command.end(), {path(source), "-o", path(source + ".o")});
    const ToolResult result = runProgram(command);
    EXPECT_EQ(result.status, 0) << result.err;
    return path(source + ".o");
  }

  ToolResult linkAndRun(const std::vector<std::string>& objects) const {
    std::vector<std::string> command{"c++", "-o", path("example")};
    command.insert(command.end(), objects.begin(), objects.end());
    command.insert(command.end(), {"-L" + libraryFolder(), "-Wl,-rpath," + libraryFolder(), "-lOxSimulation",
                                   "-lOxGenApi", "-lOxBase", "-pthread"});
#if defined(__SANITIZE_ADDRESS__)
    command.emplace_back("-fsanitize=address,undefined");
#elif defined(__SANITIZE_THREAD__)
    command.emplace_back("-fsanitize=thread");
#endif
    const ToolResult linked = runProgram(command);
    EXPECT_EQ(linked.status, 0) << linked.err;
    return runProgram({path("example")});
  }
};

TEST_F(Readme, TheCExampleSetsAndReadsTheExposureTime) {
  std::filesystem::copy_file(sourceFolder() + "/simulation/camera.xml", path("camera.xml"));
  write("example.c", codeBlock("c"));
  write("transport.cpp", kTransport);
  const ToolResult result =
      linkAndRun({compile({"cc", "-std=c11"}, "example.c"), compile({"c++", "-std=c++20"}, "transport.cpp")});
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_EQ(result.out, "ExposureTime = 20000 us\n");
}

TEST_F(Readme, TheCppExampleShowsAFailuresText) {
  write("example.cpp", codeBlock("cpp"));
  const ToolResult result = linkAndRun({compile({"c++", "-std=c++20"}, "example.cpp")});
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_THAT(result.out, testing::StartsWith("Width: "));
}
