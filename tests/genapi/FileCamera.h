// A camera with device files behind the standard file access features: a byte-addressed port, and its description.
#pragma once
#include <algorithm>
#include <optional>

#include "TestMap.h"

class FileCamera : public BytePort {
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

  FileCamera() : BytePort(256) { std::memcpy(&memory[Model], "EX-100", 7); }

  std::map<uint32_t, std::string> files{{0, "user set"}, {1, ""}};
  bool failsAtEnd = true;  // a read behind the end is a Failure, else a Success of zero bytes
  bool refusesOpen = false;
  bool refusesClose = false;
  uint32_t capacity = 1 << 20;      // bytes that a file can hold
  uint32_t shortCount = 0;          // most bytes that one block takes; 0 for all
  std::optional<uint32_t> claimed;  // what a write says that it took, when that is not the truth
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
      case Close: opened = 0; return !refusesClose;
      case Delete: file.clear(); return true;
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
        setWord(Result, claimed.value_or(count));
        return true;
      default: return false;
    }
  }
};

// `lengthExtra` and `offsetExtra` stand inside FileAccessLength and FileAccessOffset; `without` names a node to leave
// out. The result and the buffer are cachable, as in many cameras, so transfers have to read past the cache.
inline std::string fileDescription(const std::string& lengthExtra = "", const std::string& without = "",
                                   const std::string& offsetExtra = "") {
  const std::string uncached = tag("Cachable", "NoCache"), answer = tag("AccessMode", "RO") + uncached;
  const auto word = [](const std::string& name, int address, const std::string& more = "") {
    return reg("IntReg", name, address, 4, more);
  };
  const auto enumeration = [&](const std::string& name, int address, const std::vector<std::string>& entries,
                               const std::string& more = "") {
    std::string text = "<Enumeration Name='" + name + "'>";
    for (size_t i = 0; i < entries.size(); ++i)
      text += "<EnumEntry Name='" + entries[i] + "'>" + tag("Value", std::to_string(i)) + "</EnumEntry>";
    return text + tag("pValue", name + "Reg") + "</Enumeration>" + word(name + "Reg", address, more);
  };
  const auto command = [&](const std::string& name, int address) {
    return over(name, name + "Reg", "<CommandValue>1</CommandValue>", "Command") +
           word(name + "Reg", address, uncached);
  };
  std::string nodes = reg("StringReg", "DeviceModelName", FileCamera::Model, 16, tag("AccessMode", "RO")) +
                      word("Mode", FileCamera::Mode) + command("Activate", FileCamera::Activate);
  for (const auto& [name, text] : std::initializer_list<std::pair<std::string, std::string>>{
           {"FileSelector", enumeration("FileSelector", FileCamera::Selector, {"UserSet", "Firmware"})},
           {"FileOperationSelector",
            enumeration("FileOperationSelector", FileCamera::Operation, {"Open", "Close", "Read", "Write", "Delete"})},
           {"FileOpenMode", enumeration("FileOpenMode", FileCamera::OpenMode, {"Read", "Write"})},
           {"FileOperationStatus",
            enumeration("FileOperationStatus", FileCamera::Status, {"Success", "Failure"}, answer)},
           {"FileOperationExecute", command("FileOperationExecute", FileCamera::Execute)},
           {"FileOperationResult", word("FileOperationResult", FileCamera::Result, tag("AccessMode", "RO"))},
           {"FileAccessOffset",
            over("FileAccessOffset", "OffsetReg", offsetExtra) + word("OffsetReg", FileCamera::Offset)},
           {"FileAccessLength",
            over("FileAccessLength", "LengthReg", lengthExtra) + word("LengthReg", FileCamera::Length)},
           {"FileSize", word("FileSize", FileCamera::Size, answer)},
           {"FileAccessBuffer", reg("Register", "FileAccessBuffer", FileCamera::Buffer, 12)}})
    if (name != without) nodes += text;
  return nodes;
}

// A camera connected to a node map of that description.
template <class Camera = FileCamera>
struct FileBench {
  explicit FileBench(const std::string& nodes = fileDescription()) : t(nodes) { map->Connect(&camera); }
  Camera camera;
  TestMap t;
  INodeMap* map = t.map;
};
