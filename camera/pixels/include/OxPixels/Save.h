// Images in files, and in memory as files.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "OxPixels/Image.h"
#include "OxPixels/Result.h"

namespace ox::pixels {

enum class FileKind : uint8_t {
  Unknown,
  Png,   ///< .png
  Tiff,  ///< .tif, .tiff; not compressed; BigTIFF above 4 GB
  Pgm,   ///< .pgm; gray
  Ppm,   ///< .ppm; red, green, blue
  Pnm,   ///< .pnm; gray or colours, as the image is
  Npy,   ///< .npy; the samples as an array of NumPy
  Jpeg,  ///< .jpg, .jpeg; 8 bits, loses detail
  Raw,   ///< .raw; the bytes as they came, without padding, and NAME.json beside
};

/// What the ending of a file's name asks for, in upper or lower case.
FileKind fileKind(std::string_view path) noexcept;

struct SaveOptions {
  /// Replace a file of that name. Otherwise it stays, and saving fails with Code::Exists.
  bool overwrite = false;
  /// Make 8 bits of deeper pictures. Otherwise more than 8 significant bits become 16 (not for JPEG).
  bool eightBits = false;
  /// PNG, TIFF: leave values as they are instead of spreading the significant bits over 16. A PNG that is spread says
  /// the significant bits (sBIT). PGM and PPM always leave them and say the largest value.
  bool keepValues = false;
  int pngLevel = 1;      ///< 0, not compressed, to 9, smallest; 1 is the fastest that compresses
  int jpegQuality = 90;  ///< 1 to 100
  /// For raw: members for the JSON, the text of a JSON object, for example time stamps and the camera's name. Empty:
  /// none.
  std::string_view members = {};
};

struct Saved {
  FileKind kind = FileKind::Unknown;  ///< Raw also where another was asked for that does not take the format
  std::string path;                   ///< of the image
  uint64_t bytes = 0;                 ///< of that file
};

/// Saves an image. The ending of `path` says how; an image that is no picture of a known format, asked for as one, is
/// saved raw with ".raw" added to the name, and `saved` says so. Mosaics become colours, see convert(); .npy and .raw
/// keep the samples. The file appears under its name only when it is complete; after a failure nothing is left.
/// Memory: some rows of the picture, for JPEG all of it.
/// BadArgument: an unknown ending, an option out of range. Exists, Io, NoMemory. BadSize, Unsupported as convert().
Result save(const ImageView& image, const char* path, const SaveOptions& options, Saved& saved) noexcept;

/// A PNG or JPEG in memory, made as save() does. BadArgument: another kind.
Result encode(const ImageView& image, FileKind kind, const SaveOptions& options, std::vector<uint8_t>& file) noexcept;

/// An image from a file.
struct StoredImage {
  std::vector<uint8_t> bytes;
  ImageView image;  ///< refers to `bytes`
};

/// Reads a raw file that save() has written, by the JSON beside it.
/// Io: one of the two cannot be read. BadFile: the JSON does not describe an image that fits the bytes.
Result loadRaw(const char* path, StoredImage& stored) noexcept;

}  // namespace ox::pixels
