// Zipped descriptions: archives made of members out of the input, with the right checksums, then damaged byte by byte
// where the input says so. First a count of members (0: the input is the whole archive); for each a kind (which content
// and name); a count of damages, each a place (two bytes) and a byte; what is left is the content of members that ask
// for it.
#include <cstdint>
#include <cstdlib>
#include <string>

#include "OxBase/OxBase.h"
#include "OxGenApi/OxGenApi.h"
#include "calls/Vocabulary.h"
#include "library/StoredArchive.h"

namespace {

void require(bool holds) {
  if (!holds) std::abort();
}

std::string archiveOf(const uint8_t*& at, const uint8_t* end) {
  const auto next = [&] { return at == end ? uint8_t{0} : *at++; };
  const int count = next() % 4;
  if (count == 0) return {at, end};
  std::string kinds;
  for (int i = 0; i < count; ++i) kinds += static_cast<char>(next());
  std::string damages;
  for (int left = 3 * (next() % 8); left > 0; --left) damages += static_cast<char>(next());
  const std::string rest(at, end);
  Members members;
  for (const char kind : kinds) {
    constexpr const char* kNames[] = {"camera.xml",    "CAMERA.XML", "readme.txt", "",
                                      "../camera.xml", "folder/",    "a.zip"};
    const auto choice = static_cast<uint8_t>(kind);
    members.emplace_back(kNames[choice % std::size(kNames)], (choice & 0x80) != 0 ? rest : calls::smallDescription());
  }
  std::string archive = storedArchive(members);
  for (size_t i = 0; i + 2 < damages.size(); i += 3) {
    // From the end, where the directory is; the content in front of it is larger than the directory.
    const size_t place = static_cast<uint8_t>(damages[i]) | static_cast<size_t>(static_cast<uint8_t>(damages[i + 1]))
                                                                << 8;
    archive[archive.size() - 1 - place % archive.size()] = damages[i + 2];
  }
  return archive;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const calls::HostFiles files;
  const std::string archive = archiveOf(data, data + size);
  const std::string& path = files.paths()[1];
  files.replace(1, archive);

  NODEMAP map{};
  require(CreateNodeMap(map) == 0);
  const uint32_t result = NMLoadXMLFile(map, path.c_str());
  uint32_t count = 0;
  if (result == OXGENAPI_OK) {
    require(NMNodeCount(map, count) == OXGENAPI_OK);
  } else {
    // Refused as a whole, with a reason, and the node map is as it was.
    char text[16];
    size_t room = sizeof text;
    uint32_t code = 0;
    OxGetLastError(&code, text, &room);
    require(result == OXGENAPI_E_RUNTIME && code == result && text[0] != '\0');
    require(NMNodeCount(map, count) == OXGENAPI_E_INVALID_STATE);
    require(NMLoadXMLString(map, calls::smallDescription().c_str()) == OXGENAPI_OK);
  }
  OxIfaceContainerReleaseUseCounter(map);
  return 0;
}
