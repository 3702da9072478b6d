// Settings files of arbitrary content, applied to a small node map. The first byte decides whether values are validated
// and at which problem the callback says stop. Whatever was applied, what is saved then must be what it is after being
// applied again, as far as the text form can carry it.
#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <string>

#include "OxBase/OxBase.h"
#include "OxGenApi/OxGenApi.h"

namespace {

constexpr const char* kDescription =
    "<RegisterDescription ModelName='F' VendorName='F' StandardNameSpace='None' SchemaMajorVersion='1' "
    "SchemaMinorVersion='1' SchemaSubMinorVersion='0' MajorVersion='1' MinorVersion='0' SubMinorVersion='0' "
    "ProductGuid='1' VersionGuid='1' xmlns='http://www.genicam.org/GenApi/Version_1_1'>"
    "<Integer Name='Int'><Streamable>Yes</Streamable><Value>1</Value><Min>-5</Min><Max>1000</Max></Integer>"
    "<Float Name='Real'><Streamable>Yes</Streamable><Value>1.5</Value></Float>"
    "<String Name='Text'><Streamable>Yes</Streamable><Value>t</Value></String>"
    "<Boolean Name='Bool'><Streamable>Yes</Streamable><Value>true</Value></Boolean>"
    "<Enumeration Name='Enum'><Streamable>Yes</Streamable><EnumEntry Name='A'><Value>0</Value></EnumEntry>"
    "<EnumEntry Name='B'><Value>1</Value></EnumEntry><Value>0</Value><pSelected>Sel</pSelected></Enumeration>"
    "<Integer Name='Index'><Value>0</Value><Min>0</Min><Max>3</Max><pSelected>Sel</pSelected></Integer>"
    "<Integer Name='Sel'><Streamable>Yes</Streamable><Value>7</Value></Integer>"
    "<Register Name='Reg'><Address>0</Address><Length>4</Length><AccessMode>RW</AccessMode><pPort>Device</pPort>"
    "</Register><Port Name='Device'/></RegisterDescription>";

void require(bool holds) {
  if (!holds) std::abort();
}

NODEMAP loadedMap() {
  NODEMAP map{};
  require(CreateNodeMap(map) == 0);
  require(NMLoadXMLString(map, kDescription) == 0);
  return map;
}

bool stopWhenCountedDown(NODE, uint32_t code, void* remaining) {
  require(code != 0);
  auto& left = *static_cast<int*>(remaining);
  return --left != 0;
}

std::string saved(NODEMAP map) {
  size_t size = 0;
  require(NMSaveSetString(map, nullptr, &size, nullptr, nullptr) == 0);
  std::string text(size, '\0');
  require(NMSaveSetString(map, text.data(), &size, nullptr, nullptr) == 0);
  text.pop_back();
  return text;
}

// A value that holds a line feed or a byte that the reader takes otherwise does not come back.
bool survivesTheTextForm(const std::string& text) {
  size_t lines = 0;
  for (const char c : text) lines += c == '\n';
  return text.find('\\') == std::string::npos && lines == 5 + 8;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size == 0) return 0;
  [[maybe_unused]] static const NODEMAP keeper = loadedMap();  // the description stays parsed
  static const int file = memfd_create("settings", 0);
  static const std::string path = "/proc/self/fd/" + std::to_string(file);
  require(ftruncate(file, 0) == 0);
  require(pwrite(file, data + 1, size - 1, 0) == static_cast<ssize_t>(size - 1));

  const NODEMAP map = loadedMap();
  int remaining = data[0] >> 1;  // 0: never stop
  const uint32_t result = NMLoadSetEx(map, path.c_str(), (data[0] & 1) != 0, &stopWhenCountedDown, &remaining);
  require(result == 0 || remaining == 0);

  saved(map);  // brings the selectors to where saving leaves them
  const std::string text = saved(map);
  if (survivesTheTextForm(text)) {
    require(NMLoadSetString(map, text.c_str(), false, nullptr, nullptr) == 0);
    saved(map);
    require(saved(map) == text);
  }
  OxIfaceContainerReleaseUseCounter(reinterpret_cast<OxHandle>(map));
  return 0;
}
