// Runs the built tool as a process, the way a script does, in a folder of its own.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

struct ToolResult {
  int status = -1;  // exit status; -1 if the process did not end by itself
  std::string out;
  std::string err;

  // Standard output as JSON; a test failure and null where it is none.
  nlohmann::json json() const;
  // The documents on its lines, one on each.
  std::vector<nlohmann::json> records() const;
};

// The folder goes away with the fixture.
class ToolTest : public testing::Test {
 protected:
  ToolTest();
  ~ToolTest() override;

  ToolResult run(const std::vector<std::string>& arguments) const;
  // With "--json", and an expected exit status.
  nlohmann::json runJson(std::vector<std::string> arguments, int status = 0) const;
  // Any program, found through PATH, in the same way.
  ToolResult runProgram(const std::vector<std::string>& command) const;

  std::string path(const std::string& name) const { return (folder_ / name).string(); }
  std::string write(const std::string& name, const std::string& text) const;
  // Writes camera.xml, version 1.2.3: `nodes`, the first of them on line 3, and the category Root with `features`.
  std::string describe(const std::string& features, const std::string& nodes) const;
  std::string read(const std::string& name) const;
  std::vector<std::string> files() const;

 private:
  std::filesystem::path folder_;
};
