// One function for each kind of file. The image has passed checkReadable(), unless said otherwise.
#pragma once

#include <vector>

#include "Bands.h"
#include "NewFile.h"
#include "OxPixels/Save.h"

namespace ox::pixels {

Result writePng(const ImageView& image, const Shape& shape, const SaveOptions& options, Output& output);
Result writeTiff(const ImageView& image, const Shape& shape, NewFile& file);
Result writePnm(const ImageView& image, const Shape& shape, Output& output);
Result makeJpeg(const ImageView& image, const Shape& shape, const SaveOptions& options, std::vector<uint8_t>& file);

/// True for formats whose samples are elements of an array.
bool isArray(const Format& format) noexcept;
/// Of any format that isArray() accepts; checks the image.
Result writeNpy(const ImageView& image, Output& output);

/// Writes the bytes of an image, known or not: without padding if it is all there, else as they are.
/// `json` describes them; `members` as in SaveOptions.
Result writeRaw(const ImageView& image, std::string_view members, Output& output, std::string& json);

}  // namespace ox::pixels
