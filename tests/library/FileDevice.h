// A memory device that keeps files behind the standard file access features.
#pragma once
#include <algorithm>
#include <map>

#include "Device.h"

class FileDevice : public Device {
 public:
  static constexpr size_t kBlock = 64;

  FileDevice() : Device(nodes()) {
    after = [this](int64_t address, bool isWrite) {
      if (isWrite && address == static_cast<int64_t>(kExecute)) perform();
    };
  }

  static std::string nodes(const std::string& selectorMode = "RW") {
    const auto reg = [](const std::string& kind, const std::string& name, size_t address, const std::string& mode,
                        size_t length = 4) {
      return "<" + kind + " Name='" + name + "'><Address>" + std::to_string(address) + "</Address><Length>" +
             std::to_string(length) + "</Length><AccessMode>" + mode + "</AccessMode><pPort>Device</pPort>" +
             "<Cachable>NoCache</Cachable></" + kind + ">";
    };
    const auto choice = [&](const std::string& name, size_t address, const std::string& mode,
                            const std::vector<std::string>& entries) {
      std::string text = "<Enumeration Name='" + name + "'>";
      for (size_t i = 0; i < entries.size(); ++i) {
        text += "<EnumEntry Name='" + entries[i] + "'><Value>" + std::to_string(i) + "</Value></EnumEntry>";
      }
      return text + "<pValue>" + name + "Reg</pValue></Enumeration>" + reg("IntReg", name + "Reg", address, mode);
    };
    return choice("FileSelector", kSelector, selectorMode, {"UserSet", "Firmware"}) +
           choice("FileOperationSelector", kOperation, "RW", {"Open", "Close", "Read", "Write", "Delete"}) +
           choice("FileOpenMode", kMode, "RW", {"Read", "Write", "ReadWrite"}) +
           choice("FileOperationStatus", kStatus, "RO", {"Success", "Failure"}) +
           "<Command Name='FileOperationExecute'><pValue>ExecuteReg</pValue><CommandValue>1</CommandValue></Command>" +
           reg("IntReg", "ExecuteReg", kExecute, "RW") + reg("IntReg", "FileOperationResult", kResult, "RO") +
           reg("IntReg", "FileAccessOffset", kOffset, "RW") + reg("IntReg", "FileAccessLength", kLength, "RW") +
           reg("IntReg", "FileSize", kSize, "RO") + reg("Register", "FileAccessBuffer", kBuffer, "RW", kBlock);
  }

  std::string& file(const std::string& name) { return files_[name == "UserSet" ? 0 : 1]; }

  int refusedOperation = 0;  // the operation with this number, counted from 1, ends with status Failure
  int operations = 0;
  bool isOpen = false;

 private:
  static constexpr size_t kSelector = 0, kOperation = 4, kMode = 8, kExecute = 12, kStatus = 16, kResult = 20,
                          kOffset = 24, kLength = 28, kSize = 32, kBuffer = 256;

  int32_t at(size_t address) const { return static_cast<int32_t>(integerAt(address)); }
  void put(size_t address, size_t value) { setInteger(address, static_cast<int32_t>(value)); }

  void perform() {
    enum { Open, Close, Read, Write };
    std::string& bytes = files_[at(kSelector)];
    char* buffer = reinterpret_cast<char*>(memory.data() + kBuffer);
    const size_t offset = static_cast<size_t>(at(kOffset));
    size_t count = static_cast<size_t>(at(kLength));
    const bool refused = ++operations == refusedOperation;
    put(kExecute, 0);
    put(kStatus, refused ? 1 : 0);
    put(kResult, 0);
    if (at(kOperation) == Close) isOpen = false;
    if (refused) return;
    if (at(kOperation) == Open) isOpen = true;
    if (at(kOperation) == Open && at(kMode) == 1) bytes.clear();
    if (at(kOperation) == Read) {
      count = std::min(count, bytes.size() - std::min(offset, bytes.size()));
      std::copy_n(bytes.data() + offset, count, buffer);
      put(kResult, count);
    }
    if (at(kOperation) == Write) {
      bytes.resize(offset);
      bytes.append(buffer, count);
      put(kResult, count);
    }
    put(kSize, bytes.size());
  }

  std::map<int32_t, std::string> files_;
};
