// A transport of your own: a class that reads and writes a device's registers. The device here is a lamp made of
// memory, whose cable can be pulled; with a real one the two functions send packets and wait for the answer.
#include <OxGenApi/oxgenapi.hpp>

#include <array>
#include <cstring>
#include <iostream>

// What the lamp can do. Mostly a file that comes with the device or out of it: loadFile() loads one.
constexpr const char* kDescription = R"(
  <RegisterDescription VendorName='Example' ModelName='Lamp' StandardNameSpace='None' SchemaMajorVersion='1'
      SchemaMinorVersion='1' SchemaSubMinorVersion='0' MajorVersion='1' MinorVersion='0' SubMinorVersion='0'
      ProductGuid='1' VersionGuid='1' xmlns='http://www.genicam.org/GenApi/Version_1_1'>
    <Category Name='Root'><pFeature>Brightness</pFeature></Category>
    <Integer Name='Brightness'><pValue>BrightnessReg</pValue><Max>1000</Max></Integer>
    <IntReg Name='BrightnessReg'><Address>0x100</Address><Length>2</Length><AccessMode>RW</AccessMode>
      <pPort>Device</pPort><Sign>Unsigned</Sign><Endianess>BigEndian</Endianess></IntReg>
    <Port Name='Device'/>
  </RegisterDescription>)";

class Lamp : public oxgenapi::Registers {
 public:
  bool isConnected = true;

  void read(void* buffer, int64_t address, int64_t length) override {
    std::memcpy(buffer, at(address, length), static_cast<size_t>(length));
  }
  void write(const void* buffer, int64_t address, int64_t length) override {
    std::memcpy(at(address, length), buffer, static_cast<size_t>(length));
  }
  void powerOn() { registers_ = {}; }

 private:
  // What is thrown becomes the text of the failed call.
  char* at(int64_t address, int64_t length) {
    const auto size = static_cast<int64_t>(registers_.size());
    if (!isConnected) throw std::runtime_error("the cable is pulled");
    if (length < 0 || address < 0 || length > size || address > size - length)
      throw std::out_of_range("there is no such register");
    return registers_.data() + address;
  }
  std::array<char, 0x200> registers_{};
};

int main() {
  Lamp lamp;
  oxgenapi::NodeMap map;
  map.loadText(kDescription);
  map.connect(lamp);

  const oxgenapi::Integer brightness = map.integer("Brightness");
  brightness.set(300);
  std::cout << "Brightness = " << brightness.value() << " of " << brightness.max() << '\n';

  lamp.isConnected = false;
  try {
    brightness.set(400);
  } catch (const oxgenapi::Error& error) {
    std::cout << error.feature() << ": " << error.what() << '\n';
  }

  // It comes back as it was at power on. What was remembered of it is no longer true: forget what the port has read.
  lamp.powerOn();
  lamp.isConnected = true;
  map["Device"].invalidate();
  std::cout << "back again: Brightness = " << brightness.value() << '\n';
}
