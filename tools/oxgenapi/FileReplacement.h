// Replaces a file as a whole: the new contents are written beside it, flushed to the disk and renamed over it, so that
// readers and a crash see the old file or the new one. A target that exists and is no regular file (a pipe, a terminal)
// is written directly.
#pragma once

#include <string>
#include <string_view>

namespace tool {

class FileReplacement {
 public:
  // Throws Failure where nothing can be created beside `target`.
  explicit FileReplacement(const std::string& target);
  FileReplacement(const FileReplacement&) = delete;
  FileReplacement& operator=(const FileReplacement&) = delete;
  // Removes what was written unless commit() has been called.
  ~FileReplacement();

  // Where to write the new contents.
  const std::string& path() const { return path_; }
  // Replaces the contents of path(). Throws Failure.
  void write(std::string_view text);
  // Puts the new file in the target's place. Throws Failure.
  void commit();

 private:
  std::string target_;
  std::string path_;
  bool beside_ = false;
  bool done_ = false;
};

}  // namespace tool
