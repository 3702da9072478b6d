"""A transport of your own: an object that reads and writes a device's registers. The device here is a lamp made of memory,
whose cable can be pulled; with a real one the two functions send packets and wait for the answer."""

import oxgenapi

# What the lamp can do. Mostly a file that comes with the device or out of it: load_file() loads one.
DESCRIPTION = """
<RegisterDescription VendorName='Example' ModelName='Lamp' StandardNameSpace='None' SchemaMajorVersion='1'
    SchemaMinorVersion='1' SchemaSubMinorVersion='0' MajorVersion='1' MinorVersion='0' SubMinorVersion='0'
    ProductGuid='1' VersionGuid='1' xmlns='http://www.genicam.org/GenApi/Version_1_1'>
  <Category Name='Root'><pFeature>Brightness</pFeature></Category>
  <Integer Name='Brightness'><pValue>BrightnessReg</pValue><Max>1000</Max></Integer>
  <IntReg Name='BrightnessReg'><Address>0x100</Address><Length>2</Length><AccessMode>RW</AccessMode>
    <pPort>Device</pPort><Sign>Unsigned</Sign><Endianess>BigEndian</Endianess></IntReg>
  <Port Name='Device'/>
</RegisterDescription>"""


class Lamp:
    def __init__(self):
        self.description = DESCRIPTION
        self.registers = bytearray(0x200)
        self.connected = True

    def read(self, address, length):
        return self._at(address, length)[:]

    def write(self, address, data):
        self._at(address, len(data))[:] = data

    def _at(self, address, length):  # what is raised becomes the text of the failed call
        if not self.connected:
            raise ConnectionError("the cable is pulled")
        if not 0 <= address <= len(self.registers) - length:
            raise ValueError("there is no such register")
        return memoryview(self.registers)[address:address + length]


lamp = Lamp()
with oxgenapi.NodeMap.of(lamp) as cam:
    cam.Brightness.value = 300
    print(cam.Brightness)

    lamp.connected = False
    try:
        cam.Brightness.value = 400
    except oxgenapi.Error as error:
        print(error)

    # It comes back as it was at power on. What was remembered of it is no longer true: forget what the port has read.
    lamp.registers[:] = bytes(0x200)
    lamp.connected = True
    cam.Device.invalidate()
    print("back again: Brightness =", cam.Brightness.value)
