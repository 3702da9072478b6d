// Writes update files.
#pragma once
#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <string>
#include <utility>

#include "StoredArchive.h"

// An update file on disk for as long as the object lives.
class UpdateFile {
 public:
  // `members` are the data files beside control.xml.
  UpdateFile(const std::string& name, const std::string& control, Members members) : path(testing::TempDir() + name) {
    replace(control, std::move(members));
  }
  ~UpdateFile() { std::remove(path.c_str()); }

  void replace(const std::string& control, Members members) const {
    members.insert(members.begin(), {"control.xml", control});
    std::ofstream(path, std::ios::binary | std::ios::trunc) << storedArchive({{"package.zip", storedArchive(members)}});
  }

  const std::string path;
};
