#include "Encoders.h"
#include "Failure.h"

namespace ox::pixels {

Result writePnm(const ImageView& image, const Shape& shape, Output& output) {
  Bands bands(image, shape, Bands::Order::BigEndian);
  const std::string header = formatted("P{}\n{} {}\n{}\n", shape.channels == 1 ? 5 : 6, image.width, image.height,
                                       (1u << shape.valueBits) - 1);
  if (!output.write(header.data(), header.size())) return {};  // the output knows why
  for (;;) {
    if (auto bad = bands.next(); !bad) return bad;
    if (bands.rows() == 0 || !output.write(bands.row(0), bands.bytes())) return {};
  }
}

}  // namespace ox::pixels
