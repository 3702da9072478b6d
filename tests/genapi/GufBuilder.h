// Builds zip archives and update files for tests.
#pragma once
#include <zip.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <stdexcept>
#include <string>
#include <vector>

struct ZipEntry {
  std::string name;
  std::string bytes;
  bool deflated = false;
};

inline std::string zipped(const std::vector<ZipEntry>& entries) {
  zip_error_t error;
  zip_error_init(&error);
  zip_source_t* target = zip_source_buffer_create(nullptr, 0, 0, &error);
  zip_source_keep(target);
  zip_t* archive = zip_open_from_source(target, ZIP_TRUNCATE, &error);
  for (const ZipEntry& entry : entries) {
    zip_source_t* source = zip_source_buffer(archive, entry.bytes.data(), entry.bytes.size(), 0);
    const zip_int64_t index = zip_file_add(archive, entry.name.c_str(), source, ZIP_FL_ENC_UTF_8);
    zip_file_set_mtime(archive, static_cast<zip_uint64_t>(index), 1700000000, 0);  // the same bytes every time
    zip_set_file_compression(archive, static_cast<zip_uint64_t>(index), entry.deflated ? ZIP_CM_DEFLATE : ZIP_CM_STORE,
                             9);
  }
  if (zip_close(archive) != 0) throw std::runtime_error("zip_close");
  zip_stat_t facts;
  zip_stat_init(&facts);
  zip_source_stat(target, &facts);
  std::string bytes(facts.size, '\0');
  zip_source_open(target);
  zip_source_read(target, bytes.data(), bytes.size());
  zip_source_close(target);
  zip_source_free(target);
  zip_error_fini(&error);
  return bytes;
}

// A file in the temporary folder that goes with its object.
class TemporaryFile {
 public:
  explicit TemporaryFile(const std::string& bytes) {
    char name[] = "/tmp/guf_test_XXXXXX";
    const int descriptor = ::mkstemp(name);
    if (descriptor < 0) throw std::runtime_error("mkstemp");
    std::fclose(::fdopen(descriptor, "wb"));
    path_ = name;
    write(bytes);
  }
  ~TemporaryFile() { std::remove(path_.c_str()); }
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;
  void write(const std::string& bytes) const { std::ofstream(path_, std::ios::binary | std::ios::trunc) << bytes; }
  const char* path() const { return path_.c_str(); }

 private:
  std::string path_;
};

// An update file around a control file and data members.
inline std::string guf(const std::string& control, std::vector<ZipEntry> data = {}, const std::string& signature = "") {
  data.insert(data.begin(), {"control.xml", control, true});
  std::vector<ZipEntry> outer{{"package.zip", zipped(data)}};
  if (!signature.empty()) outer.push_back({"package.p7s", signature});
  return zipped(outer);
}
