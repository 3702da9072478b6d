#include <tiffio.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <memory>
#include <new>

#include "Encoders.h"
#include "Failure.h"

namespace ox::pixels {

namespace {

struct Stream {
  NewFile& file;
  uint64_t position = 0;
  Result result;
};

Stream& of(thandle_t handle) { return *static_cast<Stream*>(handle); }

tmsize_t onWrite(thandle_t handle, void* bytes, tmsize_t count) {
  Stream& stream = of(handle);
  if (!stream.file.writeAt(stream.position, bytes, static_cast<std::size_t>(count))) return -1;
  stream.position += static_cast<uint64_t>(count);
  return count;
}

// The library reads what it has written of the file's header.
tmsize_t onRead(thandle_t handle, void* bytes, tmsize_t count) {
  Stream& stream = of(handle);
  const ssize_t got =
      ::pread(stream.file.descriptor(), bytes, static_cast<std::size_t>(count), static_cast<off_t>(stream.position));
  if (got > 0) stream.position += static_cast<uint64_t>(got);
  return got;
}

toff_t onSeek(thandle_t handle, toff_t offset, int from) {
  Stream& stream = of(handle);
  stream.position = offset + (from == SEEK_CUR ? stream.position : from == SEEK_END ? stream.file.size() : 0);
  return stream.position;
}

int onClose(thandle_t) { return 0; }

toff_t onSize(thandle_t handle) { return of(handle).file.size(); }

int onError(TIFF*, void* user, const char*, const char* format, va_list values) {
  auto& stream = *static_cast<Stream*>(user);
  if (stream.result) {
    char text[160] = "";
    std::vsnprintf(text, sizeof text, format, values);
    stream.result = failure(Code::BadSize, "libtiff: {}", text);
  }
  return 1;  // nobody else prints it
}

int onWarning(TIFF*, void*, const char*, const char*, va_list) { return 1; }

bool describeTo(TIFF* tiff, const ImageView& image, const Shape& shape, uint32_t rowsPerStrip) {
  return TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, image.width) == 1 &&
         TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, image.height) == 1 &&
         TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, shape.sampleBits) == 1 &&
         TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, shape.channels) == 1 &&
         TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, shape.channels == 1 ? PHOTOMETRIC_MINISBLACK : PHOTOMETRIC_RGB) == 1 &&
         TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG) == 1 &&
         TIFFSetField(tiff, TIFFTAG_COMPRESSION, COMPRESSION_NONE) == 1 &&
         TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, rowsPerStrip) == 1 &&
         TIFFSetField(tiff, TIFFTAG_MAXSAMPLEVALUE, (1u << shape.valueBits) - 1) == 1;
}

}  // namespace

Result writeTiff(const ImageView& image, const Shape& shape, NewFile& file) {
  constexpr uint64_t kMostClassic = 4'000'000'000;  // offsets have 32 bits, and there is a table of strips
  const uint64_t bytes = shape.rowBytes(image.width) * uint64_t{image.height};
  Bands bands(image, shape, Bands::Order::Machine);
  Stream stream{file, 0, {}};
  const std::unique_ptr<TIFFOpenOptions, void (*)(TIFFOpenOptions*)> options(TIFFOpenOptionsAlloc(),
                                                                             TIFFOpenOptionsFree);
  if (!options) throw std::bad_alloc();
  TIFFOpenOptionsSetErrorHandlerExtR(options.get(), onError, &stream);
  TIFFOpenOptionsSetWarningHandlerExtR(options.get(), onWarning, nullptr);
  TIFF* const opened = TIFFClientOpenExt("", bytes > kMostClassic ? "wl8" : "wl", &stream, onRead, onWrite, onSeek,
                                         onClose, onSize, nullptr, nullptr, options.get());
  if (opened == nullptr) return stream.result ? failure(Code::NoMemory, "libtiff cannot start") : stream.result;
  const std::unique_ptr<TIFF, void (*)(TIFF*)> tiff(opened, TIFFClose);
  bool well = describeTo(tiff.get(), image, shape, bands.rowsPerBand());
  for (uint32_t strip = 0; well; ++strip) {
    if (auto bad = bands.next(); !bad) return bad;
    if (bands.rows() == 0) break;
    well = TIFFWriteEncodedStrip(tiff.get(), strip, bands.row(0), static_cast<tmsize_t>(bands.bytes())) >= 0;
  }
  if (well && TIFFFlush(tiff.get()) == 1) return {};
  return stream.result ? failure(Code::BadSize, "libtiff cannot write the picture") : stream.result;
}

}  // namespace ox::pixels
