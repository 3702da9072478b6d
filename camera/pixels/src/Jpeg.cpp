#include <turbojpeg.h>

#include <cstddef>
#include <memory>
#include <new>

#include "Encoders.h"
#include "Failure.h"
#include "OxPixels/Convert.h"

namespace ox::pixels {

Result makeJpeg(const ImageView& image, const Shape& shape, const SaveOptions& options, std::vector<uint8_t>& file) {
  constexpr uint32_t kMostPixels = 65500;  // the library's limit; the standard's is 65535
  if (image.width > kMostPixels || image.height > kMostPixels) {
    return failure(Code::BadSize, "a JPEG has at most {} rows and columns, the image has {} x {}", kMostPixels,
                   image.width, image.height);
  }
  std::vector<uint8_t> picture(shape.rowBytes(image.width) * image.height);
  if (auto bad = convert(image, {picture.data(), picture.size(), 0, shape.channels, shape.sampleBits}); !bad)
    return bad;

  const std::unique_ptr<void, int (*)(tjhandle)> encoder(tjInitCompress(), tjDestroy);
  if (!encoder) throw std::bad_alloc();
  const int width = static_cast<int>(image.width), height = static_cast<int>(image.height);
  const int subsampling = shape.channels == 1 ? TJSAMP_GRAY : TJSAMP_420;
  file.resize(tjBufSize(width, height, subsampling));
  unsigned char* bytes = file.data();
  unsigned long size = file.size();
  if (tjCompress2(encoder.get(), picture.data(), width, 0, height, shape.channels == 1 ? TJPF_GRAY : TJPF_RGB, &bytes,
                  &size, subsampling, options.jpegQuality, TJFLAG_NOREALLOC) != 0)
    return failure(Code::BadSize, "libjpeg: {}", tjGetErrorStr2(encoder.get()));
  file.resize(size);
  return {};
}

}  // namespace ox::pixels
