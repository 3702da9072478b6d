// Loads foreign code in another process first, so that a crash in it costs only that process.
#pragma once

#include <filesystem>
#include <string>

namespace ox::camera {

// Where a program or library that contains this address lies, links resolved.
std::filesystem::path folderOfCode(const void* address);

// What loading the module comes to in a process of the program "oxcamera-probe" in `folder`: a phrase that goes after
// the module's name, empty if it neither crashes nor hangs. Without that program nothing is tried.
std::string probeModule(const std::filesystem::path& folder, const std::filesystem::path& module);

}  // namespace ox::camera
