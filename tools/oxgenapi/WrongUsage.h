// What is wrong with a command line, in one plain line.
#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace tool {

// "get: NAME is missing (features to read); see oxgenapi get --help", for the error with which parsing ended.
std::string wrongUsage(const CLI::App& app, const CLI::ParseError& error);

}  // namespace tool
