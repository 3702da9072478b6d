// Files inside the device as standard streams, over the standard file access features of a node map.
#pragma once
#include <cstdint>
#include <ios>
#include <istream>
#include <memory>
#include <ostream>
#include <streambuf>
#include <string>
#include <type_traits>
#include <utility>

#include "Base/GCTypes.h"

namespace GENAPI_NAMESPACE {

class INodeMap;

// Longest wait for one file operation in milliseconds, counted from its start; then TimeoutException.
inline constexpr int64_t kFileOperationTimeout = 120000;

// How files of a device are opened, read, written and closed. File names are entries of FileSelector.
class IFileProtocolAdapter {
 public:
  virtual ~IFileProtocolAdapter() = default;
  // Binds to a node map. False when it lacks a node of the protocol.
  virtual bool attach(INodeMap* pNodeMap) = 0;
  // False when the device refuses. out (with or without trunc) opens for writing, in for reading, both for both.
  virtual bool openFile(const char* pFileName, std::ios_base::openmode mode) = 0;
  // False when the device refuses.
  virtual bool closeFile(const char* pFileName) = 0;
  // Bytes written from buf to the file's offset offs: fewer than len when the device stops early.
  virtual int64_t write(const char* buf, int64_t offs, int64_t len, const char* pFileName) = 0;
  // Bytes read into buf from the file's offset offs: fewer than len at the end of the file.
  virtual int64_t read(char* buf, int64_t offs, int64_t len, const char* pFileName) = 0;
  // The block size in bytes in which reading (in) or writing (out) moves the file.
  virtual int64_t getBufSize(const char* pFileName, std::ios_base::openmode mode) = 0;
};

// The protocol of the standard features: FileSelector, FileOperationSelector, FileOpenMode, FileOperationStatus
// (enumerations), FileOperationExecute (command), FileAccessOffset, FileAccessLength, FileOperationResult (integers),
// FileAccessBuffer (register). The node map's lock is taken per node access, not for a transfer. Exceptions of nodes
// and ports pass unchanged.
//
// What one block costs: writing sets offset, length and buffer, executes, asks IsDone once, reads status and result: 7
// port accesses where each node is a plain register. Reading costs the same 7: offset, length, execute, IsDone, status,
// result, buffer. Every further IsDone is one more. File and operation are selected once per file and direction; before
// each later block the selectors are only compared through their caches, and written again when somebody else moved
// them. Selectors that may not be cached cost one read each for that.
class FileProtocolAdapter : public IFileProtocolAdapter {
 public:
  FileProtocolAdapter();
  ~FileProtocolAdapter() override;
  FileProtocolAdapter(const FileProtocolAdapter&) = delete;
  FileProtocolAdapter& operator=(const FileProtocolAdapter&) = delete;

  // False for null, and when one of the nodes above is missing or of another kind; missingFeature() then names it.
  bool attach(INodeMap* pNodeMap) override;
  // All operations throw LogicalErrorException before a successful attach, InvalidArgumentException for a file name
  // that FileSelector does not know, AccessException for a node that is not accessible, TimeoutException for an
  // operation without end.
  bool openFile(const char* pFileName, std::ios_base::openmode mode) override;
  // Tried once more when a node or port fails on the way; what failed first is reported all the same.
  bool closeFile(const char* pFileName) override;
  int64_t write(const char* buf, int64_t offs, int64_t len, const char* pFileName) override;
  int64_t read(char* buf, int64_t offs, int64_t len, const char* pFileName) override;
  // min(length of FileAccessBuffer, maximum of FileAccessLength), rounded down to the length's increment, at least 1.
  int64_t getBufSize(const char* pFileName, std::ios_base::openmode mode) override;
  // False when the device refuses.
  virtual bool deleteFile(const char* pFileName);

  // Why attach answered false: the name of the feature; empty otherwise and for a null node map.
  const std::string& missingFeature() const;
  // How the latest operation ended: "status " and a symbolic name of FileOperationStatus, or why the device was not
  // even asked to execute it.
  const std::string& lastOutcome() const;

 private:
  struct Nodes;
  std::unique_ptr<Nodes> nodes_;
};

// What both directions share: the adapter, the open file's name, its running offset, one block of memory.
class DeviceFile;

// Output buffer over a device file, one block of memory, no seeking. overflow, xsputn and sync throw RuntimeException
// "writing file 'X' stopped at byte N: status S" when the device ends a write early; exceptions of nodes and ports
// pass.
template <typename CharType, typename Traits = std::char_traits<CharType>>
class ODevFileStreamBuf : public std::basic_streambuf<CharType, Traits> {
 public:
  using int_type = typename Traits::int_type;
  static constexpr std::ios_base::openmode kUsualMode = std::ios_base::out | std::ios_base::trunc;

  ODevFileStreamBuf();
  // Closes; never throws.
  ~ODevFileStreamBuf() override;
  // This buffer; null when a file is open already. Throws RuntimeException when the device lacks the protocol or
  // refuses to open the file; exceptions of nodes and ports pass.
  ODevFileStreamBuf* open(INodeMap* pNodeMap, const char* pFileName, std::ios_base::openmode mode);
  bool is_open() const;
  // Writes what the buffer still holds and closes the file, whatever fails. Null when no file is open. Throws
  // RuntimeException when the last block or the close is refused.
  ODevFileStreamBuf* close();
  // Takes the source to its end straight into the block; the number of characters. Exceptions of either side pass.
  std::streamsize copyFrom(std::basic_streambuf<CharType, Traits>& source);

 protected:
  int_type overflow(int_type c) override;
  std::streamsize xsputn(const CharType* data, std::streamsize count) override;
  // Writes the buffered part of a block; the next write continues after it.
  int sync() override;

 private:
  void flushBlock();
  std::unique_ptr<DeviceFile> file_;
};

// Input buffer over a device file, one block of memory, no seeking. Exceptions of nodes and ports pass; a short count
// is the end of the file. A block without bytes or with a status other than success is the end, too, except below the
// size that FileSize gives: RuntimeException "reading file 'X' stopped at byte N of M: status S".
template <typename CharType, typename Traits = std::char_traits<CharType>>
class IDevFileStreamBuf : public std::basic_streambuf<CharType, Traits> {
 public:
  using int_type = typename Traits::int_type;
  static constexpr std::ios_base::openmode kUsualMode = std::ios_base::in;

  IDevFileStreamBuf();
  // Closes; never throws.
  ~IDevFileStreamBuf() override;
  // This buffer; null when a file is open already, the device lacks the protocol, or it refuses to open the file.
  // Exceptions of nodes and ports pass.
  IDevFileStreamBuf* open(INodeMap* pNodeMap, const char* pFileName, std::ios_base::openmode mode);
  bool is_open() const;
  // Null when no file is open or the device refuses; exceptions of nodes and ports pass.
  IDevFileStreamBuf* close();

 protected:
  int_type underflow() override;
  std::streamsize xsgetn(CharType* data, std::streamsize count) override;

 private:
  std::unique_ptr<DeviceFile> file_;
};

// What the streams of both directions share. Built with exceptions(badbit), so that the original exception of a node, a
// port or a device's refusal leaves the formatted and unformatted calls of the standard stream.
template <typename Stream, typename Buffer>
class DevFileStreamBase : public Stream {
 public:
  using StreamBuf = Buffer;

  DevFileStreamBase();
  DevFileStreamBase(INodeMap* pNodeMap, const char* pFileName, std::ios_base::openmode mode = Buffer::kUsualMode);
  // Closes silently.
  ~DevFileStreamBase() override;

  StreamBuf* rdbuf() const { return const_cast<StreamBuf*>(&buffer_); }
  bool is_open() const { return buffer_.is_open(); }
  // Sets failbit when the buffer's open answers null; its exceptions pass.
  void open(INodeMap* pNodeMap, const char* pFileName, std::ios_base::openmode mode = Buffer::kUsualMode);
  // Sets failbit when the buffer's close answers null; its exceptions pass. The file counts as closed all the same.
  void close();

 private:
  Buffer buffer_;
};

// Output stream into a device file, replaced unless the mode says otherwise. The constructor and open throw when the
// file cannot be opened: RuntimeException "file 'X' could not be opened for writing: ...". close writes the rest and
// throws RuntimeException "file 'X' could not be closed: status S", or what the last block throws; the destructor is
// silent, so call close to learn whether the file was taken.
template <typename CharType, typename Traits = std::char_traits<CharType>>
class ODevFileStreamBase
    : public DevFileStreamBase<std::basic_ostream<CharType, Traits>, ODevFileStreamBuf<CharType, Traits>> {
 public:
  using DevFileStreamBase<std::basic_ostream<CharType, Traits>, ODevFileStreamBuf<CharType, Traits>>::DevFileStreamBase;

  // Copies the source to its end, block by block. Exceptions of either side pass; failbit (no exception) when nothing
  // was copied.
  ODevFileStreamBase& operator<<(std::basic_streambuf<CharType, Traits>* source);
  // Everything else goes to the usual inserters. A using-declaration would make their members compete with the free
  // ones for characters and texts.
  template <typename Value>
  requires(!std::is_convertible_v<Value, std::basic_streambuf<CharType, Traits>*>) std::basic_ostream<CharType, Traits>
  &operator<<(Value&& value) {
    return static_cast<std::basic_ostream<CharType, Traits>&>(*this) << std::forward<Value>(value);
  }
  std::basic_ostream<CharType, Traits>& operator<<(
      std::basic_ostream<CharType, Traits>& (*manipulator)(std::basic_ostream<CharType, Traits>&)) {
    return manipulator(*this);
  }
  std::basic_ostream<CharType, Traits>& operator<<(std::ios_base& (*manipulator)(std::ios_base&)) {
    manipulator(*this);
    return *this;
  }
};

// Input stream from a device file. failbit after construction or open when the device lacks the protocol or refuses,
// after close when it refuses; exceptions of nodes and ports leave the constructor, open, close, read and get.
template <typename CharType, typename Traits = std::char_traits<CharType>>
class IDevFileStreamBase
    : public DevFileStreamBase<std::basic_istream<CharType, Traits>, IDevFileStreamBuf<CharType, Traits>> {
 public:
  using DevFileStreamBase<std::basic_istream<CharType, Traits>, IDevFileStreamBuf<CharType, Traits>>::DevFileStreamBase;
};

extern template class ODevFileStreamBuf<char>;
extern template class IDevFileStreamBuf<char>;
extern template class DevFileStreamBase<std::ostream, ODevFileStreamBuf<char>>;
extern template class DevFileStreamBase<std::istream, IDevFileStreamBuf<char>>;
extern template class ODevFileStreamBase<char>;
extern template class IDevFileStreamBase<char>;

using ODevFileStream = ODevFileStreamBase<char>;
using IDevFileStream = IDevFileStreamBase<char>;

}  // namespace GENAPI_NAMESPACE
