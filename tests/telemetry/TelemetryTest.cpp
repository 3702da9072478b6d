// Records from registration to the line that comes out. Settings are fixed at registration, so every test registers
// modules of its own.
#include <OxTelemetry/OxTelemetry.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cmath>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <limits>
#include <nlohmann/json.hpp>
#include <optional>
#include <stdexcept>
#include <thread>
#include <vector>

namespace {

using nlohmann::json;

// Sets what a module finds in the environment, and takes it away again.
struct Environment {
  explicit Environment(const char* level, const std::string& path = {}) {
    OxTSetSink(nullptr, nullptr, OXT_LEVEL_OFF);
    if (level != nullptr) setenv("OX_TELEMETRY_LEVEL", level, 1);
    if (!path.empty()) setenv("OX_TELEMETRY_FILE", path.c_str(), 1);
  }
  ~Environment() {
    unsetenv("OX_TELEMETRY_LEVEL");
    unsetenv("OX_TELEMETRY_FILE");
  }
};

struct Module {
  explicit Module(const std::string& name) {
    EXPECT_EQ(OxTGetModule(name.c_str(), "1.2.3", &module, &settings), 0);
    EXPECT_NE(module, nullptr);
  }
  explicit Module(const Environment&) : Module("module" + std::to_string(++count)) {}

  OxTLog log(uint32_t level) const {
    OxTLog given = nullptr;
    EXPECT_EQ(OxTCreateLog(module, level, &given), 0);
    return given;
  }
  int32_t send(const std::string& text) const { return OxTSendLog(log(OXT_LEVEL_ERROR), text.c_str()); }

  OxTModule module = nullptr;
  OxTSettings settings{OXT_SETTINGS_REVISION, OXT_NOT_REGISTERED, 0};
  static inline int count = 0;
};

// Collects the lines of the modules registered while it is installed.
struct Sink {
  explicit Sink(uint32_t level) { OxTSetSink(&take, this, level); }
  ~Sink() { OxTSetSink(nullptr, nullptr, OXT_LEVEL_OFF); }
  static void take(const char* line, size_t size, void* self) {
    EXPECT_EQ(line[size], '\0');
    static_cast<Sink*>(self)->lines.emplace_back(line, size);
  }
  json only() const {
    EXPECT_EQ(lines.size(), 1u);
    return lines.empty() ? json() : json::parse(lines.front());
  }
  std::vector<std::string> lines;
};

struct TemporaryFile {
  TemporaryFile() {
    const int descriptor = mkstemp(name.data());
    EXPECT_GE(descriptor, 0);
    close(descriptor);
  }
  ~TemporaryFile() { std::filesystem::remove(name); }
  std::vector<json> lines() const {
    std::vector<json> found;
    std::ifstream file(name);
    for (std::string line; std::getline(file, line);) found.push_back(json::parse(line));
    return found;
  }
  std::string name = (std::filesystem::temp_directory_path() / "oxtelemetryXXXXXX").string();
};

TEST(Telemetry, EnvironmentDecidesWhetherAndFromWhichLevelAModuleReports) {
  struct Case {
    const char* level;
    uint32_t enabled, configured;
  };
  for (const Case& c : {Case{nullptr, 0, 4}, Case{"", 0, 4}, Case{"0", 1, 0}, Case{"2", 1, 2}, Case{"3", 1, 3},
                        Case{"4", 0, 4}, Case{"-1", 0, 4}, Case{"31", 0, 4}, Case{"error", 0, 4}, Case{" 1", 0, 4}}) {
    const Environment environment(c.level, "/dev/null");
    const Module module(environment);
    EXPECT_EQ(module.settings.Enabled, c.enabled) << (c.level ? c.level : "unset");
    EXPECT_EQ(module.settings.Level, c.configured);
    EXPECT_EQ(module.settings.Revision, 2u);
    for (uint32_t level = 0; level < 6; ++level) {
      const OxTLog log = module.log(level);
      EXPECT_EQ(log != nullptr, level >= c.configured && level < 4) << level;
      if (log != nullptr) {
        EXPECT_EQ(OxTSendLog(log, "x"), 0);
      }
    }
  }
}

TEST(Telemetry, SettingsStayAsTheyWereAtRegistration) {
  Sink sink(OXT_LEVEL_WARNING);
  const Module first("fixed");
  OxTSetSink(nullptr, nullptr, OXT_LEVEL_OFF);
  const Module again("fixed");
  EXPECT_EQ(first.module, again.module);
  EXPECT_EQ(again.settings.Level, OXT_LEVEL_WARNING);
  EXPECT_EQ(again.send("still heard"), 0);
  EXPECT_EQ(sink.only()["text"], "still heard");
}

TEST(Telemetry, LineNamesModuleLevelTextAndAttributes) {
  Sink sink(OXT_LEVEL_DEBUG);
  const Module module("Camera");
  const OxTLog log = module.log(OXT_LEVEL_WARNING);
  OxTAttribute entries[7] = {};
  entries[0] = {"name", OXT_TAG_STRING, {.String = "Gain"}};
  entries[1] = {"verify", OXT_TAG_BOOLEAN, {.Boolean = 1}};
  entries[2] = {"value", OXT_TAG_INTEGER, {.Integer = std::numeric_limits<int64_t>::min()}};
  entries[3] = {"limit", OXT_TAG_DOUBLE, {.Double = 0.1}};
  entries[4] = {"missing", OXT_TAG_STRING, {.String = nullptr}};
  entries[5] = {"nan", OXT_TAG_DOUBLE, {.Double = std::nan("")}};
  entries[6] = {"low", OXT_TAG_DOUBLE, {.Double = -std::numeric_limits<double>::infinity()}};
  EXPECT_EQ(OxTAttributeMapStore(log, entries, 7), 0);
  entries[0].Value.String = "Gamma";
  EXPECT_EQ(OxTAttributeMapStore(log, entries, 1), 0) << "the later value replaces the earlier";
  EXPECT_EQ(OxTSendLog(log, "Node::Set: failed"), 0);

  json line = sink.only();
  EXPECT_EQ(sink.lines.front().find('\n'), std::string::npos);
  const std::string time = line["time"];
  EXPECT_EQ(time.size(), 27u) << time;
  EXPECT_EQ(time.substr(0, 2), "20");
  EXPECT_EQ(time.back(), 'Z');
  line.erase("time");
  EXPECT_EQ(line, json::parse(R"({"module": "Camera", "version": "1.2.3", "level": 2, "text": "Node::Set: failed",
      "attributes": {"name": "Gamma", "verify": true, "value": -9223372036854775808, "limit": 0.1, "nan": "NaN",
                     "low": "-Infinity"}})"));
}

TEST(Telemetry, AnyBytesBecomeValidJson) {
  struct Case {
    const char* given;
    const char* parsed;
  };
  const Case cases[] = {
      {"quote \" backslash \\ slash /", "quote \" backslash \\ slash /"},
      {"\x01\b\t\n\r\x1f\x7f", "\x01\b\t\n\r\x1f\x7f"},
      {"B\xc3\xbcro \xe2\x82\xac \xf0\x9f\x93\xb7", "B\xc3\xbcro \xe2\x82\xac \xf0\x9f\x93\xb7"},
      {"\xff\x80", "\uFFFD\uFFFD"},
      {"cut \xe2\x82", "cut \uFFFD"},
      {"overlong \xc0\xaf", "overlong \uFFFD\uFFFD"},
      {"surrogate \xed\xa0\x80", "surrogate \uFFFD\uFFFD\uFFFD"},
      {"beyond \xf4\x90\x80\x80", "beyond \uFFFD\uFFFD\uFFFD\uFFFD"},
      {nullptr, ""},
  };
  for (const Case& c : cases) {
    Sink sink(OXT_LEVEL_ERROR);
    const Module module("bytes" + std::to_string(&c - cases));
    const OxTLog log = module.log(OXT_LEVEL_ERROR);
    const OxTAttribute entry{"\"\xfe", OXT_TAG_STRING, {.String = c.given}};
    EXPECT_EQ(OxTAttributeMapStore(log, &entry, 1), 0);
    EXPECT_EQ(OxTSendLog(log, c.given), 0);
    const json line = sink.only();
    EXPECT_EQ(line["text"], c.parsed);
    EXPECT_EQ(line["attributes"].value("\"\uFFFD", ""), c.parsed);
  }
}

TEST(Telemetry, WrongArgumentsAreRefused) {
  const auto invalid = static_cast<int32_t>(0x80000002);
  Sink sink(OXT_LEVEL_DEBUG);
  const Module module("arguments");
  OxTLog log = nullptr;
  EXPECT_EQ(OxTCreateLog(module.module, 3, nullptr), invalid);
  EXPECT_EQ(OxTCreateLog(nullptr, 3, &log), static_cast<int32_t>(0x8000001d));
  EXPECT_EQ(OxTCreateLog(reinterpret_cast<OxTModule>(&log), 3, &log), static_cast<int32_t>(0x8000001d));
  EXPECT_EQ(OxTSendLog(nullptr, "x"), invalid);
  EXPECT_EQ(OxTAttributeMapStore(nullptr, nullptr, 0), invalid);

  log = module.log(3);
  const OxTAttribute entries[] = {{nullptr, OXT_TAG_INTEGER, {}}, {"tag", 9, {}}, {"kept", OXT_TAG_INTEGER, {}}};
  EXPECT_EQ(OxTAttributeMapStore(log, nullptr, 1), invalid);
  EXPECT_EQ(OxTAttributeMapStore(log, entries, 3), invalid);
  EXPECT_EQ(OxTSendLog(log, ""), 0);
  EXPECT_EQ(sink.only()["attributes"], json({{"kept", 0}}));

  OxTModule unknown = module.module;
  OxTSettings settings{3, OXT_NOT_REGISTERED, 0};
  EXPECT_EQ(OxTGetModule("m", "v", &unknown, &settings), invalid);
  EXPECT_EQ(unknown, nullptr);
  EXPECT_EQ(settings.Enabled, OXT_DISABLED);
  EXPECT_EQ(OxTGetModule("m", "v", &unknown, nullptr), invalid);
}

TEST(Telemetry, SinkThatThrowsOrReportsItselfDoesNoHarm) {
  struct Troublesome {
    std::optional<Module> module;
    int calls = 0;
    bool recordInside = false;
  } trouble;
  OxTSetSink(
      [](const char*, size_t, void* data) {
        auto& self = *static_cast<Troublesome*>(data);
        ++self.calls;
        self.recordInside = self.module->log(OXT_LEVEL_ERROR) != nullptr;
        throw std::runtime_error("sink is full");
      },
      &trouble, OXT_LEVEL_ERROR);
  trouble.module.emplace("troublesome");
  const uint64_t dropped = OxTDroppedLineCount();
  EXPECT_EQ(trouble.module->send("one"), static_cast<int32_t>(0x80000003));
  EXPECT_EQ(trouble.module->send("two"), static_cast<int32_t>(0x80000003));
  EXPECT_EQ(OxTDroppedLineCount() - dropped, 2u);
  EXPECT_EQ(trouble.calls, 2);
  EXPECT_FALSE(trouble.recordInside);
  OxTSetSink(nullptr, nullptr, OXT_LEVEL_OFF);
}

TEST(TelemetryFile, LinesOfManyThreadsAreAppendedWhole) {
  constexpr int kThreads = 4, kLines = 200;
  TemporaryFile file;
  std::ofstream(file.name) << "{\"text\": \"was there before\"}\n";
  const Environment environment("3", file.name);
  const Module module(environment);
  {
    std::vector<std::jthread> threads;
    for (int i = 0; i < kThreads; ++i) {
      threads.emplace_back([&] {
        for (int line = 0; line < kLines; ++line) EXPECT_EQ(module.send(std::string(300, 'x')), 0);
      });
    }
  }
  const std::vector<json> lines = file.lines();
  ASSERT_EQ(lines.size(), kThreads * kLines + 1u);
  EXPECT_EQ(lines.front()["text"], "was there before");
  EXPECT_EQ(lines.back()["text"], std::string(300, 'x'));
}

TEST(TelemetryFile, UnwritablePathsDropAndCountEveryLine) {
  for (const char* path : {"/nonexistent/telemetry.log", "/", "/dev/full"}) {
    const Environment environment("3", path);
    const Module module(environment);
    EXPECT_EQ(module.settings.Enabled, OXT_ENABLED);
    const uint64_t dropped = OxTDroppedLineCount();
    EXPECT_EQ(module.send("lost"), static_cast<int32_t>(0x80000003)) << path;
    EXPECT_EQ(OxTDroppedLineCount() - dropped, 1u);
  }
}

TEST(TelemetryFile, PipeNeitherBlocksNorSignals) {
  TemporaryFile pipe;
  std::filesystem::remove(pipe.name);
  ASSERT_EQ(mkfifo(pipe.name.c_str(), 0600), 0);
  int reader = open(pipe.name.c_str(), O_RDONLY | O_NONBLOCK);
  const Environment environment("3", pipe.name);
  const Module module(environment);
  const std::string text(3000, 'p');
  int sent = 0;
  while (module.send(text) == 0) ++sent;  // nobody reads: full after a while
  EXPECT_GT(sent, 0);

  close(reader);
  EXPECT_NE(module.send("nobody listens"), 0) << "and SIGPIPE has not ended the process";
  sigset_t pending;
  sigpending(&pending);
  EXPECT_EQ(sigismember(&pending, SIGPIPE), 0);
}

TEST(TelemetryFile, LineCutByASizeLimitBreaksNoOtherLine) {
  TemporaryFile file;
  const Environment environment("3", file.name);
  const Module module(environment);
  rlimit before{};
  getrlimit(RLIMIT_FSIZE, &before);
  const rlimit tight{1000, before.rlim_max};
  setrlimit(RLIMIT_FSIZE, &tight);
  const int32_t cut = module.send(std::string(2000, 'c'));
  const int32_t beyond = module.send("beyond the limit");
  setrlimit(RLIMIT_FSIZE, &before);
  EXPECT_LT(cut, 0);
  EXPECT_LT(beyond, 0);
  EXPECT_EQ(module.send("after"), 0);
  std::ifstream lines(file.name);
  std::string torn, whole;
  std::getline(lines, torn);
  std::getline(lines, whole);
  EXPECT_EQ(torn.size(), 1000u);
  EXPECT_EQ(json::parse(whole)["text"], "after");
}

TEST(TelemetryFile, DescriptorThatNowNamesAnotherFileIsLeftAlone) {
  TemporaryFile file, other;
  const Environment environment("3", file.name);
  const int next = dup(0);  // the number that the module's file is going to get
  close(next);
  const Module module(environment);
  const int foreign = open(other.name.c_str(), O_WRONLY);
  ASSERT_EQ(dup2(foreign, next), next);
  EXPECT_LT(module.send("not for you"), 0);
  EXPECT_EQ(std::filesystem::file_size(other.name), 0u);
  close(foreign);
}

TEST(TelemetryFile, StandardErrorIsTheDefaultAndKeepsItsOtherOutput) {
  TemporaryFile file;
  const int target = open(file.name.c_str(), O_WRONLY);  // not for appending, as a shell's 2> opens it
  const int saved = dup(STDERR_FILENO);
  dup2(target, STDERR_FILENO);
  {
    const Environment environment("3");
    const Module module(environment);
    EXPECT_EQ(::write(STDERR_FILENO, "{\"own\":1}\n", 10), 10);
    EXPECT_EQ(module.send("to stderr"), 0);
    EXPECT_EQ(::write(STDERR_FILENO, "{\"own\":2}\n", 10), 10);
  }
  dup2(saved, STDERR_FILENO);
  close(saved);
  close(target);
  const std::vector<json> lines = file.lines();
  ASSERT_EQ(lines.size(), 3u);
  EXPECT_EQ(lines[0]["own"], 1);
  EXPECT_EQ(lines[1]["text"], "to stderr");
  EXPECT_EQ(lines[2]["own"], 2);
}

}  // namespace
