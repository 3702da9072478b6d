// Files of the host as stream buffers that say why they failed, and that raise no signal when they do.
#pragma once
#include <cstdint>
#include <ios>
#include <streambuf>
#include <string>
#include <vector>

namespace orxGenApi {

// What both directions share: the descriptor, its path, how far the file has come.
class HostFile : public std::streambuf {
 public:
  ~HostFile() override;
  HostFile(const HostFile&) = delete;
  HostFile& operator=(const HostFile&) = delete;

 protected:
  // A null path is the empty one, which does not open.
  HostFile(const char* path, int flags);
  bool closeDescriptor();
  // "writing host file 'x' stopped near byte 4096: No space left on device", the reason taken from errno.
  std::string failureText(const char* action) const;

  int descriptor_;
  std::string path_;
  uint64_t place_ = 0;  // bytes moved between the buffer and the file
  std::vector<char> buffer_;
};

// Reads a file block by block. A read error throws orx_error 0x80000003 with the reason out of the buffer's members; a
// stream over the buffer would turn it into badbit.
class HostFileReader : public HostFile {
 public:
  explicit HostFileReader(const char* path);
  // Whether the file could be opened and its first block, or the end of an empty file, be read. False for a folder.
  bool isReadable();

 protected:
  int_type underflow() override;
};

// Creates or cuts a file and writes it block by block. A failed write is remembered: the buffer takes nothing any more.
class HostFileWriter : public HostFile {
 public:
  explicit HostFileWriter(const char* path);
  // Closes; whoever wants to know whether that worked calls close().
  ~HostFileWriter() override { close(); }
  bool isOpen() const { return descriptor_ >= 0; }
  // Writes what still waits and closes. True when every byte has reached the file.
  bool close();
  // The reason of the failure; empty while there is none.
  const std::string& failure() const { return failure_; }

 protected:
  int_type overflow(int_type c) override;
  int sync() override;

 private:
  bool flushBlock();

  std::string failure_;
};

}  // namespace orxGenApi
