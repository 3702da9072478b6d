// What the tests of settings and files share: register snippets, a callback that listens, texts saved into memory, and
// files of the host.
#pragma once
#include <sys/resource.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <locale>
#include <sstream>
#include <string>
#include <vector>

#include "Device.h"

inline std::string intReg(const std::string& name, const std::string& address, const std::string& more = "") {
  return "<IntReg Name='" + name + "'><Streamable>Yes</Streamable><Address>" + address +
         "</Address><Length>4</Length><AccessMode>RW</AccessMode><pPort>Device</pPort>" + more + "</IntReg>";
}

inline std::string stringReg(const std::string& name, const std::string& address) {
  return "<StringReg Name='" + name + "'><Streamable>Yes</Streamable><Address>" + address +
         "</Address><Length>64</Length><AccessMode>RW</AccessMode><pPort>Device</pPort></StringReg>";
}

// What a settings callback heard; it answers `goOn`.
struct Heard {
  struct Problem {
    std::string node;  // "-" for a null handle
    uint32_t code;
    std::string text;
  };
  bool goOn = true;
  std::vector<Problem> problems;

  static std::string line(const std::string& node, uint32_t code, const std::string& text) {
    std::ostringstream line;
    line.imbue(std::locale::classic());  // whatever the suite runs under
    line << node << ' ' << std::hex << code << ' ' << text << '\n';
    return line.str();
  }
  std::string all() const {
    std::string lines;
    for (const Problem& each : problems) lines += line(each.node, each.code, each.text);
    return lines;
  }

  static bool callback(NODE node, uint32_t code, void* self) {
    auto& heard = *static_cast<Heard*>(self);
    std::string text = lastErrorText();
    std::string name = "-";
    if (node != NODE{}) {
      char buffer[64] = {};
      size_t size = sizeof buffer;
      NInfoAsString(node, NI_Name, buffer, size);
      name = buffer;
    }
    heard.problems.push_back({name, code, text});
    return heard.goOn;
  }
};

inline std::string saved(Device& device, const char* names, Heard* heard = nullptr, uint32_t expected = 0) {
  const auto save = [&](char* buffer, size_t* size) {
    return names != nullptr
               ? NMSaveSetStringEx(device.map, buffer, size, names, heard ? &Heard::callback : nullptr, heard)
               : NMSaveSetString(device.map, buffer, size, heard ? &Heard::callback : nullptr, heard);
  };
  size_t size = 0;
  EXPECT_EQ(save(nullptr, &size), expected) << lastErrorText();
  if (expected != 0) return {};
  if (heard) heard->problems.clear();
  std::string text(size, '\0');
  EXPECT_EQ(save(text.data(), &size), expected);
  EXPECT_EQ(size, text.size());
  text.pop_back();  // room for the zero
  return text;
}

inline std::string fileText(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  std::stringstream text;
  text << file.rdbuf();
  return text.str();
}

class TemporaryFile {
 public:
  explicit TemporaryFile(const std::string& content = {})
      : path(testing::TempDir() + "ox_settings_" + std::to_string(::getpid())) {
    std::ofstream(path, std::ios::binary) << content;
  }
  ~TemporaryFile() { std::remove(path.c_str()); }
  const std::string path;
};

// What the call answers while no file may grow beyond the limit.
template <class Call>
uint32_t withFileLimit(rlim_t limit, Call&& call) {
  rlimit former{};
  getrlimit(RLIMIT_FSIZE, &former);
  rlimit tight = former;
  tight.rlim_cur = limit;
  setrlimit(RLIMIT_FSIZE, &tight);  // past it the system would end the process with a signal
  const uint32_t result = call();
  setrlimit(RLIMIT_FSIZE, &former);
  return result;
}
