// What calls are made of: names, settings texts, descriptions and files that mean something to each other.
#pragma once
#include <array>
#include <string>
#include <vector>

namespace calls {

// A description with a node of every kind over the memory of a port, files, chunks, events, a polled node and loops
// among selectors; and the same zipped.
const std::string& smallDescription();

// Nodes of the descriptions, lists of them, names of ports and device files, event and chunk IDs, values.
const std::vector<std::string>& names();

// Descriptions: the small one, that of the simulated camera, others that are refused.
const std::vector<std::string>& descriptions();

// Settings texts that fit the small description, more or less.
const std::vector<std::string>& settings();

// Paths that may be read and written without harm: files in memory, devices, a folder, nothing.
class HostFiles {
 public:
  HostFiles();
  ~HostFiles();
  HostFiles(const HostFiles&) = delete;
  HostFiles& operator=(const HostFiles&) = delete;

  // Gives the files their first content again.
  void restore() const;
  void replace(size_t index, const std::string& content) const;
  const std::vector<std::string>& paths() const { return paths_; }

 private:
  static constexpr size_t kFiles = 5;
  std::array<int, kFiles> descriptors_{};
  std::array<std::string, kFiles> contents_;
  std::vector<std::string> paths_;
};

}  // namespace calls
