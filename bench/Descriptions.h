// The descriptions that programs measure: a generated one, and every file of the folder in OXGENAPI_DESCRIPTIONS.
#pragma once
#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

struct NamedDescription {
  std::string name, text;
};

inline std::string generatedDescription() {
  std::string text =
      "<RegisterDescription ModelName='M' VendorName='V' StandardNameSpace='None' SchemaMajorVersion='1' "
      "SchemaMinorVersion='1' SchemaSubMinorVersion='0' MajorVersion='1' MinorVersion='0' SubMinorVersion='0' "
      "ProductGuid='P' VersionGuid='V' xmlns='http://www.genicam.org/GenApi/Version_1_1'>\n<Port Name='Device'/>\n"
      "<Category Name='Root'>";
  constexpr int kFeatures = 2000;
  for (int i = 0; i < kFeatures; ++i) text += "<pFeature>Feature" + std::to_string(i) + "</pFeature>\n";
  text += "</Category>\n";
  for (int i = 0; i < kFeatures; ++i) {
    const std::string number = std::to_string(i);
    text += "<Integer Name='Feature" + number + "'>\n  <ToolTip>What feature " + number + " does.</ToolTip>\n" +
            "  <Visibility>Expert</Visibility>\n  <pValue>Register" + number + "</pValue>\n  <Min>0</Min>\n" +
            "  <Max>100</Max>\n</Integer>\n<IntReg Name='Register" + number + "'>\n  <Address>" +
            std::to_string(4096 + 4 * i) + "</Address>\n  <Length>4</Length>\n  <AccessMode>RW</AccessMode>\n" +
            "  <pPort>Device</pPort>\n  <Sign>Unsigned</Sign>\n  <Endianess>BigEndian</Endianess>\n</IntReg>\n";
  }
  return text + "</RegisterDescription>\n";
}

// Files in the order of their names, which are theirs without ".xml".
inline std::vector<NamedDescription> descriptions() {
  std::vector<NamedDescription> found{{"generated", generatedDescription()}};
  const char* const folder = std::getenv("OXGENAPI_DESCRIPTIONS");
  if (folder == nullptr) return found;
  std::vector<std::filesystem::path> files;
  for (const auto& entry : std::filesystem::directory_iterator(folder))
    if (entry.path().extension() == ".xml") files.push_back(entry.path());
  std::sort(files.begin(), files.end());
  for (const auto& file : files) {
    std::ifstream stream(file, std::ios::binary);
    found.push_back({file.stem().string(), {std::istreambuf_iterator<char>(stream), {}}});
  }
  return found;
}

// The largest there is: real ones before the generated one.
inline NamedDescription largestDescription() {
  std::vector<NamedDescription> all = descriptions();
  return *std::max_element(all.begin() + (all.size() > 1), all.end(),
                           [](const auto& a, const auto& b) { return a.text.size() < b.text.size(); });
}
