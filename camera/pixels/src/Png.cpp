#include <png.h>
#include <zlib.h>

#include <csetjmp>
#include <new>

#include "Encoders.h"
#include "Failure.h"

namespace ox::pixels {

namespace {

// libpng leaves its functions by longjmp when something fails: no destructor may stand between that and setjmp.
struct Writer {
  Output& output;
  Bands& bands;
  Result result;
  png_structp png = nullptr;
  png_infop info = nullptr;
};

void onError(png_structp png, png_const_charp text) {
  auto& writer = *static_cast<Writer*>(png_get_error_ptr(png));
  writer.result = failure(Code::BadSize, "libpng: {}", text);
  std::longjmp(png_jmpbuf(png), 1);
}

void onWarning(png_structp, png_const_charp) {}

void onWrite(png_structp png, png_bytep bytes, png_size_t count) {
  if (!static_cast<Writer*>(png_get_io_ptr(png))->output.write(bytes, count)) png_error(png, "cannot write");
}

void onFlush(png_structp) {}

void encodeAll(Writer& writer, const ImageView& image, const Shape& shape, int level) {
  if (setjmp(png_jmpbuf(writer.png))) return;
  png_structp const png = writer.png;
  png_set_write_fn(png, &writer, onWrite, onFlush);
  png_set_user_limits(png, PNG_UINT_31_MAX, PNG_UINT_31_MAX);
  png_set_compression_buffer_size(png, 256 << 10);
  png_set_compression_level(png, level);
  // What remains of a camera's picture after the filter is noise and flat areas: looking for longer matches takes time
  // and finds none, and the files become larger.
  if (level == 1) png_set_compression_strategy(png, Z_RLE);
  png_set_filter(png, PNG_FILTER_TYPE_BASE, level == 0 ? PNG_FILTER_NONE : PNG_FILTER_SUB);
  const int colours = shape.channels == 1 ? PNG_COLOR_TYPE_GRAY : PNG_COLOR_TYPE_RGB;
  png_set_IHDR(png, writer.info, image.width, image.height, shape.sampleBits, colours, PNG_INTERLACE_NONE,
               PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
  const png_byte bits = significantBits(image);
  if (bits < shape.sampleBits && shape.valueBits == shape.sampleBits) {
    const png_color_8 significant{bits, bits, bits, bits, 0};
    png_set_sBIT(png, writer.info, &significant);
  }
  png_write_info(png, writer.info);
  for (;;) {
    writer.result = writer.bands.next();
    if (!writer.result) return;
    if (writer.bands.rows() == 0) break;
    for (uint32_t i = 0; i < writer.bands.rows(); ++i) png_write_row(png, writer.bands.row(i));
  }
  png_write_end(png, nullptr);
}

}  // namespace

Result writePng(const ImageView& image, const Shape& shape, const SaveOptions& options, Output& output) {
  Bands bands(image, shape, Bands::Order::BigEndian);
  Writer writer{output, bands, {}};
  writer.png = png_create_write_struct(PNG_LIBPNG_VER_STRING, &writer, onError, onWarning);
  if (writer.png != nullptr) writer.info = png_create_info_struct(writer.png);
  if (writer.info != nullptr) encodeAll(writer, image, shape, options.pngLevel);
  const bool made = writer.info != nullptr;
  png_destroy_write_struct(&writer.png, &writer.info);
  if (!made) throw std::bad_alloc();
  return writer.result;
}

}  // namespace ox::pixels
