// The nodes of the file access protocol in one node map, and what has been selected through them.
#pragma once
#include <cstdint>
#include <string>
#include <vector>

#include "GenApi/Filestream.h"
#include "GenApi/ICommand.h"
#include "GenApi/IEnumeration.h"
#include "GenApi/IInteger.h"
#include "GenApi/INodeMap.h"
#include "GenApi/IRegister.h"

namespace GENAPI_NAMESPACE {

struct FileProtocolAdapter::Nodes {
  // An enumeration together with the entry that was written to it last.
  struct Selection {
    IEnumeration* node = nullptr;
    std::string entry;
    int64_t value = 0;

    void write(const char* name);
    // Whether the device still has that entry selected, as far as it can be read.
    bool holds(const char* name) const;
  };

  bool attached = false;
  std::string missing;
  std::string outcome;   // of the latest operation, for texts
  bool isStuck = false;  // an operation has not finished within its limit

  Selection file;
  Selection operation;
  IEnumeration* openMode = nullptr;
  IEnumeration* operationStatus = nullptr;
  ICommand* execute = nullptr;
  IInteger* offset = nullptr;
  IInteger* length = nullptr;
  IInteger* result = nullptr;
  IRegister* buffer = nullptr;

  int64_t successValue = 0;
  bool hasSuccess = false;
  int64_t block = 0;            // for the present selection; 0 when it must be computed again
  std::vector<uint8_t> padded;  // the last block of a file, filled up; sized at its first use

  // Throws LogicalErrorException before a successful attach, InvalidArgumentException for a null name.
  void require(const char* fileName) const;
  // Writes both selectors.
  void select(const char* fileName, const char* operationName);
  // Writes a selector only when it does not hold its entry any more.
  void keepSelected(const char* fileName, const char* operationName);
  int64_t blockSize();
  // Tells the device to transfer `wanted` bytes; the number that it accepted: fewer when its limit has shrunk, more
  // when its increment asks for it, 0 when it accepts nothing.
  int64_t announceLength(int64_t wanted);
  // Sets the first bytes of the buffer, filled up with zeros to `announced` and to its access unit.
  void fillBuffer(const char* bytes, int64_t count, int64_t announced);
  // Executes the operation and waits for its end; whether its status is success. Throws TimeoutException.
  bool run();
};

}  // namespace GENAPI_NAMESPACE
