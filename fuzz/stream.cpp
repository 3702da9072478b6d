// JSON documents of nodes with any text as value: always JSON, and always the text, save for bytes that are not UTF-8.
// Narrow and wide dumps say the same, whatever room they are given.
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <nlohmann/json.hpp>
#include <string>

#include "OxBase/OxBase.h"
#include "OxGenApi/OxGenApi.h"

namespace {

constexpr const char* kDescription =
    "<RegisterDescription ModelName='F' VendorName='F' StandardNameSpace='None' SchemaMajorVersion='1' "
    "SchemaMinorVersion='1' SchemaSubMinorVersion='0' MajorVersion='1' MinorVersion='0' SubMinorVersion='0' "
    "ProductGuid='1' VersionGuid='1' xmlns='http://www.genicam.org/GenApi/Version_1_1'>"
    "<String Name='Text'><DisplayName>A &quot;text&quot; \\ &#x1F600;</DisplayName><Value>t</Value></String>"
    "<Port Name='Device'/></RegisterDescription>";

void require(bool holds) {
  if (!holds) std::abort();
}

std::string dumped(NODEMAPSTREAM stream) {
  size_t size = 0;
  require(NMStreamDump(stream, nullptr, &size) == 0 && size > 0);
  std::string text(size, '?');
  require(NMStreamDump(stream, text.data(), &size) == 0 && text.back() == '\0');
  text.pop_back();
  return text;
}

NODEMAP loadedMap() {
  NODEMAP map{};
  require(CreateNodeMap(map) == 0 && NMLoadXMLString(map, kDescription) == 0);
  return map;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size == 0) return 0;
  [[maybe_unused]] static const NODEMAP keeper = loadedMap();  // the description stays parsed
  const NODEMAP map = loadedMap();
  NODE node{};
  require(NMGetNode(map, "Text", node) == 0);
  const size_t room = data[0];
  NODEMAPSTREAM stream{};
  require(NMCreateStream(map, ST_Json, &stream) == 0);

  // Each line of the input becomes a value.
  const std::string input(reinterpret_cast<const char*>(data) + 1, size - 1);
  std::vector<std::string> values;
  for (size_t begin = 0; begin <= input.size();) {
    const size_t end = std::min(input.find('\n', begin), input.size());
    values.emplace_back(input.substr(begin, end - begin).c_str());
    begin = end + 1;
  }
  for (const std::string& value : values) {
    require(NSetAsString(node, value.c_str()) == 0);
    require(NMStreamPush(stream, node) == 0);
  }

  const std::string text = dumped(stream);
  const nlohmann::json document = nlohmann::json::parse(text);
  require(document.is_array() && document.size() == values.size());
  for (size_t i = 0; i < values.size(); ++i) {
    const std::string& told = document[i].at("Value").get_ref<const std::string&>();
    require(document[i].at("Type") == "String" && document[i].at("Name") == "Text");
    require(told == values[i] || told.find("\xef\xbf\xbd") != std::string::npos);
  }

  size_t wideSize = 0;
  require(NMStreamDumpW(stream, nullptr, &wideSize) == 0);
  require(wideSize - 1 == static_cast<size_t>(std::count_if(text.begin(), text.end(), [](char c) {
            return (static_cast<uint8_t>(c) & 0xc0) != 0x80;
          })));
  // With any room: cut, with a zero behind.
  std::string part(room, '?');
  size_t given = room;
  const uint32_t result = NMStreamDump(stream, part.data(), &given);
  require(result == (room == 0 ? OXGENAPI_E_INVALID_ARGUMENT : OXGENAPI_OK));
  if (room != 0) require(part.c_str() == text.substr(0, room - 1));
  for (const OxHandle handle : {OxHandle{stream}, OxHandle{node}, OxHandle{map}})
    OxIfaceContainerReleaseUseCounter(handle);
  return 0;
}
