// A stream collects snapshots of nodes in a JSON document.
#include <atomic>
#include <nlohmann/json.hpp>
#include <thread>

#include "Device.h"

namespace {

using nlohmann::json;

class Stream {
 public:
  explicit Stream(NODEMAP map) { EXPECT_EQ(NMCreateStream(map, ST_Json, &handle), 0u) << lastErrorText(); }
  ~Stream() { release(handle); }
  uint32_t push(Device& device, const char* name) const { return NMStreamPush(handle, device.node(name)); }
  std::string text() const {
    size_t size = 0;
    EXPECT_EQ(NMStreamDump(handle, nullptr, &size), 0u);
    std::string text(size, '\0');
    EXPECT_EQ(NMStreamDump(handle, text.data(), &size), 0u);
    text.pop_back();
    return text;
  }
  NODEMAPSTREAM handle{};
};

const std::string kNodes =
    integerRegister("Width", 0, "<DisplayName>Width \xc3\xa4</DisplayName>") +
    registerNode("StringReg", "Text", 0x100, 16) + registerNode("Register", "Bytes", 8, 4) +
    integerRegister("Hidden", 4, "<ImposedAccessMode>WO</ImposedAccessMode>") +
    "<Boolean Name='Switch'><Value>true</Value></Boolean><Node Name='Plain'/>"
    "<Command Name='Go'><Value>0</Value><CommandValue>1</CommandValue></Command>"
    "<Float Name='Gain'><Value>1.5</Value></Float>"
    "<Enumeration Name='Mode'><EnumEntry Name='On'><Value>1</Value></EnumEntry><Value>1</Value></Enumeration>";

}  // namespace

TEST(NodeMapStream, RecordsNodesInPushOrderWithTheValueOfTheMoment) {
  Device device(kNodes);
  const Stream stream(device.map);
  EXPECT_EQ(stream.text(), "[]");
  ASSERT_EQ(device.set("Width", "1"), 0u);
  ASSERT_EQ(stream.push(device, "Width"), 0u) << lastErrorText();
  EXPECT_EQ(stream.text(),
            "[{\"Display Name\":\"Width \xc3\xa4\",\"Name\":\"Width\",\"Type\":\"Integer\",\"Value\":\"1\"}]");
  ASSERT_EQ(device.set("Width", "2"), 0u);
  const std::tuple<const char*, const char*, const char*> kPushed[] = {
      {"Width", "Integer", "2"}, {"Root", "Category", ""}, {"Switch", "Boolean", "1"},    {"Go", "Command", ""},
      {"Gain", "Float", "1.5"},  {"Text", "String", ""},   {"Mode", "Enumeration", "On"}, {"Hidden", "Integer", ""}};
  size_t count = 1;
  for (const auto& [name, type, value] : kPushed) {
    ASSERT_EQ(stream.push(device, name), 0u) << name << ": " << lastErrorText();
    const json document = json::parse(stream.text());
    ASSERT_EQ(document.size(), ++count);
    EXPECT_EQ(document.back()["Name"], name);
    EXPECT_EQ(document.back()["Type"], type) << name;
    EXPECT_EQ(document.back()["Value"], value) << name;
  }
  for (const char* name : {"Bytes", "Plain", "EnumEntry_Mode_On", "Device"}) {
    EXPECT_EQ(stream.push(device, name), 0x80000001u) << name;
    EXPECT_EQ(lastErrorText(), "not a valid node type");
  }
  EXPECT_EQ(json::parse(stream.text()).size(), count);
}

TEST(NodeMapStream, BytesThatAreNotUtf8AreReplaced) {
  Device device(kNodes);
  std::memcpy(device.memory.data() + 0x100, "a\xff\"\n\xc3(", 6);
  const Stream stream(device.map);
  ASSERT_EQ(stream.push(device, "Text"), 0u) << lastErrorText();
  EXPECT_EQ(json::parse(stream.text())[0]["Value"], "a\xef\xbf\xbd\"\n\xef\xbf\xbd(");
  wchar_t wide[200];
  size_t size = 200;
  ASSERT_EQ(NMStreamDumpW(stream.handle, wide, &size), 0u);
  EXPECT_NE(std::wstring(wide).find(L"a\ufffd\\\"\\n\ufffd("), std::wstring::npos);
}

TEST(NodeMapStream, RefusesSizesItCannotUse) {
  Device device("");
  const Stream stream(device.map);
  char narrow[8] = "before";
  wchar_t wide[8] = L"before";
  for (const size_t size : {size_t{0}, SIZE_MAX, SIZE_MAX / 2 + 1}) {
    size_t given = size;
    EXPECT_FAILS(NMStreamDump(stream.handle, narrow, &given), 0x80000002,
                 "invalid buffer size to read string through c-interface");
    EXPECT_EQ(NMStreamDumpW(stream.handle, wide, &given), 0x80000002u);
    EXPECT_EQ(given, size);
    EXPECT_STREQ(narrow, "before");
  }
  EXPECT_EQ(NMStreamDump(stream.handle, narrow, nullptr), 0x80000002u);
  const char* const kContents[] = {"", "", "[", "[]", "[]"};  // a short buffer gets what fits
  for (size_t room = 1; room < std::size(kContents); ++room) {
    size_t size = room;
    EXPECT_EQ(NMStreamDump(stream.handle, narrow, &size), 0u);
    EXPECT_STREQ(narrow, kContents[room]);
    EXPECT_EQ(NMStreamDumpW(stream.handle, wide, &size), 0u);
    EXPECT_EQ(std::wcslen(wide), std::strlen(kContents[room]));
    EXPECT_EQ(size, room);
  }
}

TEST(NodeMapStream, TakesPushesAndDumpsFromSeveralThreads) {
  Device device(kNodes);
  const Stream stream(device.map);
  const NODE node = device.node("Gain");
  constexpr int kPushes = 500;
  std::vector<std::thread> threads;
  for (int i = 0; i < 3; ++i) {
    threads.emplace_back([&] {
      for (int n = 0; n < kPushes; ++n) EXPECT_EQ(NMStreamPush(stream.handle, node), 0u);
    });
  }
  std::string buffer(1 << 20, '\0');
  for (int n = 0; n < 50; ++n) {
    size_t size = buffer.size();
    ASSERT_EQ(NMStreamDump(stream.handle, buffer.data(), &size), 0u);
    EXPECT_TRUE(json::accept(buffer.c_str()));
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(json::parse(stream.text()).size(), 3u * kPushes);
}
