// From bytes to text: encodings, what may stand around the XML, archives, and input that means harm.
#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <filesystem>

#include "GufBuilder.h"
#include "LoaderSnippets.h"
#include "description/Limits.h"

using namespace loading;

namespace {

using Texts = std::vector<std::string>;

std::string toolTip(const Loaded& description) {
  return std::string(description->find(description->indexOf("N"), Element::ToolTip)->value());
}

std::string tipped(std::string_view toolTipText) {
  return described("<Node Name='N'><ToolTip>" + std::string(toolTipText) + "</ToolTip></Node>");
}

std::string utf16(std::string_view ascii, bool bigEndian, std::string_view insertedUnits = "") {
  std::string bytes = bigEndian ? "\xFE\xFF" : "\xFF\xFE";
  for (char character : ascii) {
    if (character == '@') {
      for (size_t i = 0; i < insertedUnits.size(); i += 2) {
        bytes += insertedUnits[bigEndian ? i : i + 1];
        bytes += insertedUnits[bigEndian ? i + 1 : i];
      }
      continue;
    }
    if (bigEndian) bytes += '\0';
    bytes += character;
    if (!bigEndian) bytes += '\0';
  }
  return bytes;
}

TEST(LoaderContent, TextIsUtf8Inside) {
  const std::string umlaut = tipped("f\xC3\xBCr");
  EXPECT_EQ(toolTip(loadText(umlaut)), "f\xC3\xBCr");
  EXPECT_EQ(toolTip(loadText("\xEF\xBB\xBF" + umlaut)), "f\xC3\xBCr");
  EXPECT_EQ(toolTip(loadText("<?xml version='1.0' encoding='utf-8'?>" + umlaut)), "f\xC3\xBCr");
  EXPECT_EQ(toolTip(loadText("<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>" + tipped("f\xFCr"))), "f\xC3\xBCr");
  EXPECT_EQ(toolTip(loadText("<?xml version='1.0' encoding='us-ascii'?>" + tipped("fur"))), "fur");
  // U+00FC and, as a surrogate pair, U+1F600; half a pair becomes the replacement character.
  const std::string_view units("\0\xFC\xD8\x3D\xDE\0", 6);
  EXPECT_EQ(toolTip(loadText(utf16(tipped("f@r"), false, units))), "f\xC3\xBC\xF0\x9F\x98\x80r");
  EXPECT_EQ(toolTip(loadText(utf16(tipped("f@r"), true, units))), "f\xC3\xBC\xF0\x9F\x98\x80r");
  EXPECT_EQ(toolTip(loadText(utf16(tipped("f@r"), true, std::string_view("\xD8\x3D", 2)))), "f\xEF\xBF\xBDr");
  EXPECT_EQ(toolTip(loadText(utf16(tipped("f@r"), true, std::string_view("\xDE\0", 2)))), "f\xEF\xBF\xBDr");
}

TEST(LoaderContent, OddBytesAndWordsAreNoted) {
  const Loaded description = loadText(tipped("a\xFC\nb"));
  EXPECT_EQ(toolTip(description), "a\xFC\nb");
  EXPECT_EQ(notes(description), Texts{"1: bytes that are not UTF-8 are kept as they are"});
  EXPECT_EQ(notes(loadText("<?xml version='1.0' encoding='koi8-r'?>" + tipped("x"))),
            Texts{"1: unknown encoding 'KOI8-R', read as UTF-8"});
}

TEST(LoaderContent, TextBeforeTheFirstTagIsSkipped) {
  EXPECT_EQ(textFault(tipped("x") + "\n" + std::string(1000, '\0')), "") << "so are zeros behind the last";
  EXPECT_TRUE(notes(loadText(" \r\n\t" + tipped("x"))).empty());
  const Loaded description = loadText("Dump of camera 7\n" + tipped("x"));
  EXPECT_EQ(notes(description), Texts{"1: text before the first tag is skipped: 'Dump of camera 7 '"});
  EXPECT_EQ(description->lineOf(0), 2u);
  EXPECT_EQ(textFault(std::string(kMaxLeadingText, ' ') + tipped("x")), "");
  EXPECT_EQ(textFault(std::string(kMaxLeadingText + 1, '-') + tipped("x")),
            "<description>: neither XML nor zip: the text begins with '----------------------------------------...'");
  EXPECT_EQ(textFault("camera"), "<description>: neither XML nor zip: the text begins with 'camera'");
  EXPECT_EQ(textFault(""), "<description>: neither XML nor zip: the text is empty");
}

TEST(LoaderContent, CommentsVanishAndCdataIsText) {
  EXPECT_EQ(toolTip(loadText(tipped("one<!-- and --> two<?do it?> three"))), "one two three");
  EXPECT_EQ(toolTip(loadText(tipped("<![CDATA[a < b && c]]>"))), "a < b && c");
  EXPECT_EQ(toolTip(loadText(tipped("a <![CDATA[<]]> b<!-- x --> c"))), "a < b c");
  EXPECT_EQ(toolTip(loadText(tipped("&lt;&#65;&#x42;&amp;&quot;&apos;&gt;"))), "<AB&\"'>");
  EXPECT_TRUE(notes(loadText(tipped("<!-- &odd; --><![CDATA[&odd;]]>&#10;&amp;odd;"))).empty());
}

TEST(LoaderContent, BlanksAroundCdataAndCommentsBelongToTheTextOfAString) {
  const auto text = [](const std::string& value) {
    const Loaded description = load("<String Name='N' ToolTip='>'><Value a='>'>" + value + "</Value></String>");
    return std::string(description->find(description->indexOf("N"), Element::Value)->value());
  };
  EXPECT_EQ(text("  <![CDATA[ <x> ]]>\n"), "   <x> \n");
  EXPECT_EQ(text(" \t<!-- </Value> -->a"), " \ta");
  EXPECT_EQ(text("a <?b c?> <!-- d --> <![CDATA[&amp;]]>&amp; "), "a   &amp;& ");
  EXPECT_EQ(text(" \r\n "), " \n ");
  EXPECT_EQ(text("<!-- nothing -->"), "");
}

TEST(LoaderContent, FaultsInTheXmlNameTheLine) {
  EXPECT_EQ(textFault(described("\n<Node Name='A'>\n</Category>")),
            "<description>:3: not well-formed: Start-end tags mismatch");
  EXPECT_EQ(textFault("<?xml version='1.0'?>\n<!DOCTYPE r [<!ENTITY a 'b'>]>\n" + tipped("x")),
            "<description>:2: a document type declaration is not allowed");
  EXPECT_EQ(textFault(tipped("x") + tipped("x")), "<description>:1: not well-formed: more than one root element");
  // An attribute given twice, wherever: in nodes and their elements, in what is skipped, among many.
  std::string many = "<Node Name='A' ";
  for (int i = 0; i < 20; ++i) many += "a" + std::to_string(i) + "='' ";
  for (const std::string& nodes :
       {std::string("<Node Name='A' Name='B'/>"), many + "a15=''/>", std::string("<Group a15='' a15=''/>"),
        std::string("<Node Name='A'><ToolTip Name='' Name=''>x</ToolTip></Node>"),
        std::string("<Extension><Other Name='' Name=''/></Extension>")}) {
    const std::string name = nodes.find("a15") == nodes.npos ? "Name" : "a15";
    EXPECT_EQ(textFault(described("\n" + nodes)),
              "<description>:2: not well-formed: attribute '" + name + "' given twice");
  }
  EXPECT_EQ(textFault(tipped("x") + "\nrubbish"), "<description>:2: not well-formed: the text does not end with a tag");
  const std::string whole = described("\n<Node Name='A'><ToolTip>x</ToolTip><!-- c --></Node>\n");
  for (size_t length = 0; length < whole.size(); ++length) EXPECT_NE(textFault(whole.substr(0, length)), "") << length;
}

TEST(LoaderContent, TheRootElementTellsTheSchema) {
  const std::string name = "http://www.genicam.org/GenApi/Version_";
  const std::string unsupported = "schema version $1 is not supported (1.0, 1.1)";
  const std::pair<std::string, std::string> roots[] = {
      {"xmlns='" + name + "1_0'", ""},
      {"xmlns='" + name + "1_1'", ""},
      {"xmlns='" + name + "1_2'", filled(unsupported, "1.2")},
      {"xmlns='" + name + "2_0'", filled(unsupported, "2.0")},
      {"SchemaMajorVersion='1' SchemaMinorVersion='1'", ""},
      {"SchemaMajorVersion='3' SchemaMinorVersion='1'", filled(unsupported, "3.1")},
      {"", "neither a name space nor SchemaMajorVersion and SchemaMinorVersion tell the schema version"},
  };
  for (const auto& [attributes, reason] : roots) {
    EXPECT_EQ(textFault("<RegisterDescription " + attributes + "/>"),
              reason.empty() ? "" : "<description>:1: RegisterDescription: " + reason);
  }
  EXPECT_EQ(textFault("\n<Camera/>"), "<description>:2: the root element is 'Camera', not 'RegisterDescription'");
  // The name space decides, whatever the attributes say.
  const Loaded old = load("", "1_0");
  EXPECT_TRUE(old->isSchema10());
  EXPECT_EQ(old->device().schemaVersion, (Version_t{1, 1, 0}));
  EXPECT_FALSE(load("")->isSchema10());
  // Element names may have a prefix.
  const Loaded prefixed = loadText("<g:RegisterDescription xmlns:g='" + name +
                                   "1_0'><g:Node Name='N'><g:ToolTip>x</g:ToolTip></g:Node></g:RegisterDescription>");
  EXPECT_TRUE(prefixed->isSchema10());
  EXPECT_EQ(toolTip(prefixed), "x");
}

TEST(LoaderContent, ArchivesHoldOneXmlMember) {
  const std::string text = tipped(std::string(1000, 'x'));
  for (bool deflated : {false, true}) {
    const std::string archive = zipped({{"readme.txt", "nothing"}, {"Camera.XML", text, deflated}});
    EXPECT_EQ(textFault(archive), "");
    EXPECT_EQ(textFault(archive, ContentType_ZippedXml), "");
    EXPECT_EQ(textFault(archive, ContentType_Xml), "<description>: a zip archive, XML was asked for");
    // The same text is the same description, however it came.
    EXPECT_EQ(loadText(archive), loadText(text));
  }
  EXPECT_EQ(textFault(text, ContentType_ZippedXml), "<description>: not a zip archive");
  EXPECT_EQ(textFault(zipped({{"readme.txt", text}})), "<description>: no XML file in the zip archive");
  EXPECT_EQ(textFault(zipped({{"a.xml", text}, {"b.xml", text}})),
            "<description>: more than one XML file in the zip archive: 'a.xml' and 'b.xml'");
  EXPECT_EQ(textFault(zipped({{"cam.xml", "\n<Camera/>"}})),
            "<description>(cam.xml):2: the root element is 'Camera', not 'RegisterDescription'");
}

TEST(LoaderContent, DamagedArchivesAreRefused) {
  const std::string archive = zipped({{"cam.xml", tipped(std::string(1000, 'x')), true}});
  for (size_t length : {size_t{4}, size_t{30}, archive.size() / 2, archive.size() - 1})
    EXPECT_EQ(textFault(archive.substr(0, length)).substr(0, 28), "<description>: the zip archi") << length;
  std::string damaged = archive;
  damaged[60] = static_cast<char>(damaged[60] ^ 0x55);
  EXPECT_EQ(textFault(damaged).substr(0, 34), "<description>: the zip archive is ");
  // The flag for encrypted members, in both of the places where an archive keeps it.
  std::string encrypted = archive;
  encrypted[6] = static_cast<char>(encrypted[6] | 1);
  encrypted[encrypted.find("PK\x01\x02") + 8] = static_cast<char>(encrypted[encrypted.find("PK\x01\x02") + 8] | 1);
  EXPECT_EQ(textFault(encrypted), "<description>: 'cam.xml' in the zip archive is encrypted");
}

TEST(LoaderContent, ArchivesThatGrowOutOfProportionAreRefused) {
  const std::string bomb = zipped({{"cam.xml", tipped(std::string(4 << 20, ' ')), true}});
  ASSERT_LT(bomb.size() * kMaxZipRatio, size_t{4} << 20);
  const std::string reason = "<description>: 'cam.xml' in the zip archive grows past 200 times its stored size";
  EXPECT_EQ(textFault(bomb), reason);
  // What the directory says about the size is not believed.
  std::string lying = bomb;
  const size_t entry = lying.find("PK\x01\x02");
  for (size_t at : {size_t{22}, entry + 24}) lying.replace(at, 4, std::string("\x10\x00\x00\x00", 4));
  EXPECT_NE(textFault(lying), "");
  EXPECT_EQ(textFault(zipped({{"cam.xml", std::string(kMaxDescriptionBytes + 1, ' ')}})),
            "<description>: 'cam.xml' in the zip archive grows past 67108864 bytes");
}

TEST(LoaderContent, UnreadableFilesAreNamed) {
  const auto fileFault = [](const std::string& name) {
    try {
      loadDescriptionFile(name, ContentType_Auto);
      return std::string();
    } catch (const GENICAM_NAMESPACE::RuntimeException& error) {
      return std::string(error.GetDescription());
    }
  };
  EXPECT_EQ(fileFault("/nowhere/cam.xml"), "/nowhere/cam.xml: cannot be read: " + std::string(std::strerror(ENOENT)));
  EXPECT_EQ(fileFault("/tmp"), "/tmp: cannot be read: " + std::string(std::strerror(EISDIR)));
  const TemporaryFile huge("<");
  std::filesystem::resize_file(huge.path(), (128 << 20) + 1);
  EXPECT_EQ(fileFault(huge.path()), std::string(huge.path()) + ": larger than 134217728 bytes");
  const TemporaryFile file("\n" + tipped("x")), archive(zipped({{"cam.xml", "\n<Camera/>"}}));
  EXPECT_EQ(loadDescriptionFile(file.path(), ContentType_Auto).sourceName, file.path());
  EXPECT_EQ(fileFault(archive.path()),
            std::string(archive.path()) + "(cam.xml):2: the root element is 'Camera', not 'RegisterDescription'");
}

std::string nested(const std::string& name, int count, const std::string& inside) {
  std::string text;
  for (int i = 0; i < count; ++i) text += "<" + name + ">";
  text += inside;
  for (int i = 0; i < count; ++i) text += "</" + name + ">";
  return text;
}

TEST(LoaderContent, DeepNestingIsRefused) {
  const std::string node = "<Node Name='N'><ToolTip>x</ToolTip></Node>";
  EXPECT_EQ(fault(nested("Group", kMaxXmlDepth - 3, node)), "");
  const std::string reason = "<description>:1: more than 64 nested elements";
  EXPECT_EQ(fault(nested("Group", kMaxXmlDepth - 2, node)), reason);
  EXPECT_EQ(fault(nested("Extension", kMaxXmlDepth - 1, "")), "");
  // Deep enough to end any recursion.
  constexpr int kDeep = 100000;
  for (const char* name : {"Group", "Sparkle"}) EXPECT_EQ(fault(nested(name, kDeep, "")), reason) << name;
  EXPECT_EQ(fault("<Node Name='N'><ToolTip>" + nested("b", kDeep, "") + "</ToolTip></Node>"), reason);
  EXPECT_EQ(fault("<Node Name='N'>" + nested("Extension", kDeep, "") + "</Node>"), reason);
}

TEST(LoaderContent, CountsHaveLimits) {
  const auto repeated = [](const std::string& text, size_t count) {
    std::string all;
    all.reserve(text.size() * count);
    for (size_t i = 0; i < count; ++i) all += text;
    return all;
  };
  EXPECT_EQ(
      fault("<Integer Name='I'><Value>1</Value>" + repeated("<pInvalidator>I</pInvalidator>", 65537) + "</Integer>"),
      "<description>:1: Integer 'I': more than 65536 links");
  EXPECT_EQ(
      fault("<Integer Name='I'><Value>1</Value>" + repeated("<pInvalidator>I</pInvalidator>", 65536) + "</Integer>"),
      "");
  std::string entries;
  for (int i = 0; i < 65537; ++i)
    entries += "<EnumEntry Name='E" + std::to_string(i) + "'><Value>1</Value></EnumEntry>";
  EXPECT_EQ(fault("<Enumeration Name='E'><Value>1</Value>" + entries + "</Enumeration>"),
            "<description>:1: Enumeration 'E': more than 65536 entries and links");
  std::string nodes;
  for (size_t i = 0; i < kMaxNodes; ++i) nodes += "<Node Name='N" + std::to_string(i) + "'/>";
  EXPECT_EQ(fault(nodes + "<Node Name='Last'/>"), "<description>:1: Node 'Last': more than 500000 nodes");
  EXPECT_EQ(fault(repeated("<a/>", kMaxXmlTags)), "<description>: 8000002 tags, more than 8000000");
  EXPECT_EQ(textFault(std::string(kMaxDescriptionBytes + 1, '<')), "<description>: 67108865 bytes, more than 67108864");
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)  // takes a while there
  // A few entries that take over many elements each.
  const std::string common = repeated("<pInvalidator>P</pInvalidator>", 60000);
  std::string structEntries;
  for (int i = 0; i < 200; ++i) structEntries += "<StructEntry Name='S" + std::to_string(i) + "'/>";
  EXPECT_EQ(fault("<StructReg>" + common + structEntries + "</StructReg>"),
            "<description>:1: MaskedIntReg 'S132': more than 8000000 elements");
#endif
}

TEST(LoaderContent, NotesAreCountedPastTheirLimit) {
  std::string nodes;
  for (size_t i = 0; i < kMaxNotes + 5; ++i) nodes += "<a/>";
  const Loaded description = load(nodes);
  EXPECT_EQ(description->findings().size(), kMaxNotes + 1);
  EXPECT_EQ(description->findings().back().reason, "5 more notes left out");
}

}  // namespace
