#include "calls/Vocabulary.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cstdlib>

#include "OxSimulation/SimulatedCamera.h"
#include "library/StoredArchive.h"

namespace calls {
namespace {

std::string reg(const std::string& kind, const std::string& name, int address, int length, const std::string& more = "",
                const std::string& mode = "RW", const std::string& port = "Device") {
  return "<" + kind + " Name='" + name + "'>" + (more.starts_with("<Streamable") ? more : "") + "<Address>" +
         std::to_string(address) + "</Address><Length>" + std::to_string(length) + "</Length><AccessMode>" + mode +
         "</AccessMode><pPort>" + port + "</pPort>" + (more.starts_with("<Streamable") ? "" : more) + "</" + kind + ">";
}

std::string choice(const std::string& name, int address, const std::vector<std::string>& entries,
                   const std::string& more = "") {
  std::string text = "<Enumeration Name='" + name + "'><Streamable>Yes</Streamable>";
  for (size_t i = 0; i < entries.size(); ++i)
    text += "<EnumEntry Name='" + entries[i] + "'><Value>" + std::to_string(i) + "</Value></EnumEntry>";
  return text + "<pValue>" + name + "Reg</pValue>" + more + "</Enumeration>" +
         reg("IntReg", name + "Reg", address, 4, "<Cachable>NoCache</Cachable>");
}

const std::string kControl =
    "<?xml version='1.0'?><FirmwareUpdateControl SchemaMajorVersion='1' SchemaMinorVersion='0'>"
    "<Update Procedure='Main'><Info Key='Description' Lang='en'>Faster</Info><Info Key='Version'>2.1.0</Info>"
    "<Condition Feature='Text'>.*</Condition></Update>"
    "<Update Procedure='Short'><Info Key='Version'>3</Info><Info Key='Description'>Less</Info>"
    "<Condition Feature='Width'>[0-9]+</Condition></Update>"
    "<Procedure Name='Main'><FeatureWrite Feature='Width' Value='7'/>"
    "<FileUpload FileSelector='Firmware' File='main.bin'/>"
    "<DeviceReset EstimatedDurationMs='1' DelayEnumerationMs='1'/><FeatureWrite Feature='Gain' Value='1.5'/>"
    "</Procedure><Procedure Name='Short'><FeatureWrite Feature='Width' Value='9'/></Procedure>"
    "</FirmwareUpdateControl>";

std::string updateFile() {
  return storedArchive(
      {{"package.zip", storedArchive({{"control.xml", kControl}, {"main.bin", std::string(200, 'f')}})}});
}

}  // namespace

const std::string& smallDescription() {
  static const std::string text =
      "<RegisterDescription ModelName='M' VendorName='V' ToolTip='T' StandardNameSpace='None' SchemaMajorVersion='1' "
      "SchemaMinorVersion='1' SchemaSubMinorVersion='0' MajorVersion='1' MinorVersion='0' SubMinorVersion='0' "
      "ProductGuid='1' VersionGuid='1' xmlns='http://www.genicam.org/GenApi/Version_1_1'>"
      "<Category Name='Root'><pFeature>Width</pFeature><pFeature>Gain</pFeature><pFeature>Sub</pFeature></Category>"
      "<Category Name='Sub'><pFeature>Text</pFeature><pFeature>Mode</pFeature></Category>" +
      reg("IntReg", "WidthReg", 0, 4, "<Sign>Signed</Sign><Endianess>LittleEndian</Endianess>") +
      "<Integer Name='Width'><Streamable>Yes</Streamable><pValue>WidthReg</pValue><Min>-5</Min><pMax>WidthMax</pMax>"
      "<Inc>2</Inc><Unit>px</Unit></Integer><IntSwissKnife Name='WidthMax'><pVariable Name='M'>ModeReg</pVariable>"
      "<Formula>1001 - M * 2</Formula></IntSwissKnife>" +
      reg("FloatReg", "GainReg", 8, 8, "<Endianess>LittleEndian</Endianess>") +
      "<Converter Name='Gain'><Streamable>Yes</Streamable><FormulaTo>FROM * 10</FormulaTo><FormulaFrom>TO / 10"
      "</FormulaFrom><pValue>GainReg</pValue></Converter>" +
      reg("StringReg", "Text", 16, 16, "<Streamable>Yes</Streamable>") + reg("Register", "Raw", 32, 12) +
      choice("Mode", 48, {"Off", "On", "Odd"}, "<pSelected>Level</pSelected><pSelected>Index</pSelected>") +
      "<Integer Name='Index'><Streamable>Yes</Streamable><Value>0</Value><Min>0</Min><Max>3</Max>"
      "<pSelected>Level</pSelected></Integer>"
      "<IntReg Name='Level'><Streamable>Yes</Streamable><Address>64</Address><IntSwissKnife Name='LevelAt'><pVariable "
      "Name='I'>Index</pVariable><Formula>I * 4</Formula></IntSwissKnife><Length>4</Length><AccessMode>RW</AccessMode>"
      "<pPort>Device</pPort><pInvalidator>Poll</pInvalidator></IntReg>" +
      reg("MaskedIntReg", "Bits", 80, 4, "<LSB>3</LSB><MSB>9</MSB><Sign>Signed</Sign>") +
      "<Boolean Name='Flag'><Streamable>Yes</Streamable><pValue>FlagReg</pValue></Boolean>" +
      reg("IntReg", "FlagReg", 84, 4) +
      "<Command Name='Start'><pValue>StartReg</pValue><CommandValue>1</CommandValue></Command>" +
      reg("IntReg", "StartReg", 88, 4) + reg("IntReg", "Poll", 92, 4, "<PollingTime>10</PollingTime>", "RO") +
      "<IntSwissKnife Name='Ratio'><pVariable Name='A'>Bits</pVariable><pVariable Name='B'>Poll</pVariable>"
      "<Formula>A / B</Formula></IntSwissKnife>"
      "<Integer Name='Locked'><pIsLocked>FlagReg</pIsLocked><pIsAvailable>ModeReg</pIsAvailable><Value>4</Value>"
      "</Integer><Node Name='Plain'/>" +
      choice("FileSelector", 256, {"UserSet", "Firmware"}) +
      choice("FileOperationSelector", 260, {"Open", "Close", "Read", "Write", "Delete"}) +
      choice("FileOpenMode", 264, {"Read", "Write", "ReadWrite"}) +
      choice("FileOperationStatus", 268, {"Success", "Failure"}) +
      "<Command Name='FileOperationExecute'><pValue>ExecuteReg</pValue><CommandValue>1</CommandValue></Command>" +
      reg("IntReg", "ExecuteReg", 272, 4) + reg("IntReg", "FileOperationResult", 276, 4) +
      reg("IntReg", "FileAccessOffset", 280, 4) + reg("IntReg", "FileAccessLength", 284, 4) +
      reg("IntReg", "FileSize", 288, 4) + reg("Register", "FileAccessBuffer", 320, 64) +
      reg("IntReg", "ChunkGain", 0, 4, "", "RW", "ChunkA") + reg("StringReg", "ChunkText", 4, 8, "", "RW", "ChunkA") +
      reg("Register", "ChunkKept", 0, 8, "", "RW", "ChunkB") + reg("IntReg", "EventValue", 0, 4, "", "RO", "EventA") +
      reg("StringReg", "EventText", 4, 8, "", "RO", "EventA") +
      "<Integer Name='EventPlain'><EventID>9002</EventID><Value>3</Value></Integer>"
      "<Port Name='Device'/><Port Name='ChunkA'><ChunkID>a1</ChunkID></Port>"
      "<Port Name='ChunkB'><ChunkID>a2</ChunkID><CacheChunkData>Yes</CacheChunkData></Port>"
      "<Port Name='EventA'><EventID>9001</EventID></Port></RegisterDescription>";
  return text;
}

const std::vector<std::string>& names() {
  static const std::vector<std::string> words = {
      "Width", "WidthReg", "WidthMax", "GainReg", "Gain", "Text", "Raw", "Mode", "ModeReg", "Index", "Level", "LevelAt",
      "Bits", "Flag", "FlagReg", "Start", "StartReg", "Poll", "Ratio", "Locked", "Plain", "Root", "Sub", "FileSelector",
      "FileOperationSelector", "FileOperationExecute", "FileOperationStatus", "FileOperationResult", "FileSize",
      "FileAccessBuffer", "FileAccessOffset", "ChunkGain", "ChunkText", "ChunkKept", "EventValue", "EventText",
      "EventPlain", "Device", "ChunkA", "ChunkB", "EventA", "EnumEntry_Mode_On",
      // device files, IDs, values
      "UserSet", "Firmware", "9001", "9002", "0x9001", "a1", "A2", "000000a1", "0", "-1", "3", "1000", "1.5", "nan",
      "true", "On", "Odd", "9223372036854775808", "abc\xc3\xa9", "\xff\xfe", "a\nb",
      // lists, and what is nothing
      "Width|Gain", "Mode|Level|Index", "|", "Root|Nothing", "Nothing", "", std::string(300, 'n'),
      // the simulated camera
      "ExposureTime", "PixelFormat", "AcquisitionStart", "DeviceReset", "UserSetLoad", "UserSetSelector",
      "GainSelector", "DeviceUserID", "TestRegister", "ChunkEnable", "UserFile1", "FirmwareImage"};
  return words;
}

const std::vector<std::string>& descriptions() {
  static const std::vector<std::string> texts = {
      smallDescription(),
      std::string(ox::simulation::SimulatedCamera::description()),
      smallDescription().substr(0, smallDescription().size() / 2),
      "<RegisterDescription/>",
      "",
      "<RegisterDescription ModelName='M' VendorName='V' StandardNameSpace='None' SchemaMajorVersion='1' "
      "SchemaMinorVersion='1' SchemaSubMinorVersion='0' MajorVersion='1' MinorVersion='0' SubMinorVersion='0' "
      "ProductGuid='1' VersionGuid='1'><Category Name='Root'/><Port Name='Device'/></RegisterDescription>"};
  return texts;
}

const std::vector<std::string>& settings() {
  static const std::vector<std::string> texts = {
      "Width = \"11\"\nGain = \"2.5\"\nMode = \"On\"\n",
      "Level[Mode(All)][Index(All)] = \"3\"\n",
      "Level[Mode(On)][Index(2)] = \"3\"\nLevel[Nothing(2)] = \"3\"\nText = \"a\\nb\\\"\"\n",
      "Width = \"1000000\"\nWidth 11\n= \"3\"\n[Mode(On)] = \"1\"\n\xff = \"\xff\"\n",
      "",
      "# a remark\r\nFlag = \"true\"\r\nRaw = \"0x0102\"\r\n"};
  return texts;
}

HostFiles::HostFiles()
    : contents_{smallDescription(), storedArchive({{"camera.xml", smallDescription()}}), settings()[0], "",
                updateFile()} {
  for (int& descriptor : descriptors_) {
    descriptor = memfd_create("calls", MFD_CLOEXEC);
    if (descriptor < 0) std::abort();
    paths_.push_back("/proc/self/fd/" + std::to_string(descriptor));
  }
  paths_.insert(paths_.end(), {"/dev/null", "/nonexistent/file", "/proc/self/fd", "", "/proc/self/mem"});
  restore();
}

HostFiles::~HostFiles() {
  for (const int descriptor : descriptors_) close(descriptor);
}

void HostFiles::restore() const {
  for (size_t i = 0; i < kFiles; ++i) replace(i, contents_[i]);
}

void HostFiles::replace(size_t index, const std::string& content) const {
  if (ftruncate(descriptors_[index], 0) != 0 ||
      pwrite(descriptors_[index], content.data(), content.size(), 0) != static_cast<ssize_t>(content.size()))
    std::abort();
}

}  // namespace calls
