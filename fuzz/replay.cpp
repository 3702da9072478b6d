// Runs a fuzz target over saved inputs: every file named, and every file in each folder named. The target itself says
// what is wrong, by ending the program. No input at all is a failure: it means that the corpus was not found.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

namespace {

bool replay(const std::filesystem::path& file) {
  std::ifstream stream(file, std::ios::binary);
  const std::vector<char> bytes{std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
  if (!stream) {
    std::fprintf(stderr, "cannot read %s\n", file.c_str());
    return false;
  }
  // Named before it runs, so that a crash tells its input.
  std::printf("%s (%zu bytes)\n", file.c_str(), bytes.size());
  std::fflush(stdout);
  LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size());
  return true;
}

}  // namespace

int main(int argc, char** argv) {
  std::vector<std::filesystem::path> files;
  for (int i = 1; i < argc; ++i) {
    if (!std::filesystem::is_directory(argv[i])) {
      files.emplace_back(argv[i]);
      continue;
    }
    for (const auto& entry : std::filesystem::recursive_directory_iterator(argv[i]))
      if (entry.is_regular_file()) files.push_back(entry.path());
  }
  std::sort(files.begin(), files.end());
  bool complete = !files.empty();
  for (const auto& file : files) complete = replay(file) && complete;
  std::printf("%zu inputs\n", files.size());
  return complete ? 0 : 1;
}
