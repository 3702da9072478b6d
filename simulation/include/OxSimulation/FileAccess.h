// The files of the camera as a test sees them: what is asked of them, and how it may be made to go wrong.
#pragma once

#include <cstdint>
#include <functional>
#include <limits>
#include <string_view>

namespace ox::simulation {

/// Values of FileOperationSelector and FileOperationStatus.
enum class FileOperation : uint32_t { kOpen = 0, kClose = 1, kRead = 2, kWrite = 3, kDelete = 4 };
enum class FileStatus : uint32_t { kSuccess = 0, kFailure = 1, kUnavailable = 2, kInvalidParameter = 3 };

/// An operation that FileOperationExecute has started.
struct FileRequest {
  std::string_view file = {};  ///< entry of FileSelector
  FileOperation operation = FileOperation::kOpen;
  int64_t offset = 0;  ///< bytes, as registers have it
  int64_t length = 0;  ///< bytes, as registers have it
};

/// How the camera is to take it.
struct FileVerdict {
  /// Anything but kSuccess: the operation is not carried out and ends with this status.
  FileStatus status = FileStatus::kSuccess;
  /// At most so many bytes are moved by a read or write, and reported as moved.
  int64_t maxBytes = std::numeric_limits<int64_t>::max();
  /// Time of the camera until FileOperationExecute clears itself, in nanoseconds.
  int64_t durationNs = 0;
  /// Not 0: the write to FileOperationExecute itself fails with this result code.
  int refusal = 0;
};

/// Asked at the start of every file operation while the camera is locked: must not call the camera.
using FileJudge = std::function<FileVerdict(const FileRequest&)>;

}  // namespace ox::simulation
