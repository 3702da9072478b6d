#include "PixelSamples.h"

#include <algorithm>

#include "Colours.h"

namespace ox::pixels {

PixelSamples::PixelSamples(const ImageView& image) noexcept
    : reader_(image), height_(image.height), isMosaic_(reader_.format().kind == Kind::Bayer) {
  std::size_t place = 0;
  for (const char letter : reader_.format().order) {
    const auto channel = static_cast<std::size_t>(std::find(letters_, letters_ + channelCount_, letter) - letters_);
    if (channel == channelCount_) letters_[channelCount_++] = letter;
    if (isMosaic_) mosaic_[place++] = static_cast<uint8_t>(channel);
  }
  valueCount_ = isMosaic_ ? 1 : channelCount_;
}

void PixelSamples::read(std::size_t index, uint32_t x, uint32_t y, std::size_t count, uint16_t* values) const noexcept {
  const Format& format = reader_.format();
  const char wanted = letters_[index];
  if (isMosaic_) return reader_.read(y, x, count, values);
  if (format.planes == Planes::Planar) return reader_.read(index * height_ + y, x, count, values);
  if (format.planes != Planes::Interleaved) {
    if (wanted == 'Y') return reader_.read(y, x, count, values);
    const uint64_t row = height_ + (format.planes == Planes::Semi420 ? y / 2 : y);
    reader_.read(row, x, (count + 1) / 2 * 2, values);
    for (std::size_t i = 0; i < count; ++i) values[i] = values[i / 2 * 2 + (wanted == format.order[1] ? 0 : 1)];
    return;
  }
  const std::size_t size = format.order.size(), group = format.pixelsPerGroup;
  const std::size_t groups = (count + group - 1) / group;
  uint16_t samples[kMostChannels * kPiece];
  reader_.read(y, uint64_t{x} / group * size, groups * size, samples);
  std::size_t places[4];  // of the value in the samples of a group, for each of its pixels
  for (std::size_t pixel = 0, place = 0; pixel < group; ++pixel, place += wanted == 'Y' ? 1 : 0) {
    place = format.order.find(wanted, group == 1 || wanted != 'Y' ? 0 : place);
    places[pixel] = place;
  }
  for (std::size_t i = 0; i < count; ++i) values[i] = samples[i / group * size + places[i % group]];
}

}  // namespace ox::pixels
