// Sessions with the tool, as one types them and as they look: each file below transcripts/ is run in a folder of its
// own.
// "$ " begins a command for bash ("> " goes on with it), what follows is its output, both streams together, "[1]" its
// exit status if that is not 0, "# " a remark. "..." in an output stands for anything.
#include <gmock/gmock.h>

#include <cstdlib>
#include <fstream>

#include "ToolRun.h"

namespace {

namespace fs = std::filesystem;

fs::path folder() { return fs::path(std::getenv("OX_SOURCE_DIR")) / "tests/tool/transcripts"; }

std::vector<std::string> transcripts() {
  std::vector<std::string> names;
  for (const auto& entry : fs::directory_iterator(folder()))
    if (entry.path().extension() == ".txt") names.push_back(entry.path().stem());
  return names;
}

struct Step {
  int line;
  std::string command;
  std::string output;
};

std::vector<Step> stepsOf(const std::string& name) {
  std::vector<Step> steps;
  std::ifstream file(folder() / (name + ".txt"));
  int number = 0;
  for (std::string line; std::getline(file, line);) {
    ++number;
    if (line.starts_with("$ "))
      steps.push_back({number, line.substr(2), ""});
    else if (line.starts_with("> "))
      steps.back().command += "\n" + line.substr(2);
    else if (!line.starts_with("# "))
      steps.back().output += line + "\n";
  }
  return steps;
}

// Whether the pieces between "..." are found one after the other, the first at the start and the last at the end.
bool fits(std::string_view text, std::string_view pattern) {
  constexpr std::string_view kAnything = "...";
  bool isFirst = true;
  for (size_t end = pattern.find(kAnything); end != pattern.npos; end = pattern.find(kAnything), isFirst = false) {
    const size_t found = text.find(pattern.substr(0, end));
    if (found == text.npos || (isFirst && found != 0)) return false;
    text.remove_prefix(found + end);
    pattern.remove_prefix(end + kAnything.size());
  }
  return isFirst ? text == pattern : text.ends_with(pattern);
}

constexpr const char* kPrelude =
    "exec 2>&1; PATH=$OX_BUILD_DIR/bin:$PATH\n"
    "camera() { oxgenapi --state camera.state \"$@\"; }\n"
    "bench() { oxgenapi --xml bench.xml --memory bench.mem \"$@\"; }\n";

}  // namespace

class Transcript : public ToolTest, public testing::WithParamInterface<std::string> {};

TEST_P(Transcript, LooksAsWritten) {
  for (const auto& entry : fs::directory_iterator(folder()))
    if (entry.path().extension() != ".txt") fs::copy(entry.path(), path(entry.path().filename()));
  for (const Step& step : stepsOf(GetParam())) {
    const ToolResult result = runProgram({"timeout", "60", "bash", "-c", kPrelude + step.command});
    std::string output = result.out;
    output += output.empty() || output.ends_with('\n') ? "" : "\n";
    output += result.status == 0 ? "" : "[" + std::to_string(result.status) + "]\n";
    EXPECT_TRUE(fits(output, step.output)) << GetParam() << ".txt:" << step.line << ": " << step.command << "\nprints\n"
                                           << output << "instead of\n"
                                           << step.output;
  }
}

INSTANTIATE_TEST_SUITE_P(Tool, Transcript, testing::ValuesIn(transcripts()),
                         [](const auto& file) { return file.param; });
