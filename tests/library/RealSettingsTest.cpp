// Settings of real descriptions over patterned memory: every byte of the device depends on its address and is not zero.
#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <set>

#include "OxSimulation/MemoryDevice.h"
#include "SettingsBench.h"

namespace {

class PatternedCamera {
 public:
  explicit PatternedCamera(const std::string& xml) {
    EXPECT_EQ(CreateNodeMap(map), OXGENAPI_OK);
    EXPECT_EQ(NMLoadXMLString(map, xml.c_str()), OXGENAPI_OK) << lastErrorText();
    EXPECT_EQ(NMConnectPort(map, read, write, nullptr, this), OXGENAPI_OK);
  }
  ~PatternedCamera() { release(map); }
  PatternedCamera(const PatternedCamera&) = delete;
  PatternedCamera& operator=(const PatternedCamera&) = delete;

  // All that is streamable.
  std::string save() {
    std::string text(size_t{1} << 20, '\0');
    size_t size = text.size();
    EXPECT_EQ(NMSaveSetString(map, text.data(), &size, nullptr, nullptr), OXGENAPI_OK);
    EXPECT_LT(size, text.size());
    text.resize(size - 1);
    return text;
  }

  NODEMAP map{};
  int64_t reads = 0;
  int64_t repeated = 0;  // reads of a place that was read before, with no write since

 private:
  static int read(void* to, int64_t address, int64_t length, void* self) {
    auto& camera = *static_cast<PatternedCamera*>(self);
    ++camera.reads;
    if (!camera.known_.emplace(address, length).second) ++camera.repeated;
    return camera.memory_.read(to, address, length);
  }
  static int write(const void* from, int64_t address, int64_t length, void* self) {
    auto& camera = *static_cast<PatternedCamera*>(self);
    camera.known_.clear();
    return camera.memory_.write(from, address, length);
  }
  ox::simulation::MemoryDevice memory_{ox::simulation::MemoryDevice::Fill::kPattern};
  std::set<std::pair<int64_t, int64_t>> known_;
};

class RealSettings : public testing::TestWithParam<const char*> {};

TEST_P(RealSettings, AreSavedLoadedAndSavedAgainAlike) {
  const char* folder = std::getenv("OXGENAPI_DESCRIPTIONS");
  const auto path = std::filesystem::path(folder ? folder : "") / GetParam();
  if (!folder || !std::filesystem::exists(path)) GTEST_SKIP() << "OXGENAPI_DESCRIPTIONS has no " << GetParam();
  std::string xml = fileText(path);

  PatternedCamera camera(xml);
  camera.save();
  const std::string text = camera.save();
  ASSERT_GT(std::count(text.begin(), text.end(), '\n'), 5);
  ASSERT_EQ(NMLoadSetString(camera.map, text.c_str(), false, nullptr, nullptr), OXGENAPI_OK);
  camera.save();
  const std::string again = camera.save();
  EXPECT_EQ(again, text);

  // Where every register may be cached and no selector moves, no place is read twice.
  std::string names;
  std::stringstream lines(text);
  for (std::string line; std::getline(lines, line);)
    if (const size_t end = line.find(" = \""); end < line.find('[')) names += line.substr(0, end) + '|';
  for (size_t at; (at = xml.find(">NoCache<")) != std::string::npos;) xml.replace(at, 9, ">WriteThrough<");
  PatternedCamera cacheable(xml);
  size_t size = 0;
  EXPECT_EQ(NMSaveSetStringEx(cacheable.map, nullptr, &size, names.c_str(), nullptr, nullptr), OXGENAPI_OK);
  EXPECT_GT(cacheable.reads, 10);
  EXPECT_EQ(cacheable.repeated, 0);
}

INSTANTIATE_TEST_SUITE_P(, RealSettings,
                         testing::Values("AVT_Mako_G234C.xml", "Basler-acA640-300gm.xml", "FLIR_SC6700.xml"));

}  // namespace
