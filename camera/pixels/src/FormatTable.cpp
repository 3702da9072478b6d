#include "FormatTable.h"

#include <algorithm>
#include <functional>

namespace ox::pixels {

namespace {

using enum Packing;
using enum Numbers;

constexpr Format row(uint32_t number, std::string_view name, Kind kind, std::string_view order, int significantBits,
                     Packing packing) {
  Format format{number, name, kind, order, packing};
  format.significantBits = static_cast<uint8_t>(significantBits);
  format.bitsPerPixel = static_cast<uint8_t>(number >> 16 & 0xff);
  const auto lumas = kind == Kind::Yuv ? std::ranges::count(order, 'Y') : 1;
  const auto samples = kind == Kind::Bayer ? 1 : static_cast<int>(order.size());
  format.pixelsPerGroup = static_cast<uint8_t>(lumas);
  if (name.ends_with("_Planar")) format.planes = Planes::Planar;
  if (name.ends_with("_Semiplanar")) {
    format.planes = format.bitsPerPixel == 12 ? Planes::Semi420 : Planes::Semi422;
    format.pixelsPerGroup = 2;
    format.sampleBits = 8;
  } else if (packing == Word32) {
    format.sampleBits = 10;
  } else if (packing == Rgb565) {
    format.sampleBits = 8;
  } else if (packing != Other) {
    format.sampleBits = static_cast<uint8_t>(format.bitsPerPixel * lumas / samples);
  }
  return format;
}

constexpr Format mono(uint32_t number, std::string_view name, int significantBits, Packing packing = Bytes) {
  return row(number, name, Kind::Mono, "Y", significantBits, packing);
}

constexpr Format bayer(uint32_t number, std::string_view name, std::string_view order, int significantBits,
                       Packing packing = Bytes) {
  return row(number, name, Kind::Bayer, order, significantBits, packing);
}

constexpr Format rgb(uint32_t number, std::string_view name, std::string_view order, int significantBits,
                     Packing packing = Bytes) {
  return row(number, name, Kind::Rgb, order, significantBits, packing);
}

// The PFNC says the matrix in the name: none, "601", "709" or "2020".
constexpr Format yuv(uint32_t number, std::string_view name, std::string_view order, int significantBits,
                     Packing packing = Bytes) {
  Format format = row(number, name, Kind::Yuv, order, significantBits, packing);
  if (name.starts_with("YCbCr601")) format.matrix = Matrix::Bt601;
  if (name.starts_with("YCbCr709")) format.matrix = Matrix::Bt709;
  if (name.starts_with("YCbCr2020")) format.matrix = Matrix::Bt2020;
  return format;
}

constexpr Format data(uint32_t number, std::string_view name, std::string_view order, int significantBits,
                      Packing packing = Bytes, Numbers numbers = Unsigned) {
  Format format = row(number, name, Kind::Data, order, significantBits, packing);
  format.numbers = numbers;
  return format;
}

// clang-format off
constexpr Format kTable[] = {
    mono(0x01010037, "Mono1p", 1, Lsb),
    data(0x010100C5, "Confidence1p", "Y", 1, Lsb),
    mono(0x01020038, "Mono2p", 2, Lsb),
    mono(0x01040039, "Mono4p", 4, Lsb),
    bayer(0x0104010D, "BayerGR4p", "GRBG", 4, Lsb),
    bayer(0x0104010E, "BayerRG4p", "RGGB", 4, Lsb),
    bayer(0x0104010F, "BayerGB4p", "GBRG", 4, Lsb),
    bayer(0x01040110, "BayerBG4p", "BGGR", 4, Lsb),
    mono(0x01080001, "Mono8", 8),
    data(0x01080002, "Mono8s", "Y", 8, Bytes, Signed),
    bayer(0x01080008, "BayerGR8", "GRBG", 8),
    bayer(0x01080009, "BayerRG8", "RGGB", 8),
    bayer(0x0108000A, "BayerGB8", "GBRG", 8),
    bayer(0x0108000B, "BayerBG8", "BGGR", 8),
    data(0x01080067, "SCF1WBWG8", "Y", 8),
    data(0x0108006E, "SCF1WGWB8", "Y", 8),
    data(0x01080075, "SCF1WGWR8", "Y", 8),
    data(0x0108007C, "SCF1WRWG8", "Y", 8),
    data(0x010800AF, "Coord3D_A8", "A", 8),
    data(0x010800B0, "Coord3D_B8", "B", 8),
    data(0x010800B1, "Coord3D_C8", "C", 8),
    data(0x010800C4, "Confidence1", "Y", 1),
    data(0x010800C6, "Confidence8", "Y", 8),
    mono(0x010800C9, "R8", 8),
    mono(0x010800CD, "G8", 8),
    mono(0x010800D1, "B8", 8),
    data(0x01080116, "Data8", "Y", 8),
    data(0x01080117, "Data8s", "Y", 8, Bytes, Signed),
    mono(0x010A0046, "Mono10p", 10, Lsb),
    bayer(0x010A0052, "BayerBG10p", "BGGR", 10, Lsb),
    bayer(0x010A0054, "BayerGB10p", "GBRG", 10, Lsb),
    bayer(0x010A0056, "BayerGR10p", "GRBG", 10, Lsb),
    bayer(0x010A0058, "BayerRG10p", "RGGB", 10, Lsb),
    data(0x010A0069, "SCF1WBWG10p", "Y", 10, Lsb),
    data(0x010A0070, "SCF1WGWB10p", "Y", 10, Lsb),
    data(0x010A0077, "SCF1WGWR10p", "Y", 10, Lsb),
    data(0x010A007E, "SCF1WRWG10p", "Y", 10, Lsb),
    data(0x010A00D5, "Coord3D_A10p", "A", 10, Lsb),
    data(0x010A00D6, "Coord3D_B10p", "B", 10, Lsb),
    data(0x010A00D7, "Coord3D_C10p", "C", 10, Lsb),
    mono(0x010C0004, "Mono10Packed", 10, Pairs),
    mono(0x010C0006, "Mono12Packed", 12, Pairs),
    bayer(0x010C0026, "BayerGR10Packed", "GRBG", 10, Pairs),
    bayer(0x010C0027, "BayerRG10Packed", "RGGB", 10, Pairs),
    bayer(0x010C0028, "BayerGB10Packed", "GBRG", 10, Pairs),
    bayer(0x010C0029, "BayerBG10Packed", "BGGR", 10, Pairs),
    bayer(0x010C002A, "BayerGR12Packed", "GRBG", 12, Pairs),
    bayer(0x010C002B, "BayerRG12Packed", "RGGB", 12, Pairs),
    bayer(0x010C002C, "BayerGB12Packed", "GBRG", 12, Pairs),
    bayer(0x010C002D, "BayerBG12Packed", "BGGR", 12, Pairs),
    mono(0x010C0047, "Mono12p", 12, Lsb),
    bayer(0x010C0053, "BayerBG12p", "BGGR", 12, Lsb),
    bayer(0x010C0055, "BayerGB12p", "GBRG", 12, Lsb),
    bayer(0x010C0057, "BayerGR12p", "GRBG", 12, Lsb),
    bayer(0x010C0059, "BayerRG12p", "RGGB", 12, Lsb),
    data(0x010C006B, "SCF1WBWG12p", "Y", 12, Lsb),
    data(0x010C0072, "SCF1WGWB12p", "Y", 12, Lsb),
    data(0x010C0079, "SCF1WGWR12p", "Y", 12, Lsb),
    data(0x010C0080, "SCF1WRWG12p", "Y", 12, Lsb),
    data(0x010C00D8, "Coord3D_A12p", "A", 12, Lsb),
    data(0x010C00D9, "Coord3D_B12p", "B", 12, Lsb),
    data(0x010C00DA, "Coord3D_C12p", "C", 12, Lsb),
    mono(0x010E0104, "Mono14p", 14, Lsb),
    bayer(0x010E0105, "BayerGR14p", "GRBG", 14, Lsb),
    bayer(0x010E0106, "BayerRG14p", "RGGB", 14, Lsb),
    bayer(0x010E0107, "BayerGB14p", "GBRG", 14, Lsb),
    bayer(0x010E0108, "BayerBG14p", "BGGR", 14, Lsb),
    mono(0x01100003, "Mono10", 10),
    mono(0x01100005, "Mono12", 12),
    mono(0x01100007, "Mono16", 16),
    bayer(0x0110000C, "BayerGR10", "GRBG", 10),
    bayer(0x0110000D, "BayerRG10", "RGGB", 10),
    bayer(0x0110000E, "BayerGB10", "GBRG", 10),
    bayer(0x0110000F, "BayerBG10", "BGGR", 10),
    bayer(0x01100010, "BayerGR12", "GRBG", 12),
    bayer(0x01100011, "BayerRG12", "RGGB", 12),
    bayer(0x01100012, "BayerGB12", "GBRG", 12),
    bayer(0x01100013, "BayerBG12", "BGGR", 12),
    mono(0x01100025, "Mono14", 14),
    bayer(0x0110002E, "BayerGR16", "GRBG", 16),
    bayer(0x0110002F, "BayerRG16", "RGGB", 16),
    bayer(0x01100030, "BayerGB16", "GBRG", 16),
    bayer(0x01100031, "BayerBG16", "BGGR", 16),
    data(0x01100068, "SCF1WBWG10", "Y", 10),
    data(0x0110006A, "SCF1WBWG12", "Y", 12),
    data(0x0110006C, "SCF1WBWG14", "Y", 14),
    data(0x0110006D, "SCF1WBWG16", "Y", 16),
    data(0x0110006F, "SCF1WGWB10", "Y", 10),
    data(0x01100071, "SCF1WGWB12", "Y", 12),
    data(0x01100073, "SCF1WGWB14", "Y", 14),
    data(0x01100074, "SCF1WGWB16", "Y", 16),
    data(0x01100076, "SCF1WGWR10", "Y", 10),
    data(0x01100078, "SCF1WGWR12", "Y", 12),
    data(0x0110007A, "SCF1WGWR14", "Y", 14),
    data(0x0110007B, "SCF1WGWR16", "Y", 16),
    data(0x0110007D, "SCF1WRWG10", "Y", 10),
    data(0x0110007F, "SCF1WRWG12", "Y", 12),
    data(0x01100081, "SCF1WRWG14", "Y", 14),
    data(0x01100082, "SCF1WRWG16", "Y", 16),
    data(0x011000B6, "Coord3D_A16", "A", 16),
    data(0x011000B7, "Coord3D_B16", "B", 16),
    data(0x011000B8, "Coord3D_C16", "C", 16),
    data(0x011000C7, "Confidence16", "Y", 16),
    mono(0x011000CC, "R16", 16),
    mono(0x011000D0, "G16", 16),
    mono(0x011000D4, "B16", 16),
    bayer(0x01100109, "BayerGR14", "GRBG", 14),
    bayer(0x0110010A, "BayerRG14", "RGGB", 14),
    bayer(0x0110010B, "BayerGB14", "GBRG", 14),
    bayer(0x0110010C, "BayerBG14", "BGGR", 14),
    data(0x01100118, "Data16", "Y", 16),
    data(0x01100119, "Data16s", "Y", 16, Bytes, Signed),
    mono(0x01100120, "R10", 10),
    mono(0x01100121, "R12", 12),
    mono(0x01100122, "G10", 10),
    mono(0x01100123, "G12", 12),
    mono(0x01100124, "B10", 10),
    mono(0x01100125, "B12", 12),
    data(0x012000BD, "Coord3D_A32f", "A", 32, Bytes, Float),
    data(0x012000BE, "Coord3D_B32f", "B", 32, Bytes, Float),
    data(0x012000BF, "Coord3D_C32f", "C", 32, Bytes, Float),
    data(0x012000C8, "Confidence32f", "Y", 32, Bytes, Float),
    data(0x01200111, "Mono32", "Y", 32),
    data(0x0120011A, "Data32", "Y", 32),
    data(0x0120011B, "Data32s", "Y", 32, Bytes, Signed),
    data(0x0120011C, "Data32f", "Y", 32, Bytes, Float),
    data(0x0140011D, "Data64", "Y", 64),
    data(0x0140011E, "Data64s", "Y", 64, Bytes, Signed),
    data(0x0140011F, "Data64f", "Y", 64, Bytes, Float),
    yuv(0x020C001E, "YUV411_8_UYYVYY", "UYYVYY", 8),
    yuv(0x020C003C, "YCbCr411_8_CbYYCrYY", "UYYVYY", 8),
    yuv(0x020C003F, "YCbCr601_411_8_CbYYCrYY", "UYYVYY", 8),
    yuv(0x020C0042, "YCbCr709_411_8_CbYYCrYY", "UYYVYY", 8),
    yuv(0x020C005A, "YCbCr411_8", "YYUYYV", 8),
    yuv(0x020C00F9, "YCbCr2020_411_8_CbYYCrYY", "UYYVYY", 8),
    yuv(0x020C0112, "YCbCr420_8_YY_CbCr_Semiplanar", "YUV", 8),
    yuv(0x020C0114, "YCbCr420_8_YY_CrCb_Semiplanar", "YVU", 8),
    yuv(0x0210001F, "YUV422_8_UYVY", "UYVY", 8),
    yuv(0x02100032, "YUV422_8", "YUYV", 8),
    rgb(0x02100035, "RGB565p", "RGB", 8, Rgb565),
    rgb(0x02100036, "BGR565p", "BGR", 8, Rgb565),
    yuv(0x0210003B, "YCbCr422_8", "YUYV", 8),
    yuv(0x0210003E, "YCbCr601_422_8", "YUYV", 8),
    yuv(0x02100041, "YCbCr709_422_8", "YUYV", 8),
    yuv(0x02100043, "YCbCr422_8_CbYCrY", "UYVY", 8),
    yuv(0x02100044, "YCbCr601_422_8_CbYCrY", "UYVY", 8),
    yuv(0x02100045, "YCbCr709_422_8_CbYCrY", "UYVY", 8),
    data(0x021000A5, "BiColorRGBG8", "RG", 8),
    data(0x021000A6, "BiColorBGRG8", "BG", 8),
    data(0x021000B4, "Coord3D_AC8", "AC", 8),
    data(0x021000B5, "Coord3D_AC8_Planar", "AC", 8),
    yuv(0x021000FA, "YCbCr2020_422_8", "YUYV", 8),
    yuv(0x021000FB, "YCbCr2020_422_8_CbYCrY", "UYVY", 8),
    yuv(0x02100113, "YCbCr422_8_YY_CbCr_Semiplanar", "YUV", 8),
    yuv(0x02100115, "YCbCr422_8_YY_CrCb_Semiplanar", "YVU", 8),
    yuv(0x02140087, "YCbCr422_10p", "YUYV", 10, Lsb),
    yuv(0x0214008E, "YCbCr601_422_10p", "YUYV", 10, Lsb),
    yuv(0x02140096, "YCbCr709_422_10p", "YUYV", 10, Lsb),
    yuv(0x0214009A, "YCbCr422_10p_CbYCrY", "UYVY", 10, Lsb),
    yuv(0x0214009E, "YCbCr601_422_10p_CbYCrY", "UYVY", 10, Lsb),
    yuv(0x021400A2, "YCbCr709_422_10p_CbYCrY", "UYVY", 10, Lsb),
    data(0x021400A8, "BiColorRGBG10p", "RG", 10, Lsb),
    data(0x021400AA, "BiColorBGRG10p", "BG", 10, Lsb),
    data(0x021400F0, "Coord3D_AC10p", "AC", 10, Lsb),
    data(0x021400F1, "Coord3D_AC10p_Planar", "AC", 10, Lsb),
    yuv(0x021400FE, "YCbCr2020_422_10p", "YUYV", 10, Lsb),
    yuv(0x021400FF, "YCbCr2020_422_10p_CbYCrY", "UYVY", 10, Lsb),
    rgb(0x02180014, "RGB8", "RGB", 8),
    rgb(0x02180015, "BGR8", "BGR", 8),
    yuv(0x02180020, "YUV8_UYV", "UYV", 8),
    rgb(0x02180021, "RGB8_Planar", "RGB", 8),
    yuv(0x0218003A, "YCbCr8_CbYCr", "UYV", 8),
    yuv(0x0218003D, "YCbCr601_8_CbYCr", "UYV", 8),
    yuv(0x02180040, "YCbCr709_8_CbYCr", "UYV", 8),
    yuv(0x0218005B, "YCbCr8", "YUV", 8),
    yuv(0x02180088, "YCbCr422_12p", "YUYV", 12, Lsb),
    yuv(0x02180090, "YCbCr601_422_12p", "YUYV", 12, Lsb),
    yuv(0x02180098, "YCbCr709_422_12p", "YUYV", 12, Lsb),
    yuv(0x0218009C, "YCbCr422_12p_CbYCrY", "UYVY", 12, Lsb),
    yuv(0x021800A0, "YCbCr601_422_12p_CbYCrY", "UYVY", 12, Lsb),
    yuv(0x021800A4, "YCbCr709_422_12p_CbYCrY", "UYVY", 12, Lsb),
    data(0x021800AC, "BiColorRGBG12p", "RG", 12, Lsb),
    data(0x021800AE, "BiColorBGRG12p", "BG", 12, Lsb),
    data(0x021800B2, "Coord3D_ABC8", "ABC", 8),
    data(0x021800B3, "Coord3D_ABC8_Planar", "ABC", 8),
    data(0x021800F2, "Coord3D_AC12p", "AC", 12, Lsb),
    data(0x021800F3, "Coord3D_AC12p_Planar", "AC", 12, Lsb),
    yuv(0x021800F4, "YCbCr2020_8_CbYCr", "UYV", 8),
    yuv(0x02180102, "YCbCr2020_422_12p", "YUYV", 12, Lsb),
    yuv(0x02180103, "YCbCr2020_422_12p_CbYCrY", "UYVY", 12, Lsb),
    rgb(0x021E0048, "BGR10p", "BGR", 10, Lsb),
    rgb(0x021E005C, "RGB10p", "RGB", 10, Lsb),
    yuv(0x021E0084, "YCbCr10p_CbYCr", "UYV", 10, Lsb),
    yuv(0x021E008A, "YCbCr601_10p_CbYCr", "UYV", 10, Lsb),
    yuv(0x021E0092, "YCbCr709_10p_CbYCr", "UYV", 10, Lsb),
    data(0x021E00DB, "Coord3D_ABC10p", "ABC", 10, Lsb),
    data(0x021E00DC, "Coord3D_ABC10p_Planar", "ABC", 10, Lsb),
    yuv(0x021E00F6, "YCbCr2020_10p_CbYCr", "UYV", 10, Lsb),
    rgb(0x02200016, "RGBa8", "RGBA", 8),
    rgb(0x02200017, "BGRa8", "BGRA", 8),
    data(0x0220001C, "RGB10V1Packed", "RGB", 10, Other),
    rgb(0x0220001D, "RGB10p32", "RGB", 10, Word32),
    yuv(0x02200065, "YCbCr422_10", "YUYV", 10),
    yuv(0x02200066, "YCbCr422_12", "YUYV", 12),
    yuv(0x0220008D, "YCbCr601_422_10", "YUYV", 10),
    yuv(0x0220008F, "YCbCr601_422_12", "YUYV", 12),
    yuv(0x02200095, "YCbCr709_422_10", "YUYV", 10),
    yuv(0x02200097, "YCbCr709_422_12", "YUYV", 12),
    yuv(0x02200099, "YCbCr422_10_CbYCrY", "UYVY", 10),
    yuv(0x0220009B, "YCbCr422_12_CbYCrY", "UYVY", 12),
    yuv(0x0220009D, "YCbCr601_422_10_CbYCrY", "UYVY", 10),
    yuv(0x0220009F, "YCbCr601_422_12_CbYCrY", "UYVY", 12),
    yuv(0x022000A1, "YCbCr709_422_10_CbYCrY", "UYVY", 10),
    yuv(0x022000A3, "YCbCr709_422_12_CbYCrY", "UYVY", 12),
    data(0x022000A7, "BiColorRGBG10", "RG", 10),
    data(0x022000A9, "BiColorBGRG10", "BG", 10),
    data(0x022000AB, "BiColorRGBG12", "RG", 12),
    data(0x022000AD, "BiColorBGRG12", "BG", 12),
    data(0x022000BB, "Coord3D_AC16", "AC", 16),
    data(0x022000BC, "Coord3D_AC16_Planar", "AC", 16),
    yuv(0x022000FC, "YCbCr2020_422_10", "YUYV", 10),
    yuv(0x022000FD, "YCbCr2020_422_10_CbYCrY", "UYVY", 10),
    yuv(0x02200100, "YCbCr2020_422_12", "YUYV", 12),
    yuv(0x02200101, "YCbCr2020_422_12_CbYCrY", "UYVY", 12),
    data(0x02240034, "RGB12V1Packed", "RGB", 12, Other),
    rgb(0x02240049, "BGR12p", "BGR", 12, Lsb),
    rgb(0x0224005D, "RGB12p", "RGB", 12, Lsb),
    yuv(0x02240086, "YCbCr12p_CbYCr", "UYV", 12, Lsb),
    yuv(0x0224008C, "YCbCr601_12p_CbYCr", "UYV", 12, Lsb),
    yuv(0x02240094, "YCbCr709_12p_CbYCr", "UYV", 12, Lsb),
    data(0x022400DE, "Coord3D_ABC12p", "ABC", 12, Lsb),
    data(0x022400DF, "Coord3D_ABC12p_Planar", "ABC", 12, Lsb),
    yuv(0x022400F8, "YCbCr2020_12p_CbYCr", "UYV", 12, Lsb),
    rgb(0x0228004D, "BGRa10p", "BGRA", 10, Lsb),
    rgb(0x02280060, "RGBa10p", "RGBA", 10, Lsb),
    rgb(0x02300018, "RGB10", "RGB", 10),
    rgb(0x02300019, "BGR10", "BGR", 10),
    rgb(0x0230001A, "RGB12", "RGB", 12),
    rgb(0x0230001B, "BGR12", "BGR", 12),
    rgb(0x02300022, "RGB10_Planar", "RGB", 10),
    rgb(0x02300023, "RGB12_Planar", "RGB", 12),
    rgb(0x02300024, "RGB16_Planar", "RGB", 16),
    rgb(0x02300033, "RGB16", "RGB", 16),
    rgb(0x0230004A, "BGR14", "BGR", 14),
    rgb(0x0230004B, "BGR16", "BGR", 16),
    rgb(0x0230004F, "BGRa12p", "BGRA", 12, Lsb),
    rgb(0x0230005E, "RGB14", "RGB", 14),
    rgb(0x02300062, "RGBa12p", "RGBA", 12, Lsb),
    yuv(0x02300083, "YCbCr10_CbYCr", "UYV", 10),
    yuv(0x02300085, "YCbCr12_CbYCr", "UYV", 12),
    yuv(0x02300089, "YCbCr601_10_CbYCr", "UYV", 10),
    yuv(0x0230008B, "YCbCr601_12_CbYCr", "UYV", 12),
    yuv(0x02300091, "YCbCr709_10_CbYCr", "UYV", 10),
    yuv(0x02300093, "YCbCr709_12_CbYCr", "UYV", 12),
    data(0x023000B9, "Coord3D_ABC16", "ABC", 16),
    data(0x023000BA, "Coord3D_ABC16_Planar", "ABC", 16),
    yuv(0x023000F5, "YCbCr2020_10_CbYCr", "UYV", 10),
    yuv(0x023000F7, "YCbCr2020_12_CbYCr", "UYV", 12),
    rgb(0x0240004C, "BGRa10", "BGRA", 10),
    rgb(0x0240004E, "BGRa12", "BGRA", 12),
    rgb(0x02400050, "BGRa14", "BGRA", 14),
    rgb(0x02400051, "BGRa16", "BGRA", 16),
    rgb(0x0240005F, "RGBa10", "RGBA", 10),
    rgb(0x02400061, "RGBa12", "RGBA", 12),
    rgb(0x02400063, "RGBa14", "RGBA", 14),
    rgb(0x02400064, "RGBa16", "RGBA", 16),
    data(0x024000C2, "Coord3D_AC32f", "AC", 32, Bytes, Float),
    data(0x024000C3, "Coord3D_AC32f_Planar", "AC", 32, Bytes, Float),
    data(0x026000C0, "Coord3D_ABC32f", "ABC", 32, Bytes, Float),
    data(0x026000C1, "Coord3D_ABC32f_Planar", "ABC", 32, Bytes, Float),
};
// clang-format on

static_assert(std::ranges::is_sorted(kTable, std::ranges::less_equal{}, &Format::number));

}  // namespace

std::span<const Format> formatTable() noexcept { return kTable; }

}  // namespace ox::pixels
