#include <algorithm>
#include <charconv>
#include <filesystem>
#include <fstream>
#include <limits>
#include <nlohmann/json.hpp>

#include "Encoders.h"
#include "Failure.h"

namespace ox::pixels {

namespace {

using Json = nlohmann::ordered_json;

std::size_t packedRowBytes(const Format& format, const ImageView& image) noexcept {
  const uint64_t bits = format.planes == Planes::Interleaved ? format.bitsPerPixel : format.sampleBits;
  return (image.width * bits + 7) / 8;
}

// The unsigned number that a member holds; a missing one changes nothing. False for any other and for too large ones.
template <class Number>
bool take(const Json& json, const char* name, Number& value) {
  const auto member = json.find(name);
  if (member == json.end()) return true;
  if (!member->is_number_unsigned() || member->get<uint64_t>() > std::numeric_limits<Number>::max()) return false;
  value = static_cast<Number>(member->get<uint64_t>());
  return true;
}

bool takeNumber(const Json& json, uint32_t& number) {
  const auto member = json.find("number");
  if (member == json.end() || !member->is_string()) return false;
  const auto& text = member->get_ref<const std::string&>();
  if (!text.starts_with("0x")) return false;
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data() + 2, end, number, 16);
  return error == std::errc() && stop == end;
}

bool readAll(const std::string& path, std::vector<uint8_t>& bytes) {
  std::error_code error;
  if (!std::filesystem::is_regular_file(path, error)) return false;
  std::ifstream stream(path, std::ios::binary | std::ios::ate);
  if (!stream || stream.tellg() < 0) return false;
  bytes.resize(static_cast<std::size_t>(stream.tellg()));
  stream.seekg(0);
  stream.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
  return static_cast<bool>(stream);
}

}  // namespace

Result writeRaw(const ImageView& image, std::string_view members, Output& output, std::string& json) {
  Json description;
  if (!members.empty()) {
    description = Json::parse(members, nullptr, false);
    if (!description.is_object()) return failure(Code::BadArgument, "the members for the JSON are no JSON object");
  }
  if (image.data == nullptr) return failure(Code::BadArgument, "the image has no memory");
  const Format format = describe(image.format);
  uint64_t bytes = 0;
  const bool complete =
      imageBytes(image.format, image.width, image.height, image.stride, 0, bytes) && bytes <= image.size;
  const std::size_t row = packedRowBytes(format, image);
  const bool padded = complete && image.stride > row;

  Json facts{{"format", format.name},
             {"number", formatted("0x{:08X}", image.format)},
             {"width", image.width},
             {"height", image.height},
             {"stride", padded ? row : image.stride},
             {"bytes", padded     ? row * format.sampleRows(image.height)
                       : complete ? bytes
                                  : image.size},
             {"complete", complete},
             {"significantBits", significantBits(image)},
             {"bigEndian", image.bigEndian},
             {"highAligned", image.highAligned}};
  for (const auto& [name, value] : description.items())
    if (!facts.contains(name)) facts[name] = value;
  json = facts.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";

  const auto* const data = static_cast<const uint8_t*>(image.data);
  if (!padded) {
    output.write(data, complete ? bytes : image.size);
    return {};
  }
  for (uint64_t y = 0; y < format.sampleRows(image.height); ++y)
    if (!output.write(data + y * image.stride, row)) break;
  return {};
}

Result loadRaw(const char* path, StoredImage& stored) noexcept {
  return withMemory([&]() -> Result {
    if (path == nullptr) return failure(Code::BadArgument, "there is no file name");
    const std::string description = std::string(path) + ".json";
    StoredImage read;
    std::vector<uint8_t> text;
    if (!readAll(description, text)) return failure(Code::Io, "cannot read {}", description);
    if (!readAll(path, read.bytes)) return failure(Code::Io, "cannot read {}", path);
    const Json json = Json::parse(text.begin(), text.end(), nullptr, false);
    ImageView& image = read.image;
    const auto flag = [&](const char* name) { return json.contains(name) && json[name] == true; };
    if (!json.is_object() || !takeNumber(json, image.format) || !take(json, "width", image.width) ||
        !take(json, "height", image.height) || !take(json, "stride", image.stride) ||
        !take(json, "significantBits", image.significantBits))
      return failure(Code::BadFile, "no description of an image: {}", description);
    image.bigEndian = flag("bigEndian");
    image.highAligned = flag("highAligned");
    image.data = read.bytes.data();
    image.size = read.bytes.size();
    uint64_t bytes = 0;
    if (auto bad = imageBytes(image.format, image.width, image.height, image.stride, 0, bytes); !bad)
      return failure(Code::BadFile, "{}: {}", bad.text, description);
    if (bytes > image.size)
      return failure(Code::BadFile, "{} bytes, but the image that the JSON describes has {}: {}", image.size, bytes,
                     path);
    stored = std::move(read);
    return {};
  });
}

}  // namespace ox::pixels
