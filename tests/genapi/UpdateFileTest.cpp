// Update files: what is read from good ones, and how bad ones are refused.
#include <FirmwareUpdate/FirmwareUpdate.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <functional>

#include "genapi/GufBuilder.h"

namespace {

using namespace GENAPI_NAMESPACE;
using namespace GENICAM_NAMESPACE;
using testing::HasSubstr;

const std::string kControl = R"(<?xml version="1.0" encoding="utf-8"?>
<FirmwareUpdateControl SchemaMajorVersion="1" SchemaMinorVersion="0">
  <Update Procedure="Main" Later="ignored">
    <Info Key="Description" Lang="en">Faster readout</Info>
    <Info Key="Description" Lang="de">Schnellere Auslese</Info>
    <Info Key="Version">2.1.0</Info>
    <Info Key="VersionStyle">dotted</Info>
    <Info Key="VersionExtractionPattern">FW ([0-9]+\.[0-9]+\.[0-9]+).*</Info>
    <Info Key="Weather">sunny</Info>
    <Condition Feature="DeviceModelName">EX-(100|200)</Condition>
  </Update>
  <Update Procedure="Main">
    <Info Key="Version">3</Info>
    <Info Key="Description" Lang="fr">Rien</Info>
    <Condition Feature="DeviceModelName">EX-300</Condition>
  </Update>
  <Procedure Name="Main">
    <FeatureWrite Feature="AcquisitionMode" Value="SingleFrame" EstimatedDurationMs="5"/>
    <FileUpload FileSelector="FirmwareImage" File="data/main.bin" EstimatedDurationMs="45000">
      <Description Lang="en">Writing</Description>
    </FileUpload>
    <DeviceReset EstimatedDurationMs="20000" DelayEnumerationMs="5000"/>
  </Procedure>
</FirmwareUpdateControl>)";

std::string replaced(std::string text, const std::string& from, const std::string& to) {
  const size_t at = text.find(from);
  EXPECT_NE(at, std::string::npos) << from;
  return text.replace(at, from.size(), to);
}

std::string lastByteFlipped(std::string bytes, const std::string& of) {
  bytes[bytes.find(of) + of.size() - 1] ^= 1;
  return bytes;
}

const std::vector<ZipEntry> kData{{"data/main.bin", std::string(5000, 'x'), true}, {"unused.txt", "-"}};

std::string failureOf(const std::function<void()>& call, std::string& type) {
  try {
    call();
  } catch (const FileNotFoundException& e) {
    type = "notfound";
    return e.GetDescription();
  } catch (const FileIOException& e) {
    type = "io";
    return e.GetDescription();
  } catch (const FormatException& e) {
    type = "format";
    return e.GetDescription();
  } catch (const RuntimeException& e) {
    type = "runtime";
    return e.GetDescription();
  }
  type = "none";
  return "";
}

// The file is refused by one line of that type with the part in it; "none": it is not.
void expectRefused(const std::string& bytes, const std::string& type, const std::string& part) {
  const TemporaryFile file(bytes);
  std::string given;
  const std::string text = failureOf([&] { CFirmwareUpdater().VerifyGufFile(file.path()); }, given);
  EXPECT_EQ(given, type) << part << ": " << text;
  EXPECT_THAT(text, HasSubstr(part));
  EXPECT_EQ(text.find('\n'), std::string::npos) << text;
}

CFirmwareUpdateDefaultInfoCollector infosOf(const std::string& bytes, const char* language = nullptr) {
  const TemporaryFile file(bytes);
  CFirmwareUpdateDefaultInfoCollector collector;
  CFirmwareUpdater().ReadFirmwareUpdateInfos(file.path(), collector, language);
  return collector;
}

TEST(UpdateFile, InfosKeepTheirOrderAndOneLanguageEach) {
  const auto infos = infosOf(guf(kControl, kData), "DE");
  ASSERT_EQ(infos.size(), 2u);
  const CFirmwareUpdateInfo& first = infos[0];
  ASSERT_EQ(first.GetCountOfInfos(), 5u);
  EXPECT_STREQ(first.GetInfoKey(size_t{0}), "Description");
  EXPECT_STREQ(first.GetInfo(size_t{0}), "Schnellere Auslese");
  EXPECT_STREQ(first.GetInfoLanguageCode("Description"), "de");
  EXPECT_STREQ(first.GetInfo("Weather"), "sunny");
  EXPECT_STREQ(first.GetInfoLanguageCode("Weather"), "");
  EXPECT_STREQ(first.GetInfo("NoSuchKey", "none"), "none");
  EXPECT_STREQ(first.GetInfo(static_cast<const char*>(nullptr)), "");
  EXPECT_THROW(first.GetInfoKey(size_t{5}), InvalidArgumentException);
  EXPECT_STREQ(infos[1].GetInfo("Description"), "Rien") << "neither German nor English: the first";
  EXPECT_STREQ(infosOf(guf(kControl, kData))[0].GetInfo("Description"), "Faster readout") << "English is the default";

  EXPECT_STREQ(infosOf(guf(kControl, kData), "de_AT")[0].GetInfo("Description"), "Schnellere Auslese");
  const std::string italian = "<Info Key=\"Description\" Lang=\"it\">Presto</Info>",
                    english = "<Info Key=\"Description\" Lang=\"en\">";
  EXPECT_STREQ(infosOf(guf(replaced(kControl, english, italian + english), kData), "fr")[0].GetInfo("Description"),
               "Faster readout")
      << "before the first";
  const CFirmwareUpdateInfo& none = infos[2];
  EXPECT_FALSE(none.IsValid());
  EXPECT_STREQ(none.GetUpdateFilename(), "");
  EXPECT_EQ(none.GetCountOfInfos(), 0u);
  EXPECT_STREQ(none.GetInfo("Version"), "");
}

TEST(UpdateFile, VersionIsExtractedByTheFirstGroup) {
  const auto infos = infosOf(guf(kControl, kData));
  EXPECT_EQ(infos[0].ExtractVersionFromDeviceFirmwareVersion("FW 2.0.13 (release)"), "2.0.13");
  EXPECT_THROW(infos[0].ExtractVersionFromDeviceFirmwareVersion("my FW 2.0.13"), RuntimeException) << "whole text only";
  EXPECT_THROW(infos[1].ExtractVersionFromDeviceFirmwareVersion("FW 2.0.13"), LogicalErrorException);
  EXPECT_THROW(CFirmwareUpdateInfo().ExtractVersionFromDeviceFirmwareVersion("1"), LogicalErrorException);
  // Trying every way to match this takes longer than anybody waits.
  const auto hostile = infosOf(guf(replaced(kControl, "FW ([0-9]+\\.[0-9]+\\.[0-9]+).*", "(((a+)+)+)+b"), kData));
  EXPECT_THROW(hostile[0].ExtractVersionFromDeviceFirmwareVersion(std::string(10'000, 'a').c_str()), RuntimeException);
}

TEST(UpdateFile, InfosAreEqualForTheSameUpdateOfTheSameFile) {
  const TemporaryFile file(guf(kControl, kData));
  CFirmwareUpdateDefaultInfoCollector infos;
  CFirmwareUpdater updater;
  updater.ReadFirmwareUpdateInfos(file.path(), infos);
  updater.ReadFirmwareUpdateInfos(file.path(), infos);
  ASSERT_EQ(infos.size(), 4u);
  EXPECT_TRUE(infos[0] == infos[2]);
  EXPECT_FALSE(infos[0] == infos[1]);
  EXPECT_FALSE(infos[0] == CFirmwareUpdateInfo());
  file.write(guf(replaced(kControl, "sunny", "rainy"), kData));
  updater.ReadFirmwareUpdateInfos(file.path(), infos);
  EXPECT_FALSE(infos[0] == infos[4]);
  struct First : IFirmwareUpdateInfoCollector {
    bool OnUpdateRead(const CFirmwareUpdateInfo&) override { return ++count < 1; }
    int count = 0;
  } first;
  updater.ReadFirmwareUpdateInfos(file.path(), first);
  EXPECT_EQ(first.count, 1) << "a collector stops the reading";
}

TEST(UpdateFile, SignatureRangesPointAtTheMembersBytes) {
  const std::string bytes = guf(kControl, kData, "SIGNATURE");
  const TemporaryFile file(bytes);
  size_t packageAt = 0, packageSize = 0, signatureAt = 0, signatureSize = 0;
  CFirmwareUpdater().GetSignatureCheckInfo(file.path(), packageAt, packageSize, signatureAt, signatureSize);
  EXPECT_EQ(bytes.substr(signatureAt, signatureSize), "SIGNATURE");
  EXPECT_EQ(bytes.substr(packageAt, 4), "PK\3\4");
  EXPECT_EQ(bytes.substr(packageAt, packageSize), zipped({{"control.xml", kControl, true}, kData[0], kData[1]}));

  const TemporaryFile bare(guf(kControl, kData));
  CFirmwareUpdater().GetSignatureCheckInfo(bare.path(), packageAt, packageSize, signatureAt, signatureSize);
  EXPECT_EQ(signatureAt, 0u);
  EXPECT_EQ(signatureSize, 0u);
}

TEST(UpdateFile, VerifyTellsWhatIsWrong) {
  const std::string good = guf(kControl, kData);
  const std::string package = zipped({{"control.xml", kControl, true}, kData[0]});
  std::string stored = guf(kControl, {{"data/main.bin", "all the bytes of it"}});
  const auto control = [](const std::string& from, const std::string& to) {
    return guf(replaced(kControl, from, to), kData);
  };
  const struct {
    std::string bytes;
    const char* type;
    const char* text;
  } cases[] = {
      {good, "none", ""},
      {stored, "none", ""},
      {"PK but nothing of the sort", "format", "is not a zip archive"},
      {"", "format", "is not a zip archive"},
      {good.substr(0, good.size() / 2), "format", "is not a zip archive"},
      {zipped({{"other", "x"}}), "notfound", "package.zip"},
      {zipped({{"package.zip", package, true}}), "format", "must be stored"},
      {zipped({{"package.zip", "nothing"}}), "format", "package.zip: is not a zip"},
      {zipped({{"package.zip", zipped({{"data/main.bin", "x"}})}}), "notfound", "control.xml"},
      {guf(kControl), "notfound", "data/main.bin"},
      {lastByteFlipped(stored, "all the bytes of it"), "io", "cannot be extracted"},
      {control("</Procedure>", "</Wrong>"), "runtime", "not well-formed"},
      {control("MajorVersion=\"1\"", "MajorVersion=\"2\""), "format", "schema version 2"},
      {control("Name=\"Main\"", "Name=\"Other\""), "format", "no procedure 'Main'"},
      {control("<FirmwareUpdateControl ", "<!DOCTYPE x [<!ENTITY e \"\">]>\n<FirmwareUpdateControl "), "format",
       "DOCTYPE"},
      {control("<Info Key=\"Version\">2.1.0</Info>", ""), "format", "has no Info 'Version'"},
      {control(">2.1.0<", ">2.x<"), "format", "Version '2.x'"},
      {control("Lang=\"de\"", "Lang=\"EN\""), "format", "twice for language"},
      {control(">dotted<", ">roman<"), "format", "neither dotted nor semver"},
      {control("EX-(100|200)", "EX-(100"), "format", "not a regular expression"},
      {control("EX-(100|200)", std::string(1001, 'a')), "format", "longer than 1000"},
      {control("<DeviceReset ", "<DeviceErase "), "format", "step 3 DeviceErase"},
      {control("Value=\"SingleFrame\"", "Value=\"1\" If=\"x\""), "format", "'If'"},
      {control("<Description Lang=\"en\">Writing</Description>", "<Retry/>"), "format", "'Retry'"},
      {control("<Condition ", "<Condition Not=\"1\" "), "format", "'Not'"},
      {control("Value=\"SingleFrame\"", "Value=\"1\" Value=\"2\""), "runtime", "two attributes"},
      {control("data/main.bin", "data/main.bin&#x00;.txt"), "runtime", "character 0"},
      {control("<Condition Feature=\"DeviceModelName\">EX-300</Condition>", ""), "format", "has no Condition"},
      {control("</Procedure>", "</Procedure><Procedure Name=\"Empty\"/>"), "format", "has no step"},
      {control("</Procedure>", "</Procedure><Procedure Name=\"Main\"><FeatureExecute Feature=\"A\"/></Procedure>"),
       "format", "two procedures named 'Main'"},
      {control("45000", "4294967296"), "format", "EstimatedDurationMs '4294967296'"},
  };
  for (const auto& c : cases) expectRefused(c.bytes, c.type, c.text);
  std::string type;
  for (const char* path : {"data/../main.bin", "/main.bin", "C:main.bin", "data\\main.bin"})
    expectRefused(control("data/main.bin", path), "format", "not a relative path");
  failureOf([] { CFirmwareUpdater().VerifyGufFile("/nowhere/at/all.guf"); }, type);
  EXPECT_EQ(type, "notfound");
  failureOf([] { CFirmwareUpdater().VerifyGufFile("/tmp"); }, type);
  EXPECT_EQ(type, "io");
}

// The directory and the local headers must tell the same story, byte by byte.
TEST(UpdateFile, ForgedZipHeadersAreRefused) {
  const std::string good = guf(kControl, {{"data/main.bin", "0123456789"}});
  const size_t local = 0;
  const size_t directory = good.rfind("PK\1\2");
  const size_t end = good.rfind("PK\5\6");
  const struct {
    size_t at;
    char value;
    const char* text;
  } cases[] = {
      {directory + 8, 1, "is encrypted"},  // in both
      {local + 8, 8, "inconsistent"},      // another method, checksum, size, name in the local header
      {local + 14, static_cast<char>(good[14] ^ 1), "inconsistent"},
      {local + 18, static_cast<char>(good[18] ^ 1), "inconsistent"},
      {local + 30, 'q', "inconsistent"},
      {end + 16, static_cast<char>(good[end + 16] + 1), "director"},  // starts too late
      {end + 10, 2, ""},                                              // more members than there are
      {end + 4, 1, "several volumes"},
  };
  for (const auto& c : cases) {
    std::string bytes = good;
    bytes[c.at] = c.value;
    expectRefused(bytes, "format", c.text);
  }

  // Two members of one name: the second is renamed after the archive was made.
  std::string twins = zipped({{"package.zip", zipped({{"a.bin", "x"}})}, {"package.zap", "y"}});
  for (size_t at = twins.find("package.zap"); at != std::string::npos; at = twins.find("package.zap", at))
    twins.replace(at, 11, "package.zip");
  expectRefused(twins, "format", "twice");

  // A member within the bytes of another one: the directory points at the copy there.
  const std::string inner = zipped({{"b", "x"}});
  std::string nested = zipped({{"a", inner}, {"b", "x"}});
  const uint32_t copy = static_cast<uint32_t>(nested.find(inner));
  nested.replace(nested.rfind("PK\1\2") + 42, 4, reinterpret_cast<const char*>(&copy), 4);
  expectRefused(nested, "format", "overlaps");
}

TEST(UpdateFile, InflatingFarBeyondTheStoredSizeIsRefused) {
  expectRefused(guf(kControl, {{"data/main.bin", std::string(4 << 20, '\0'), true}}), "format", "1000 times");
  expectRefused(guf(replaced(kControl, "sunny", std::string(5 << 20, ' ')), kData), "format", "4 MiB");
  std::string deep = "text", wide;
  for (int i = 1; i < 32; ++i) deep = "<a>" + deep + "</a>";  // inside the root element
  expectRefused(guf(replaced(kControl, "<Procedure ", deep + "<Procedure "), kData), "none", "");
  expectRefused(guf(replaced(kControl, "<Procedure ", "<a>" + deep + "</a><Procedure "), kData), "format", "deeper");
  for (int i = 0; i < 100'001; ++i) wide += "<a/>";
  expectRefused(guf(replaced(kControl, "<Procedure ", wide + "<Procedure "), kData), "format", "nodes");
}

// An update file whose members claim to inflate to so many bytes each, in both headers.
std::string claiming(uint32_t bytes, std::vector<ZipEntry> members) {
  for (ZipEntry& member : members) member.deflated = true;
  members.insert(members.begin(), {"control.xml", kControl, true});
  std::string package = zipped(members);
  for (const auto& [mark, sizeAt, nameAt] : {std::tuple{"PK\3\4", 22, 30}, std::tuple{"PK\1\2", 24, 46}}) {
    for (size_t at = package.find(mark); at != std::string::npos; at = package.find(mark, at + 4))
      if (package.compare(at + nameAt, 5, "data/") == 0)
        package.replace(at + sizeAt, 4, reinterpret_cast<char*>(&bytes), 4);
  }
  return zipped({{"package.zip", package}});
}

TEST(UpdateFile, CountsAndSizesHaveLimits) {
  const auto repeated = [](const std::string& text, int count) {
    std::string all;
    for (int i = 0; i < count; ++i) all += replaced(text, "#", std::to_string(i));
    return all;
  };
  const std::string update =
      "<Update Procedure='Main'><Info Key='Version'>#</Info><Info Key='Description'>x</Info><Condition "
      "Feature='A'>x</Condition></Update>";
  const struct {
    const char* before;
    std::string more;
    const char* text;
  } cases[] = {
      {"<Update ", repeated(update, 999), "more than 1000 updates"},
      {"<Procedure ", repeated("<Procedure Name='P#'><DeviceReset/></Procedure>", 1000), "more than 1000 procedures"},
      {"<DeviceReset ", repeated("<FeatureWrite Feature='A' Value='#'/>", 10000), "more than 10000 steps"},
      {"<Condition ", "<Condition Feature='A'>\\pL{1000}</Condition>", "pattern too large"},
      {"<Condition ", repeated("<Condition Feature='A'>(abcdefghij){1000}#</Condition>", 120), "too large together"},
  };
  for (const auto& c : cases)
    expectRefused(guf(replaced(kControl, c.before, c.more + c.before), kData), "format", c.text);
  std::string type;
  const TemporaryFile file("PK");
  std::filesystem::resize_file(file.path(), (uint64_t{4} << 30) + 1);
  EXPECT_THAT(failureOf([&] { CFirmwareUpdater().VerifyGufFile(file.path()); }, type), HasSubstr("4 GiB"));
  EXPECT_EQ(type, "format");

  const std::vector<ZipEntry> three{{"data/main.bin", "1"}, {"data/2", "2"}, {"data/3", "3"}};
  expectRefused(claiming((uint32_t{2} << 30) + 1, {three[0]}), "format", "limit of 2 GiB");
  expectRefused(claiming(uint32_t{3} << 30, three), "format", "inflate to more than 8 GiB");
  // A directory of 17 MiB of nothing, and its end.
  const std::string end = {'P', 'K', 5, 6, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0x10, 1, 0, 0, 0, 0, 0, 0};
  expectRefused(std::string(17 << 20, '\0') + end, "format", "more than 16 MiB");
}

}  // namespace
