// Registers: addresses, bytes and bits, partial transfers, masked writes.
#include <cfloat>

#include "TestMap.h"

using testing::ElementsAre;
using testing::HasSubstr;

namespace {

std::vector<uint8_t> contentOf(const CRegisterPtr& node, size_t length, bool ignoreCache = false) {
  std::vector<uint8_t> buffer(length);
  node->Get(buffer.data(), static_cast<int64_t>(length), false, ignoreCache);
  return buffer;
}

void setContent(const CRegisterPtr& node, const std::vector<uint8_t>& content) {
  node->Set(content.data(), static_cast<int64_t>(content.size()));
}

}  // namespace

// Random descriptions try many more layouts.
TEST(RegisterNode, DecodesAndEncodesWhatTheDescriptionSays) {
  struct Case {
    std::vector<uint8_t> content;
    std::string type, more;
    int64_t value;
  };
  const std::string big = "<Endianess>BigEndian</Endianess>", little = "<Endianess>LittleEndian</Endianess>",
                    isSigned = "<Sign>Signed</Sign>";
  const auto bits = [](int lsb, int msb) { return tag("LSB", std::to_string(lsb)) + tag("MSB", std::to_string(msb)); };
  const Case cases[] = {
      {{0x12, 0x34}, "IntReg", big, 0x1234},
      {{0x12, 0x34}, "IntReg", little, 0x3412},
      {{0xff, 0xfe}, "IntReg", big + isSigned, -2},
      {{0x80, 0x00, 0x01}, "IntReg", big + isSigned, -8388607},
      {{0, 0, 0, 0, 0, 0, 0, 0x80}, "IntReg", isSigned, INT64_MIN},
      {{0x80, 0x00, 0x00, 0x01}, "MaskedIntReg", big + tag("Bit", "0"), 1},
      {{0x80, 0x00, 0x00, 0x01}, "MaskedIntReg", little + tag("Bit", "7"), 1},
      {{0x0a, 0xbc}, "MaskedIntReg", big + bits(11, 0), 0x0ab},
      {{0x0a, 0xbc}, "MaskedIntReg", big + bits(0, 11), 0x0ab},  // the wrong way round is turned
      {{0xf0, 0x12, 0x00, 0x00}, "MaskedIntReg", little + bits(4, 11), 0x2f},
      {{0xf0, 0x12, 0x00, 0x00}, "MaskedIntReg", little + bits(11, 4), 0x2f},
      {{0x00, 0x08}, "MaskedIntReg", little + tag("Bit", "11") + isSigned, -1},
      {{0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff}, "MaskedIntReg", bits(0, 63), -1},
      {{0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0x7f}, "MaskedIntReg", bits(0, 63) + isSigned, INT64_MAX},
  };
  for (const Case& each : cases) {
    TestMap t(reg(each.type, "R", 8, static_cast<int>(each.content.size()), each.more));
    t.port.poke(8, each.content);
    EXPECT_EQ(t.integer("R")->GetValue(), each.value) << each.type << each.more;
    // Written back it is the same bytes, also onto bytes that were all different.
    std::vector<uint8_t> others = each.content;
    for (uint8_t& byte : others) byte = static_cast<uint8_t>(~byte);
    t.port.poke(8, others);
    t.map->InvalidateNodes();
    t.integer("R")->SetValue(each.value, false);
    EXPECT_EQ(t.integer("R")->GetValue(false, true), each.value) << each.type << each.more;
    if (each.type == "IntReg") {
      EXPECT_EQ(t.port.peek(8, each.content.size()), each.content) << each.more;
    }
  }
}

TEST(RegisterNode, IntegerRangeFollowsFromWidthAndSign) {
  struct Case {
    int length;
    std::string more;
    int64_t min, max;
  };
  const Case cases[] = {{1, "", 0, 255},
                        {1, "<Sign>Signed</Sign>", -128, 127},
                        {3, "<Sign>Signed</Sign>", -0x800000, 0x7fffff},
                        {8, "", 0, INT64_MAX},
                        {8, "<Sign>Signed</Sign>", INT64_MIN, INT64_MAX},
                        {4, "<LSB>4</LSB><MSB>6</MSB>", 0, 7},
                        {4, "<LSB>4</LSB><MSB>6</MSB><Sign>Signed</Sign>", -4, 3},
                        {4, "<Bit>31</Bit><Sign>Signed</Sign>", -1, 0},
                        {8, "<LSB>0</LSB><MSB>63</MSB>", 0, INT64_MAX},
                        {8, "<LSB>2</LSB><MSB>63</MSB>", 0, INT64_MAX >> 1},
                        {8, "<LSB>0</LSB><MSB>63</MSB><Sign>Signed</Sign>", INT64_MIN, INT64_MAX}};
  for (const Case& each : cases) {
    const bool masked = each.more.find("Bit") != std::string::npos || each.more.find("LSB") != std::string::npos;
    TestMap t(reg(masked ? "MaskedIntReg" : "IntReg", "R", 0, each.length, each.more));
    const CIntegerPtr r = t.integer("R");
    EXPECT_EQ(r->GetMin(), each.min) << each.length << each.more;
    EXPECT_EQ(r->GetMax(), each.max) << each.length << each.more;
    EXPECT_EQ(r->GetInc(), 1);
    for (const int64_t edge : {each.min, each.max}) {
      r->SetValue(edge);
      EXPECT_EQ(r->GetValue(true, true), edge) << each.length << each.more;
    }
    if (each.max < INT64_MAX) {
      EXPECT_THROW(r->SetValue(each.max + 1), OutOfRangeException);
    }
    if (each.min > INT64_MIN) {
      EXPECT_THROW(r->SetValue(each.min - 1), OutOfRangeException);
    }
  }
  // All bits are kept beyond it.
  TestMap t(reg("IntReg", "R", 0, 8) + reg("IntReg", "Four", 8, 4));
  t.port.poke(0, std::vector<uint8_t>(8, 0xff));
  EXPECT_EQ(t.integer("R")->GetValue(), -1);
  EXPECT_EQ(refusal<OutOfRangeException>([&] { t.integer("R")->GetValue(true); }),
            "R: value -1 must be at least Min = 0");
  t.integer("Four")->SetValue(-1, false);
  EXPECT_EQ(t.integer("Four")->GetValue(false, true), 0xffffffff);
}

TEST(RegisterNode, FloatRegisters) {
  TestMap t(reg("FloatReg", "F", 0, 4) + reg("FloatReg", "D", 8, 8, tag("Endianess", "BigEndian")) +
            reg("FloatReg", "Odd", 16, 3));
  t.port.poke(0, {0, 0, 0x80, 0x3f});
  EXPECT_EQ(t.real("F")->GetValue(), 1.0);
  EXPECT_EQ(t.real("F")->GetMax(), FLT_MAX);
  EXPECT_EQ(t.real("F")->GetMin(), -FLT_MAX);
  EXPECT_FALSE(t.real("F")->HasInc());
  t.real("F")->SetValue(0.1);
  EXPECT_EQ(t.real("F")->GetValue(), static_cast<double>(0.1F)) << "rounded to what the register holds";
  EXPECT_THROW(t.real("F")->SetValue(3.5e38), OutOfRangeException);
  t.real("D")->SetValue(-2.0);
  EXPECT_THAT(t.port.peek(8, 8), ElementsAre(0xc0, 0, 0, 0, 0, 0, 0, 0));
  EXPECT_EQ(t.real("D")->GetMax(), DBL_MAX);
  EXPECT_THROW(t.real("Odd")->GetValue(), OutOfRangeException);
  EXPECT_THROW(t.real("Odd")->SetValue(1, false), OutOfRangeException);
  EXPECT_EQ(t.node("F")->GetCachingMode(), WriteAround);
}

TEST(RegisterNode, StringRegistersEndAtTheFirstNul) {
  TestMap held("<String Name='S'><Value> two  words </Value></String><String Name='Top'><pValue>S</pValue></String>");
  EXPECT_EQ(held.text("Top")->GetValue(), " two  words ");
  EXPECT_EQ(held.text("S")->GetMaxLength(), INT64_MAX);
  held.text("Top")->SetValue("x");
  EXPECT_EQ(held.text("S")->GetValue(), "x");
  held.node("S")->ImposeAccessMode(RO);
  EXPECT_EQ(held.text("S")->GetMaxLength(), 1);

  TestMap t(reg("StringReg", "S", 0, 4) + "<String Name='Top'><pValue>S</pValue></String>" +
            reg("StringReg", "Ro", 0, 4, tag("AccessMode", "RO")));
  t.port.poke(0, {'a', 0, 'b', 'c', 'd'});
  EXPECT_EQ(t.text("S")->GetValue(), "a");
  EXPECT_EQ(t.text("S")->GetMaxLength(), 4);
  EXPECT_EQ(t.text("Top")->GetMaxLength(), 4);
  EXPECT_EQ(t.text("Ro")->GetMaxLength(), 1) << "what cannot be written is as long as it is";
  t.text("Top")->SetValue("\xc3\xa4z");
  EXPECT_THAT(t.port.peek(0, 5), ElementsAre(0xc3, 0xa4, 'z', 0, 'd'));
  t.text("Top")->SetValue("full");
  EXPECT_EQ(t.text("S")->GetValue(), "full");
  EXPECT_TRUE(t.text("Top")->IsValueCacheValid());
  EXPECT_EQ(refusal<OutOfRangeException>([&] { t.text("Top")->SetValue("longer"); }),
            "Top > S: length 6 exceeds register length 4");
  t.text("S")->SetValue("");
  EXPECT_THAT(t.port.peek(0, 5), ElementsAre(0, 0, 0, 0, 'd'));
}

TEST(RegisterNode, AddressIsTheSumOfItsParts) {
  TestMap t(
      "<IntReg Name='R'><Address>0x100</Address><Address>8</Address><pAddress>Base</pAddress>"
      "<IntSwissKnife Name='K'><pVariable Name='I'>I</pVariable><Formula>I * 2</Formula></IntSwissKnife>"
      "<pIndex Offset='16'>I</pIndex><pIndex pOffset='Off'>I</pIndex><pIndex>I</pIndex>"
      "<pLength>Len</pLength><AccessMode>RW</AccessMode><pPort>Device</pPort></IntReg>"
      "<Integer Name='Base'><Value>1000</Value></Integer><Integer Name='I'><Value>3</Value></Integer>"
      "<Integer Name='Off'><Value>5</Value></Integer><Integer Name='Len'><Value>4</Value></Integer>");
  const CRegisterPtr r = t.bytes("R");
  EXPECT_EQ(r->GetAddress(), 256 + 8 + 1000 + 3 * 2 + 3 * 16 + 3 * 5 + 3 * 4);
  EXPECT_EQ(r->GetLength(), 4);
  EXPECT_EQ(t.port.counts(), "0r0w");
  t.integer("I")->SetValue(-1);
  EXPECT_EQ(r->GetAddress(), 1264 - 2 - 16 - 5 - 4);
  t.integer("Len")->SetValue(2);
  EXPECT_EQ(r->GetAddress(), 1264 - 2 - 16 - 5 - 2);
  t.integer("R")->SetValue(0x1234);
  EXPECT_EQ(t.port.writes, (std::map<BytePort::Access, int>{{{1239, 2}, 1}}));
}

TEST(RegisterNode, AddressThatOverflowsIsRefused) {
  TestMap t(
      "<IntReg Name='R'><Address>0x7fffffffffffffff</Address><pAddress>A</pAddress><Length>1</Length>"
      "<AccessMode>RW</AccessMode><pPort>Device</pPort></IntReg><Integer Name='A'><Value>1</Value></Integer>"
      "<IntReg Name='Fixed'><Address>0x7fffffffffffffff</Address><Address>1</Address><Length>1</Length>"
      "<AccessMode>RW</AccessMode><pPort>Device</pPort></IntReg>"
      "<IntReg Name='Indexed'><Address>0</Address><pIndex Offset='4'>Far</pIndex><Length>1</Length>"
      "<AccessMode>RW</AccessMode><pPort>Device</pPort></IntReg>"
      "<Integer Name='Far'><Value>0x4000000000000000</Value></Integer>");
  for (const char* name : {"R", "Fixed", "Indexed"}) {
    EXPECT_THROW(t.bytes(name)->GetAddress(), OutOfRangeException) << name;
    EXPECT_THROW(t.integer(name)->GetValue(), OutOfRangeException) << name;
    EXPECT_THROW(t.integer(name)->SetValue(1), OutOfRangeException) << name;
  }
  t.integer("A")->SetValue(0);
  EXPECT_EQ(t.bytes("R")->GetAddress(), INT64_MAX);
  EXPECT_EQ(t.port.counts(), "0r0w");
}

TEST(RegisterNode, UnusableLengthsAreRefusedAtAccess) {
  const auto node = [](const std::string& type) {
    return "<" + type +
           " Name='R'><Address>0</Address><pLength>L</pLength><AccessMode>RW</AccessMode>"
           "<pPort>Device</pPort></" +
           type + "><Integer Name='L'><Value>1</Value></Integer>";
  };
  TestMap t(node("Register"));
  for (const int64_t length : {int64_t{0}, int64_t{-1}, int64_t{(16 << 20) + 1}, INT64_MAX}) {
    t.integer("L")->SetValue(length);
    EXPECT_THAT(refusal<OutOfRangeException>([&] { contentOf(t.bytes("R"), 1); }), HasSubstr(std::to_string(length)));
    EXPECT_THROW(t.value("R")->ToString(), OutOfRangeException);
  }
  TestMap number(node("IntReg"));
  number.integer("L")->SetValue(9);
  EXPECT_THROW(number.integer("R")->GetValue(), OutOfRangeException);
  EXPECT_THROW(number.integer("R")->GetMax(), OutOfRangeException);
  number.integer("L")->SetValue(3);
  EXPECT_EQ(number.integer("R")->GetMax(), 0xffffff);
  TestMap real(node("FloatReg"));
  for (const int64_t length : {2, 5, 16}) {
    real.integer("L")->SetValue(length);
    EXPECT_THROW(real.real("R")->GetValue(), OutOfRangeException) << length;
  }
}

TEST(RegisterNode, PartialTransfers) {
  TestMap t(reg("Register", "R", 4, 6) + reg("Register", "Same", 4, 6));
  t.port.poke(4, {1, 2, 3, 4, 5, 6});
  const CRegisterPtr r = t.bytes("R");
  EXPECT_THAT(contentOf(r, 2), ElementsAre(1, 2));
  EXPECT_EQ(t.port.reads, (std::map<BytePort::Access, int>{{{4, 2}, 1}}));
  contentOf(r, 2);
  EXPECT_EQ(t.port.counts(), "2r0w") << "part of a register is not remembered";
  EXPECT_FALSE(r->IsValueCacheValid());
  EXPECT_THAT(contentOf(r, 6), ElementsAre(1, 2, 3, 4, 5, 6));
  EXPECT_TRUE(r->IsValueCacheValid());
  EXPECT_THAT(contentOf(r, 3), ElementsAre(1, 2, 3));
  EXPECT_THAT(contentOf(t.bytes("Same"), 2), ElementsAre(1, 2));
  EXPECT_EQ(t.port.counts(), "1r0w") << "a complete content serves a part, also of another node's";

  setContent(r, {9, 8});
  EXPECT_EQ(t.port.writes, (std::map<BytePort::Access, int>{{{4, 2}, 1}}));
  EXPECT_THAT(contentOf(r, 6), ElementsAre(9, 8, 3, 4, 5, 6));
  EXPECT_EQ(t.port.counts(), "0r1w") << "a partial write updates the complete content";
  EXPECT_TRUE(r->IsValueCacheValid());
  t.node("R")->InvalidateNode();
  setContent(r, {7});
  EXPECT_FALSE(r->IsValueCacheValid()) << "the rest is not known";
  EXPECT_THAT(contentOf(r, 6), ElementsAre(7, 8, 3, 4, 5, 6));
  EXPECT_EQ(t.port.counts(), "1r1w");

  contentOf(r, 0);
  setContent(r, {});
  EXPECT_EQ(t.port.counts(), "0r0w");
}

TEST(RegisterNode, PartialWriteMustNotTurnStaleContentFresh) {
  TestMap t(reg("Register", "A", 0, 4) + reg("Register", "B", 0, 4));
  t.port.poke(0, {1, 2, 3, 4});
  contentOf(t.bytes("A"), 4);
  contentOf(t.bytes("B"), 4);
  t.port.poke(0, {5, 6, 7, 8});
  t.node("A")->InvalidateNode();
  setContent(t.bytes("A"), {9});
  EXPECT_THAT(contentOf(t.bytes("A"), 4), ElementsAre(9, 6, 7, 8));
  EXPECT_THAT(contentOf(t.bytes("B"), 4), ElementsAre(9, 6, 7, 8));

  // Nor leave a later full write less careful.
  TestMap u(reg("Register", "R", 0, 8) + reg("IntReg", "Tail", 4, 4));
  setContent(u.bytes("R"), std::vector<uint8_t>(8, 1));
  EXPECT_EQ(u.integer("Tail")->GetValue(), 0x01010101);
  setContent(u.bytes("R"), {2, 2});
  setContent(u.bytes("R"), std::vector<uint8_t>(8, 3));
  EXPECT_EQ(u.integer("Tail")->GetValue(), 0x03030303);
}

TEST(RegisterNode, BuffersAreChecked) {
  TestMap t(reg("Register", "Serial", 0, 4));
  const CRegisterPtr r = t.bytes("Serial");
  uint8_t buffer[8] = {};
  EXPECT_THROW(r->Get(nullptr, 2), InvalidArgumentException);
  EXPECT_THROW(r->Set(nullptr, 2), InvalidArgumentException);
  EXPECT_THROW(r->Get(buffer, -1), InvalidArgumentException);
  EXPECT_THROW(r->Set(buffer, -1, false), InvalidArgumentException);
  EXPECT_EQ(refusal<OutOfRangeException>([&] { r->Get(buffer, 5); }), "Serial: length 5 exceeds register length 4");
  EXPECT_THROW(r->Set(buffer, 5), OutOfRangeException);
  r->Get(nullptr, 0);
  r->Set(nullptr, 0);
  EXPECT_EQ(t.port.counts(), "0r0w");
}

TEST(RegisterNode, BytesAndNumbersShareOneCache) {
  TestMap t(reg("IntReg", "R", 0, 2) + reg("FloatReg", "F", 4, 4, tag("Cachable", "WriteThrough")));
  setContent(t.bytes("R"), {0x34, 0x12});
  EXPECT_EQ(t.integer("R")->GetValue(), 0x1234);
  t.integer("R")->SetValue(0x0102);
  EXPECT_THAT(contentOf(t.bytes("R"), 2), ElementsAre(2, 1));
  setContent(t.bytes("R"), {0xff});
  EXPECT_EQ(t.integer("R")->GetValue(), 0x01ff);
  setContent(t.bytes("F"), {0, 0, 0x80, 0x3f});
  EXPECT_EQ(t.real("F")->GetValue(), 1.0);
  EXPECT_EQ(t.port.counts(), "0r4w");
  setContent(t.bytes("R"), {0xff, 0xff});  // bytes have no range
  EXPECT_EQ(t.value("R")->ToString(), "65535");
}

TEST(RegisterNode, MaskedWritesReadOnceAndMerge) {
  TestMap t(
      "<StructReg Comment='x'><Address>0</Address><Length>4</Length><AccessMode>RW</AccessMode>"
      "<pPort>Device</pPort><Endianess>LittleEndian</Endianess>"
      "<StructEntry Name='Low'><LSB>0</LSB><MSB>7</MSB></StructEntry>"
      "<StructEntry Name='Mid'><LSB>8</LSB><MSB>15</MSB></StructEntry>"
      "<StructEntry Name='Top'><Bit>31</Bit></StructEntry></StructReg>" +
      reg("MaskedIntReg", "All", 8, 2, "<LSB>0</LSB><MSB>15</MSB>") +
      reg("MaskedIntReg", "Raw", 12, 1, "<LSB>0</LSB><MSB>3</MSB><Cachable>NoCache</Cachable>"));
  t.port.poke(0, {0x11, 0x22, 0x33, 0x44});
  t.integer("Mid")->SetValue(0xaa);
  EXPECT_EQ(t.port.counts(), "1r1w");
  t.integer("Top")->SetValue(1);
  t.integer("Low")->SetValue(0xbb);
  EXPECT_EQ(t.port.counts(), "0r2w") << "they see each other's writes";
  EXPECT_THAT(t.port.peek(0, 4), ElementsAre(0xbb, 0xaa, 0x33, 0xc4));
  EXPECT_EQ(t.integer("Mid")->GetValue(), 0xaa);
  EXPECT_EQ(t.integer("Low")->GetValue(), 0xbb);
  EXPECT_EQ(t.port.counts(), "0r0w");

  t.integer("All")->SetValue(0xffff);
  EXPECT_EQ(t.port.counts(), "0r1w") << "a mask over all bits needs no read";

  for (int i = 0; i < 2; ++i) {
    t.port.poke(12, {static_cast<uint8_t>(0xf0 - 16 * i)});
    t.integer("Raw")->SetValue(5);
    EXPECT_EQ(t.port.counts(), "1r1w") << "without a cache every write reads";
    EXPECT_EQ(t.port.memory[12], 0xf5 - 16 * i);
  }
}

TEST(RegisterNode, MaskedWritesOfWriteOnlyRegistersMergeWithWhatWasWrittenLast) {
  const std::string wo = tag("AccessMode", "WO");
  TestMap t(reg("MaskedIntReg", "A", 0, 1, wo + "<LSB>0</LSB><MSB>3</MSB>") +
            reg("MaskedIntReg", "B", 0, 1, wo + "<LSB>4</LSB><MSB>7</MSB><Cachable>NoCache</Cachable>") +
            reg("IntReg", "All", 0, 1) + reg("IntReg", "Plain", 0, 1, tag("Cachable", "NoCache")) +
            reg("MaskedIntReg", "Field", 1, 1, "<LSB>0</LSB><MSB>3</MSB>"));
  t.port.poke(0, {0x77});
  t.integer("A")->SetValue(5);
  EXPECT_EQ(t.port.memory[0], 0x05) << "nothing was written before: 0";
  t.integer("B")->SetValue(0xc);
  EXPECT_EQ(t.port.memory[0], 0xc5);
  t.integer("All")->SetValue(0x3e);
  t.integer("A")->SetValue(1);
  EXPECT_EQ(t.port.memory[0], 0x31) << "written through any node of the place";
  t.node("All")->InvalidateNode();
  EXPECT_EQ(t.integer("All")->GetValue(), 0x31);
  t.integer("B")->SetValue(9);
  EXPECT_EQ(t.port.memory[0], 0x91);
  EXPECT_EQ(t.port.counts(), "1r5w") << "what cannot be read is not read";
  t.integer("All")->SetValue(0x3e);
  t.port.poke(0, {0xff});
  EXPECT_EQ(t.integer("All")->GetValue(false, true), 0xff);
  t.integer("A")->SetValue(1);
  EXPECT_EQ(t.port.memory[0], 0x31) << "written before, whatever was read since";
  t.integer("Plain")->SetValue(0x50);
  t.integer("A")->SetValue(2);
  EXPECT_EQ(t.port.memory[0], 0x52) << "also through a node without a cache";

  t.node("Field")->ImposeAccessMode(WO);
  t.port.poke(1, {0xff});
  t.integer("Field")->SetValue(1);
  EXPECT_EQ(t.port.memory[1], 0x01) << "not readable at run time: the other bits were never written";
  t.node("Field")->ImposeAccessMode(RW);
  EXPECT_EQ(t.integer("Field")->GetValue(), 1);
}

TEST(RegisterNode, DefectiveNodesSayWhyAndCostNobodyElse) {
  TestMap t(reg("MaskedIntReg", "Bad", 0, 1, tag("Bit", "8")) + reg("IntReg", "Good", 0, 1) +
            "<Integer Name='Over'><pValue>Bad</pValue></Integer>" + reg("IntReg", "Long", 0, 9));
  EXPECT_EQ(t.mode("Bad"), NI);
  EXPECT_EQ(t.mode("Over"), NI);
  EXPECT_THAT(refusal<RuntimeException>([&] { t.integer("Bad")->GetValue(); }), HasSubstr("MaskedIntReg 'Bad': Bit:"));
  EXPECT_THROW(t.integer("Bad")->SetValue(1, false), RuntimeException);
  EXPECT_THROW(t.integer("Bad")->GetMax(), RuntimeException);
  EXPECT_THROW(t.value("Bad")->ToString(), RuntimeException);
  EXPECT_THROW(t.bytes("Bad")->GetLength(), RuntimeException);
  EXPECT_THROW(t.integer("Long")->GetValue(), RuntimeException);
  EXPECT_THROW(t.integer("Over")->GetValue(), AccessException);
  EXPECT_EQ(t.integer("Good")->GetValue(), 0);
}
