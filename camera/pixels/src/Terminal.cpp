#include "OxPixels/Terminal.h"

#include <algorithm>
#include <array>
#include <vector>

#include "Failure.h"

namespace ox::pixels {

namespace {

using Colour = std::array<uint8_t, 3>;

Result check(const RgbView& picture) noexcept {
  const uint64_t row = 3 * uint64_t{picture.width};
  const uint64_t stride = picture.stride != 0 ? picture.stride : row;
  uint64_t bytes = 0;
  if (picture.width == 0 || picture.height == 0) return failure(Code::BadSize, "the picture is empty");
  if (stride < row) return failure(Code::BadSize, "a stride of {} bytes is less than a row of {}", stride, row);
  if (__builtin_mul_overflow(stride, picture.height - 1, &bytes) || __builtin_add_overflow(bytes, row, &bytes) ||
      bytes > picture.size)
    return failure(Code::BadSize, "{} rows of {} bytes are not in {} bytes", picture.height, stride, picture.size);
  if (picture.data == nullptr) return failure(Code::BadArgument, "the picture has no memory");
  return {};
}

const uint8_t* rowOf(const RgbView& picture, uint64_t y) noexcept {
  return picture.data + y * (picture.stride != 0 ? picture.stride : 3 * std::size_t{picture.width});
}

// The index of the nearest of the cube (16 to 231) and the grays (232 to 255) that all such terminals have.
unsigned nearestOf256(const Colour& colour) noexcept {
  constexpr int kSteps[] = {0, 95, 135, 175, 215, 255};
  const auto distance = [&](int red, int green, int blue) {
    const int dr = red - colour[0], dg = green - colour[1], db = blue - colour[2];
    return dr * dr + dg * dg + db * db;
  };
  unsigned place[3];
  for (std::size_t i = 0; i < 3; ++i) {
    place[i] = 0;
    for (unsigned step = 1; step < 6; ++step)
      if (std::abs(kSteps[step] - colour[i]) < std::abs(kSteps[place[i]] - colour[i])) place[i] = step;
  }
  const int mean = (colour[0] + colour[1] + colour[2]) / 3;
  const int gray = std::clamp((mean - 3) / 10, 0, 23), level = 8 + 10 * gray;
  const bool grayIsNearer =
      distance(level, level, level) < distance(kSteps[place[0]], kSteps[place[1]], kSteps[place[2]]);
  return grayIsNearer ? 232 + static_cast<unsigned>(gray) : 16 + 36 * place[0] + 6 * place[1] + place[2];
}

void appendColour(std::string& text, bool ground, const Colour& colour, TerminalColours colours) {
  if (colours == TerminalColours::True)
    text += formatted("\x1b[{};2;{};{};{}m", ground ? 48 : 38, colour[0], colour[1], colour[2]);
  else
    text += formatted("\x1b[{};5;{}m", ground ? 48 : 38, nearestOf256(colour));
}

}  // namespace

Result shrink(const RgbView& picture, uint32_t width, uint32_t height, uint8_t* out, std::size_t size) noexcept {
  if (auto bad = check(picture); !bad) return bad;
  if (width == 0 || height == 0 || width > picture.width || height > picture.height) {
    return failure(Code::BadSize, "{} x {} pixels cannot be shrunk to {} x {}", picture.width, picture.height, width,
                   height);
  }
  if (out == nullptr || size / 3 / width < height)
    return failure(Code::BadSize, "{} x {} pixels do not fit into {} bytes", width, height, out == nullptr ? 0 : size);
  const auto edge = [](uint64_t index, uint64_t from, uint64_t to) { return index * from / to; };
  for (uint32_t y = 0; y < height; ++y) {
    const uint64_t top = edge(y, picture.height, height), bottom = edge(y + uint64_t{1}, picture.height, height);
    for (uint32_t x = 0; x < width; ++x) {
      const uint64_t left = edge(x, picture.width, width), right = edge(x + uint64_t{1}, picture.width, width);
      uint64_t sums[3] = {};
      for (uint64_t row = top; row < bottom; ++row) {
        const uint8_t* const from = rowOf(picture, row);
        for (uint64_t i = 3 * left; i < 3 * right; i += 3)
          for (std::size_t c = 0; c < 3; ++c) sums[c] += from[i + c];
      }
      const uint64_t count = (bottom - top) * (right - left);
      for (const uint64_t sum : sums) *out++ = static_cast<uint8_t>((sum + count / 2) / count);
    }
  }
  return {};
}

Result terminalText(const RgbView& picture, uint32_t columns, uint32_t rows, TerminalColours colours,
                    std::string& text) noexcept {
  return withMemory([&]() -> Result {
    if (auto bad = check(picture); !bad) return bad;
    if (columns == 0 || rows == 0)
      return failure(Code::BadArgument, "a text of {} x {} characters is empty", columns, rows);
    const double scale = std::min({1.0, static_cast<double>(columns) / picture.width, 2.0 * rows / picture.height});
    const auto side = [&](uint32_t length) { return std::max(1u, static_cast<uint32_t>(length * scale + 1e-9)); };
    const uint32_t width = side(picture.width), height = side(picture.height);
    std::vector<uint8_t> small(std::size_t{3} * width * height);
    if (auto bad = shrink(picture, width, height, small.data(), small.size()); !bad) return bad;

    std::string made;
    const auto at = [&](uint32_t x, uint32_t y) -> Colour {
      const uint8_t* const pixel = small.data() + 3 * (std::size_t{y} * width + x);
      return {pixel[0], pixel[1], pixel[2]};
    };
    for (uint32_t y = 0; y < height; y += 2) {
      for (uint32_t x = 0; x < width; ++x) {
        if (x == 0 || at(x, y) != at(x - 1, y)) appendColour(made, false, at(x, y), colours);
        const bool below = y + 1 < height;  // the last row of an odd number keeps the terminal's ground
        if (below && (x == 0 || at(x, y + 1) != at(x - 1, y + 1))) appendColour(made, true, at(x, y + 1), colours);
        made += "\u2580";
      }
      made += "\x1b[0m\n";
    }
    text = std::move(made);
    return {};
  });
}

}  // namespace ox::pixels
