// A camera with device files behind the standard file access features: a byte-addressed port, and its description.
#pragma once
#include <algorithm>
#include <map>
#include <string>
#include <vector>

#include "genapi/TestNodeMap.h"

class FileCamera : public MemoryPort {
 public:
  enum Register {
    Selector = 0,
    Operation = 4,
    OpenMode = 8,
    Execute = 12,
    Status = 16,
    Result = 20,
    Offset = 24,
    Length = 28,
    Size = 32,
    Buffer = 64,
    Model = 96,
    Mode = 128,
    Activate = 132
  };
  enum Operations { Open = 0, Close = 1, Read = 2, Write = 3, Delete = 4 };
  static constexpr uint32_t kBufferBytes = 12;

  FileCamera() { std::memcpy(&memory[Model], "EX-100", 7); }

  std::map<uint32_t, std::string> files{{0, "user set"}, {1, ""}};
  bool failsAtEnd = true;  // a read behind the end is a Failure, else a Success of zero bytes
  bool refusesOpen = false;
  bool refusesClose = false;
  uint32_t capacity = 1 << 20;  // bytes that a file can hold
  uint32_t shortCount = 0;      // most bytes that one block takes; 0 for all
  int executions = 0;
  int opened = 0;                 // files open now
  std::vector<uint32_t> lengths;  // of the blocks asked for

 protected:
  void written(int64_t address) override {
    if (address == Selector) setWord(Size, static_cast<uint32_t>(files[word(Selector)].size()));
    if (address != Execute) return;
    ++executions;
    setWord(Execute, 0);
    setWord(Status, perform() ? 0 : 1);
    setWord(Size, static_cast<uint32_t>(files[word(Selector)].size()));
  }

 private:
  bool perform() {
    std::string& file = files[word(Selector)];
    const uint32_t at = word(Offset);
    uint32_t count = std::min(word(Length), kBufferBytes);
    switch (word(Operation)) {
      case Open:
        if (refusesOpen || opened) return false;
        ++opened;
        if (word(OpenMode) == 1) file.clear();
        return true;
      case Close:
        opened = 0;
        return !refusesClose;
      case Delete:
        file.clear();
        return true;
      case Read:
        lengths.push_back(word(Length));
        count = at >= file.size() ? 0 : std::min<uint32_t>(count, static_cast<uint32_t>(file.size()) - at);
        setWord(Result, count);
        if (count == 0) return !failsAtEnd;
        std::copy_n(file.begin() + at, count, memory.begin() + Buffer);
        return true;
      case Write:
        lengths.push_back(word(Length));
        if (shortCount) count = std::min(count, shortCount);
        if (at + count > capacity) return false;
        file.resize(std::max<size_t>(file.size(), at + count));
        std::copy_n(memory.begin() + Buffer, count, file.begin() + at);
        setWord(Result, count);
        return true;
      default:
        return false;
    }
  }
};

// `lengthExtra` stands inside FileAccessLength; `without` names a node to leave out.
inline std::string fileDescription(const std::string& lengthExtra = "", const std::string& without = "") {
  const auto reg = [](const std::string& name, int address, const std::string& mode = "RW",
                      const std::string& cache = "WriteThrough") {
    return "<IntReg Name=\"" + name + "\"><Address>" + std::to_string(address) +
           "</Address><Length>4</Length><AccessMode>" + mode + "</AccessMode><pPort>Device</pPort><Cachable>" + cache +
           "</Cachable><Sign>Unsigned</Sign><Endianess>LittleEndian</Endianess></IntReg>";
  };
  const auto enumeration = [&](const std::string& name, int address, const std::vector<std::string>& entries,
                               const std::string& mode = "RW", const std::string& cache = "WriteThrough") {
    std::string text = "<Enumeration Name=\"" + name + "\">";
    for (size_t i = 0; i < entries.size(); ++i)
      text += "<EnumEntry Name=\"" + entries[i] + "\"><Value>" + std::to_string(i) + "</Value></EnumEntry>";
    return text + "<pValue>" + name + "Reg</pValue></Enumeration>" + reg(name + "Reg", address, mode, cache);
  };
  std::string nodes = "<Port Name=\"Device\"/>";
  const auto add = [&](const std::string& name, const std::string& text) {
    if (name != without) nodes += text;
  };
  add("FileSelector", enumeration("FileSelector", FileCamera::Selector, {"UserSet", "Firmware"}));
  add("FileOperationSelector",
      enumeration("FileOperationSelector", FileCamera::Operation, {"Open", "Close", "Read", "Write", "Delete"}));
  add("FileOpenMode", enumeration("FileOpenMode", FileCamera::OpenMode, {"Read", "Write"}));
  add("FileOperationStatus",
      enumeration("FileOperationStatus", FileCamera::Status, {"Success", "Failure"}, "RO", "NoCache"));
  add("FileOperationExecute",
      "<Command Name=\"FileOperationExecute\"><pValue>ExecuteReg</pValue>"
      "<CommandValue>1</CommandValue></Command>" +
          reg("ExecuteReg", FileCamera::Execute, "RW", "NoCache"));
  add("FileOperationResult", reg("FileOperationResult", FileCamera::Result, "RO", "NoCache"));
  add("FileAccessOffset", reg("FileAccessOffset", FileCamera::Offset));
  add("FileAccessLength", "<Integer Name=\"FileAccessLength\"><pValue>LengthReg</pValue>" + lengthExtra + "</Integer>" +
                              reg("LengthReg", FileCamera::Length));
  add("FileSize", reg("FileSize", FileCamera::Size, "RO", "NoCache"));
  add("FileAccessBuffer", "<Register Name=\"FileAccessBuffer\"><Address>" + std::to_string(FileCamera::Buffer) +
                              "</Address><Length>12</Length><AccessMode>RW</AccessMode><pPort>Device</pPort>"
                              "<Cachable>NoCache</Cachable></Register>");
  nodes += "<StringReg Name=\"DeviceModelName\"><Address>" + std::to_string(FileCamera::Model) +
           "</Address><Length>16</Length><AccessMode>RO</AccessMode><pPort>Device</pPort></StringReg>" +
           reg("Mode", FileCamera::Mode) +
           "<Command Name=\"Activate\"><pValue>ActivateReg</pValue>"
           "<CommandValue>1</CommandValue></Command>" +
           reg("ActivateReg", FileCamera::Activate, "RW", "NoCache");
  return nodes;
}

// The camera connected to a node map of that description.
struct FileBench {
  explicit FileBench(const std::string& nodes = fileDescription()) : map(nodes) { map->Connect(&camera); }
  ~FileBench() {
    if (map.get()) map->Connect(static_cast<GENAPI_NAMESPACE::IPort*>(nullptr));
  }
  FileCamera camera;
  TestNodeMap map;
};
