// What calls cost, in exact numbers: port accesses and allocations.
#include <functional>
#include <vector>

#include "CountedAllocations.h"
#include "library/Device.h"

namespace {

std::string converter(const std::string& name, const std::string& source) {
  return "<Float Name='" + name + "'><pValue>" + name + "Converter</pValue></Float><Converter Name='" + name +
         "Converter'><FormulaTo>FROM * 10</FormulaTo><FormulaFrom>TO / 10</FormulaFrom><pValue>" + source +
         "</pValue></Converter>";
}

std::string nodes() {
  const std::string noCache = "<Cachable>NoCache</Cachable>";
  return "<Integer Name='Width'><pValue>WidthReg</pValue><pMax>WidthMax</pMax></Integer>" +
         integerRegister("WidthReg", 0) + integerRegister("WidthMax", 4) + integerRegister("Status", 8, noCache) +
         integerRegister("ExposureReg", 12) + converter("Exposure", "ExposureReg") +
         integerRegister("TemperatureReg", 16, noCache) + converter("Temperature", "TemperatureReg") +
         "<Boolean Name='Flag'><pValue>FlagReg</pValue><OnValue>1</OnValue><OffValue>0</OffValue></Boolean>" +
         integerRegister("FlagReg", 20) +
         "<Enumeration Name='Mode'><EnumEntry Name='On'><Value>1</Value></EnumEntry><EnumEntry Name='Off'>"
         "<Value>0</Value></EnumEntry><pValue>ModeReg</pValue></Enumeration>" +
         integerRegister("ModeReg", 24);
}

TEST(CallCost, PortAccessesAndAllocationsOfCallsOnceTheirFeatureIsKnown) {
  Device device(nodes());
  device.setInteger(4, 1000);
  bool flag = false;
  int64_t integer = 0, next = 0;
  double real = 0;
  char text[64];
  size_t size = sizeof text;
  const auto alternating = [&] { return next ^= 1; };
  struct Case {
    const char* feature;
    std::function<uint32_t(NODE)> call;
    const char* cost;  // reads, writes, allocations
  };
  const Case cases[] = {
      {"Width", [&](NODE node) { return NGetAsInteger(node, &integer); }, "0r0w0a"},
      {"Width", [&](NODE node) { return NGetAsFloat(node, &real); }, "0r0w0a"},
      {"Flag", [&](NODE node) { return NGetAsBoolean(node, &flag); }, "0r0w0a"},
      {"Exposure", [&](NODE node) { return NGetAsFloat(node, &real); }, "0r0w0a"},
      {"Mode", [&](NODE node) { return NGetAsInteger(node, &integer); }, "0r0w0a"},
      {"Mode", [&](NODE node) { return NGetAsString(node, text, size); }, "0r0w0a"},
      {"Status", [&](NODE node) { return NGetAsInteger(node, &integer); }, "1r0w0a"},
      {"Temperature", [&](NODE node) { return NGetAsFloat(node, &real); }, "1r0w0a"},
      {"Width", [&](NODE node) { return NSetAsInteger(node, alternating()); }, "0r1w0a"},
      {"Flag", [&](NODE node) { return NSetAsBoolean(node, alternating() != 0); }, "0r1w0a"},
      {"Exposure", [&](NODE node) { return NSetAsFloat(node, static_cast<double>(alternating())); }, "0r1w0a"},
      {"Mode", [&](NODE node) { return NSetAsInteger(node, alternating()); }, "0r1w0a"},
      {"Mode", [&](NODE node) { return NSetAsString(node, alternating() != 0 ? "On" : "Off"); }, "0r1w0a"},
      {"Width", [&](NODE node) { return NInfoAsInteger(node, NI_AccessMode, &integer); }, "0r0w0a"},
      {"Width", [&](NODE node) { return NInfoAsInteger(node, NI_Max, &integer); }, "0r0w0a"},
  };
  for (size_t i = 0; i < std::size(cases); ++i) {
    const Case& each = cases[i];
    const NODE node = device.node(each.feature);
    for (int warming = 0; warming < 2; ++warming) ASSERT_OK(each.call(node)) << i;
    device.reads = device.writes = 0;
    const long before = allocations;
    const uint32_t result = each.call(node);
    const long allocated = allocations - before;
    EXPECT_OK(result) << i;
    EXPECT_EQ(
        std::to_string(device.reads) + "r" + std::to_string(device.writes) + "w" + std::to_string(allocated) + "a",
        each.cost)
        << "case " << i << ", " << each.feature;
  }
}

// Steps are bytes of memory: what a walk over a list costs beside its names is the lists that are built for it.
TEST(CallCost, WalksOverListsGrowAsTheListsDo) {
  char text[64];
  size_t size = sizeof text;
  struct Walk {
    const char* node;
    std::function<uint32_t(NODE, int64_t index)> step;
  };
  const Walk walks[] = {
      {"Root", [&](NODE node, int64_t i) { return NList(node, NL_Children, i, text, size); }},
      {"Mode", [&](NODE node, int64_t i) { return NList(node, NL_EnumEntries, i, text, size); }},
      {"Mode", [&](NODE node, int64_t i) { return NInfoEnum(node, NI_Name, i, nullptr, text, &size); }},
      {"Mode", [&](NODE node, int64_t i) { return NList(node, NL_SelectedFeatures, i, text, size); }},
  };
  for (const Walk& walk : walks) {
    long before = 0;
    for (const int n : {500, 1000, 2000}) {
      std::string features, entries, nodes;
      for (int i = 0; i < n; ++i) {
        const std::string name = std::to_string(i);
        features += "<pFeature>F" + name + "</pFeature>";
        entries += "<EnumEntry Name='E" + name + "'><Value>" + name + "</Value></EnumEntry><pSelected>F" + name +
                   "</pSelected>";
        nodes += "<Integer Name='F" + name + "'><Value>0</Value></Integer>";
      }
      Device device(nodes + "<Enumeration Name='Mode'><Value>0</Value>" + entries + "</Enumeration>", features);
      const NODE node = device.node(walk.node);
      const long start = allocatedBytes;
      for (int64_t i = 0; i < n; ++i) ASSERT_OK(walk.step(node, i));
      const long steps = allocatedBytes - start;
      std::printf("%s %d: %ld\n", walk.node, n, steps);
      EXPECT_LT(steps, before == 0 ? steps + 1 : 5 * before / 2) << walk.node << ", " << n;
      before = steps;
    }
  }
}

TEST(LiveCost, FramesAndMessagesTakeNoMemoryOnceTheirPortsAreKnown) {
  const std::string field = "<Length>4</Length><AccessMode>RO</AccessMode><pPort>";
  Device device(
      "<Port Name='Long'><ChunkID>0000A001</ChunkID></Port><Port Name='Short'><ChunkID>A002</ChunkID></Port>"
      "<Port Name='Event'><EventID>9001</EventID></Port><IntReg Name='InLong'><Address>0</Address>" +
      field + "Long</pPort></IntReg><IntReg Name='InShort'><Address>-4</Address>" + field +
      "Short</pPort></IntReg><IntReg Name='InEvent'><Address>0</Address>" + field + "Event</pPort></IntReg>");
  std::vector<uint8_t> buffers[2] = {std::vector<uint8_t>(64, 1), std::vector<uint8_t>(64, 2)};
  const NODE nodes[] = {device.node("InLong"), device.node("InShort"), device.node("InEvent")};
  int64_t values[3] = {};
  const auto frame = [&](const std::vector<uint8_t>& buffer) {
    auto* base = const_cast<uint8_t*>(buffer.data());
    const TChunkData chunks[] = {{0xA001, base, 0, 16}, {0xA002, base, 16, 48}};
    const TEventData message{0x9001, base, 64};
    uint32_t result = NMAttachChunkList(device.map, chunks, 2);
    result |= NMUpdateChunks(device.map, base);
    result |= NMDeliverEvent(device.map, &message);
    for (int i = 0; i < 3; ++i) result |= NGetAsInteger(nodes[i], &values[i]);
    return result;
  };
  for (int warming = 0; warming < 2; ++warming) ASSERT_OK(frame(buffers[warming]));
  device.reads = 0;
  const long before = allocations;
  const uint32_t result = frame(buffers[0]);
  const long allocated = allocations - before;
  EXPECT_OK(result);
  EXPECT_EQ(allocated, 0);
  EXPECT_EQ(device.reads, 0);
  for (const int64_t value : values) EXPECT_EQ(value, 0x01010101);
}

}  // namespace
