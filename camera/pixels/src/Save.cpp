#include "OxPixels/Save.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <new>
#include <utility>

#include "Encoders.h"
#include "Failure.h"

namespace ox::pixels {

namespace {

constexpr std::pair<std::string_view, FileKind> kEndings[] = {
    {"png", FileKind::Png},   {"tif", FileKind::Tiff}, {"tiff", FileKind::Tiff}, {"pgm", FileKind::Pgm},
    {"ppm", FileKind::Ppm},   {"pnm", FileKind::Pnm},  {"npy", FileKind::Npy},   {"jpg", FileKind::Jpeg},
    {"jpeg", FileKind::Jpeg}, {"raw", FileKind::Raw}};

class Memory : public Output {
 public:
  explicit Memory(std::vector<uint8_t>& bytes) : bytes_(bytes) {}
  bool write(const void* bytes, std::size_t count) noexcept override try {
    const auto* const from = static_cast<const uint8_t*>(bytes);
    bytes_.insert(bytes_.end(), from, from + count);
    return true;
  } catch (const std::bad_alloc&) {
    full_ = true;
    return false;
  }
  bool isFull() const noexcept { return full_; }

 private:
  std::vector<uint8_t>& bytes_;
  bool full_ = false;
};

Result checkOptions(const SaveOptions& options) noexcept {
  if (options.pngLevel < 0 || options.pngLevel > 9)
    return failure(Code::BadArgument, "PNG has levels from 0 to 9, not {}", options.pngLevel);
  if (options.jpegQuality < 1 || options.jpegQuality > 100)
    return failure(Code::BadArgument, "JPEG has qualities from 1 to 100, not {}", options.jpegQuality);
  return {};
}

// Whether the format can become a file of that kind at all; its geometry may still be bad.
bool takes(FileKind kind, const Format& format) noexcept {
  return kind == FileKind::Raw || (kind == FileKind::Npy ? isArray(format) : format.isPicture());
}

Result writePicture(const ImageView& image, FileKind kind, const SaveOptions& options, NewFile& file) {
  if (kind == FileKind::Npy) return writeNpy(image, file);
  if (auto bad = checkReadable(image); !bad) return bad;
  const Shape shape = shapeOf(image, kind, options);
  if (kind == FileKind::Png) return writePng(image, shape, options, file);
  if (kind == FileKind::Tiff) return writeTiff(image, shape, file);
  if (kind != FileKind::Jpeg) return writePnm(image, shape, file);
  std::vector<uint8_t> bytes;
  if (auto bad = makeJpeg(image, shape, options, bytes); !bad) return bad;
  file.write(bytes.data(), bytes.size());
  return {};
}

Result saveRaw(const ImageView& image, const SaveOptions& options, NewFile& file, const std::string& path) {
  NewFile beside(path + ".json", options.overwrite);
  if (auto bad = beside.open(); !bad) return bad;
  std::string json;
  if (auto bad = writeRaw(image, options.members, file, json); !bad) return bad;
  beside.write(json.data(), json.size());
  if (auto bad = beside.failure(); !bad) return bad;
  if (auto bad = file.publish(); !bad) return bad;
  Result described = beside.publish();
  if (!described && !options.overwrite) file.remove();
  return described;
}

}  // namespace

FileKind fileKind(std::string_view path) noexcept {
  const auto dot = path.rfind('.');
  const std::string_view ending = dot == path.npos ? std::string_view() : path.substr(dot + 1);
  const auto same = [](char a, char b) { return std::tolower(static_cast<unsigned char>(a)) == b; };
  for (const auto& [text, kind] : kEndings)
    if (std::ranges::equal(ending, text, same)) return kind;
  return FileKind::Unknown;
}

Result save(const ImageView& image, const char* path, const SaveOptions& options, Saved& saved) noexcept {
  return withMemory([&]() -> Result {
    if (path == nullptr) return failure(Code::BadArgument, "there is no file name");
    if (auto bad = checkOptions(options); !bad) return bad;
    Saved made{fileKind(path), path, 0};
    if (made.kind == FileKind::Unknown)
      return failure(Code::BadArgument,
                     "the name ends with none of .png .tif .tiff .pgm .ppm .pnm .npy .jpg .jpeg .raw: {}", path);
    if (!takes(made.kind, describe(image.format))) {
      made.kind = FileKind::Raw;
      made.path += ".raw";
    }
    NewFile file(made.path, options.overwrite);
    if (auto bad = file.open(); !bad) return bad;
    Result result = made.kind == FileKind::Raw ? saveRaw(image, options, file, made.path)
                                               : writePicture(image, made.kind, options, file);
    if (auto bad = file.failure(); !bad) return bad;  // the reason for what an encoder says
    if (result && made.kind != FileKind::Raw) result = file.publish();
    if (!result) return result;
    made.bytes = file.size();
    saved = std::move(made);
    return {};
  });
}

Result encode(const ImageView& image, FileKind kind, const SaveOptions& options, std::vector<uint8_t>& file) noexcept {
  return withMemory([&]() -> Result {
    if (kind != FileKind::Png && kind != FileKind::Jpeg)
      return failure(Code::BadArgument, "only PNG and JPEG are made in memory");
    if (auto bad = checkOptions(options); !bad) return bad;
    if (auto bad = checkReadable(image); !bad) return bad;
    const Shape shape = shapeOf(image, kind, options);
    std::vector<uint8_t> bytes;
    Memory memory(bytes);
    Result result =
        kind == FileKind::Png ? writePng(image, shape, options, memory) : makeJpeg(image, shape, options, bytes);
    if (memory.isFull()) throw std::bad_alloc();
    if (result) file = std::move(bytes);
    return result;
  });
}

}  // namespace ox::pixels
