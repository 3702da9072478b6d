// The description that single calls are measured with: a feature of each kind.
#pragma once
#include <string>

inline std::string integerRegister(const std::string& name, int address, const char* more = "") {
  return "<IntReg Name='" + name + "'><Address>" + std::to_string(address) +
         "</Address><Length>4</Length><AccessMode>RW</AccessMode><pPort>Device</pPort>" + more +
         "<Endianess>BigEndian</Endianess></IntReg>";
}

inline std::string converter(const std::string& name, const std::string& source) {
  return "<Float Name='" + name + "'><pValue>" + name + "Converter</pValue></Float><Converter Name='" + name +
         "Converter'><FormulaTo>FROM * 1000</FormulaTo><FormulaFrom>TO / 1000</FormulaFrom><pValue>" + source +
         "</pValue></Converter>";
}

inline std::string callDescription() {
  std::string text =
      "<RegisterDescription ModelName='M' VendorName='V' StandardNameSpace='None' SchemaMajorVersion='1' "
      "SchemaMinorVersion='1' SchemaSubMinorVersion='0' MajorVersion='1' MinorVersion='0' SubMinorVersion='0' "
      "ProductGuid='P' VersionGuid='V' xmlns='http://www.genicam.org/GenApi/Version_1_1'><Port Name='Device'/>"
      "<Integer Name='Width'><pValue>WidthReg</pValue><Min>0</Min><Max>1000000</Max></Integer>";
  text += integerRegister("WidthReg", 16);
  text += integerRegister("Status", 32, "<Cachable>NoCache</Cachable>");
  text += integerRegister("ExposureReg", 48) + converter("Exposure", "ExposureReg");
  text += integerRegister("TemperatureReg", 52, "<Cachable>NoCache</Cachable>") +
          converter("Temperature", "TemperatureReg");
  text += integerRegister("FlagsReg", 68) + "<Boolean Name='Flag'><pValue>FlagsReg</pValue></Boolean>";
  text += "<Enumeration Name='Mode'>";
  for (int i = 0; i < 40; ++i) {
    const std::string number = std::to_string(i);
    text += "<EnumEntry Name='Mode" + number + "'><Value>" + number + "</Value></EnumEntry>";
  }
  text += "<pValue>ModeReg</pValue></Enumeration>" + integerRegister("ModeReg", 64);
  return text + "</RegisterDescription>";
}
