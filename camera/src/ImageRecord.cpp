#include "ImageRecord.h"

#include <OxPixels/Format.h>
#include <OxPixels/Image.h>

#include <algorithm>

namespace ox::camera {

TImagePart recordOf(const Part& part, const BufferMemory& memory) noexcept {
  TImagePart record{};
  record.Data = part.size == 0 ? nullptr : static_cast<const uint8_t*>(memory.data) + part.offset;
  record.Size = part.size;
  record.Kind = static_cast<TPartKind>(part.kind);
  record.PixelFormat = part.format;
  record.Width = part.width;
  record.Height = part.height;
  record.OffsetX = part.x;
  record.OffsetY = part.y;
  record.XPadding = part.xPadding;
  record.YPadding = part.yPadding;
  record.Purpose = part.purpose;
  if (part.format == 0) return record;
  const pixels::Format format = pixels::describe(part.format);
  const size_t length = std::min(format.name.size(), sizeof record.PixelFormatName - 1);
  std::copy_n(format.name.data(), length, record.PixelFormatName);
  record.BitsPerPixel = format.bitsPerPixel;
  record.SignificantBits = format.significantBits;
  // Of an incomplete image, too: its rows are where they belong.
  size_t stride = 0;
  uint64_t whole = 0;
  if (pixels::imageBytes(part.format, part.width, part.height, 0, 0, whole) &&
      pixels::findStride(part.format, part.width, part.height, part.xPadding, std::max<uint64_t>(part.size, whole),
                         stride))
    record.Stride = stride;
  return record;
}

TImage recordOf(const Frame& frame, const BufferMemory& memory) noexcept {
  TImage image{};
  image.StructSize = sizeof image;
  image.Buffer = frame.buffer;
  image.State = static_cast<TImageState>(frame.state);
  image.Payload = static_cast<TPayloadKind>(frame.payload);
  image.Data = frame.received == 0 ? nullptr : memory.data;
  image.Size = frame.received;
  image.Needed = frame.needed == 0 ? OX_UNKNOWN : frame.needed;
  image.FrameId = frame.id;
  image.TimeKnown = frame.timeKnown ? 1 : 0;
  image.Time = frame.timeKnown ? frame.time : 0;
  image.HasChunks = frame.hasChunks ? 1 : 0;
  image.FirstDataNs = frame.firstData;
  image.PartCount = static_cast<uint32_t>(frame.parts.size());
  if (!frame.parts.empty()) image.Part = recordOf(frame.parts.front(), memory);
  return image;
}

}  // namespace ox::camera
