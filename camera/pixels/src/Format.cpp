#include "OxPixels/Format.h"

#include <algorithm>
#include <array>
#include <utility>

#include "FormatTable.h"

namespace ox::pixels {

namespace {

// Names from before the PFNC that cameras still use.
constexpr std::pair<std::string_view, uint32_t> kOlderNames[] = {
    {"Mono8Signed", 0x01080002},  {"RGB8Packed", 0x02180014},    {"BGR8Packed", 0x02180015},
    {"RGBA8Packed", 0x02200016},  {"BGRA8Packed", 0x02200017},   {"RGB10Packed", 0x02300018},
    {"BGR10Packed", 0x02300019},  {"RGB12Packed", 0x0230001A},   {"BGR12Packed", 0x0230001B},
    {"RGB16Packed", 0x02300033},  {"RGB10V2Packed", 0x0220001D}, {"RGB565Packed", 0x02100035},
    {"BGR565Packed", 0x02100036}, {"RGB8Planar", 0x02180021},    {"RGB10Planar", 0x02300022},
    {"RGB12Planar", 0x02300023},  {"RGB16Planar", 0x02300024},   {"YUV411Packed", 0x020C001E},
    {"YUV422Packed", 0x0210001F}, {"YUV444Packed", 0x02180020},  {"YUV422_YUYV_Packed", 0x02100032},
};

const Format* findNumber(uint32_t number) noexcept {
  const auto table = formatTable();
  const auto found = std::ranges::lower_bound(table, number, {}, &Format::number);
  return found != table.end() && found->number == number ? &*found : nullptr;
}

}  // namespace

bool Format::isPicture() const noexcept { return isUnpackable() && kind != Kind::Data; }

bool Format::isUnpackable() const noexcept {
  return sampleBits != 0 && sampleBits <= 16 && numbers == Numbers::Unsigned;
}

uint64_t Format::samplesPerRow(uint64_t width) const noexcept {
  if (planes != Planes::Interleaved) return width;
  if (packing == Packing::Word32 || packing == Packing::Rgb565) return 3 * width;
  return sampleBits == 0 ? 0 : width * bitsPerPixel / sampleBits;
}

uint64_t Format::sampleRows(uint64_t height) const noexcept {
  switch (planes) {
    case Planes::Planar: return height * order.size();
    case Planes::Semi422: return 2 * height;
    case Planes::Semi420: return height + (height + 1) / 2;
    case Planes::Interleaved: break;
  }
  return height;
}

Format describe(uint32_t number) noexcept {
  if (const Format* const known = findNumber(number)) return *known;
  Format unknown;
  unknown.number = number;
  unknown.bitsPerPixel = static_cast<uint8_t>(number >> 16 & 0xff);
  return unknown;
}

const Format* findFormat(std::string_view name) noexcept {
  for (const auto& [older, number] : kOlderNames)
    if (older == name) return findNumber(number);
  const auto table = formatTable();
  const auto found = std::ranges::find(table, name, &Format::name);
  return found != table.end() && !name.empty() ? &*found : nullptr;
}

std::span<const Format> allFormats() noexcept { return formatTable(); }

std::string_view bayerOrderAt(std::string_view order, uint32_t x, uint32_t y) noexcept {
  static constexpr std::array<std::string_view, 4> kPhases{"RGGB", "GRBG", "GBRG", "BGGR"};  // one step in x, y, both
  const auto found = std::ranges::find(kPhases, order);
  if (found == kPhases.end()) return {};
  const auto phase = static_cast<std::size_t>(found - kPhases.begin());
  return kPhases[phase ^ (x & 1) ^ (y & 1) << 1];
}

}  // namespace ox::pixels
