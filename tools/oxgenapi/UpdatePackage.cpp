#include "UpdatePackage.h"

#include <zip.h>

#include <memory>
#include <string_view>
#include <vector>

namespace tool {
namespace {

struct Discard {
  void operator()(zip_t* archive) const { zip_discard(archive); }
};
using Archive = std::unique_ptr<zip_t, Discard>;

std::vector<char> read(zip_t* archive, const char* member) {
  zip_stat_t facts;
  if (zip_stat(archive, member, 0, &facts) != 0 || (facts.valid & ZIP_STAT_SIZE) == 0) return {};
  zip_file_t* file = zip_fopen(archive, member, 0);
  if (file == nullptr) return {};
  std::vector<char> bytes(facts.size);
  const zip_int64_t count = zip_fread(file, bytes.data(), bytes.size());
  zip_fclose(file);
  bytes.resize(count > 0 ? static_cast<size_t>(count) : 0);
  return bytes;
}

}  // namespace

uint64_t dataBytesIn(const std::string& updateFile) {
  const Archive outer(zip_open(updateFile.c_str(), ZIP_RDONLY, nullptr));
  if (!outer) return 0;
  const std::vector<char> package = read(outer.get(), "package.zip");
  zip_source_t* source = zip_source_buffer_create(package.data(), package.size(), 0, nullptr);
  if (source == nullptr) return 0;
  const Archive inner(zip_open_from_source(source, ZIP_RDONLY, nullptr));
  if (!inner) {
    zip_source_free(source);
    return 0;
  }
  uint64_t total = 0;
  for (zip_int64_t index = 0; index < zip_get_num_entries(inner.get(), 0); ++index) {
    zip_stat_t facts;
    if (zip_stat_index(inner.get(), static_cast<zip_uint64_t>(index), 0, &facts) == 0 &&
        std::string_view(facts.name) != "control.xml")
      total += facts.size;
  }
  return total;
}

}  // namespace tool
