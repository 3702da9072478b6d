// The files in the camera and the registers that open, read and write them.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>
#include <vector>

#include "CameraCore.h"

namespace ox::simulation {

class Files final : public Behaviour {
 public:
  explicit Files(CameraCore& core);

  void powerOn() override;
  void save(StateBlocks& blocks) const override;
  void load(const StateBlocks& blocks) override;

  /// Content by entry of FileSelector. Throws std::invalid_argument for an unknown name.
  std::vector<uint8_t>& content(std::string_view name);
  const std::vector<uint8_t>& content(std::string_view name) const;

  void judgeBy(FileJudge judge) { judge_ = std::move(judge); }

 private:
  struct File {
    std::string_view name;
    bool readable;
    bool writable;
    std::vector<uint8_t> bytes;
    bool openForRead = false;
    bool openForWrite = false;
  };

  void execute();
  void perform(std::size_t file, FileOperation operation, int64_t maxBytes);
  FileStatus open(File& file);
  FileStatus read(const File& file, int64_t maxBytes);
  FileStatus write(File& file, int64_t maxBytes);
  void finish(FileStatus status);

  std::array<File, 5> files_;  // in the order of FileSelector
  FileJudge judge_;
};

}  // namespace ox::simulation
