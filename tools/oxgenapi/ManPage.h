// The manual page, from what the command line says about itself.
#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace tool {

// In the markup of man(7).
std::string manPage(CLI::App& app, const std::string& version);

// The first word with which the build asks for it.
inline constexpr const char* kManPageRequest = "__man";

}  // namespace tool
