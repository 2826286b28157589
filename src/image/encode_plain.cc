// Pixels to the two formats that hold them as they are: BMP (24 bits, bottom-up, 96 dots per inch)
// and TIFF (8-bit RGB in one strip).
#include <algorithm>

#include "base/error.h"
#include "image/codec.h"

namespace zv::image {
namespace {

constexpr std::uint64_t DOTS_PER_METRE = 3780;

void put(std::string& to, std::uint64_t value, int bytes) {
  for (int i = 0; i < bytes; ++i) to += static_cast<char>(value >> (8 * i));
}

enum TagType { SHORT = 3, LONG = 4 };

void put_tag(std::string& to, std::uint64_t tag, TagType type, std::uint64_t value,
             std::uint64_t count = 1) {
  put(to, tag, 2);
  put(to, type, 2);
  put(to, count, 4);
  put(to, value, 4);
}

}  // namespace

std::string encode_bmp(const Picture& picture) {
  constexpr std::uint64_t HEADER = 14 + 40;
  const std::size_t stride = (picture.stride() + 3) / 4 * 4;
  const std::uint64_t pixels = std::uint64_t{stride} * static_cast<std::uint64_t>(picture.height);
  std::string file = "BM";
  file.reserve(HEADER + pixels);
  put(file, HEADER + pixels, 8);
  put(file, HEADER, 4);
  put(file, 40, 4);
  put(file, static_cast<std::uint64_t>(picture.width), 4);
  put(file, static_cast<std::uint64_t>(picture.height), 4);
  put(file, 1 | 24 << 16, 8);  // one plane, 24 bits per pixel, no compression
  put(file, pixels, 4);
  put(file, DOTS_PER_METRE | DOTS_PER_METRE << 32, 8);
  put(file, 0, 8);  // no palette
  for (int y = picture.height - 1; y >= 0; --y) {
    const std::size_t start = file.size();
    file.append(reinterpret_cast<const char*>(picture.row(y)), picture.stride());
    for (std::size_t i = start; i < file.size(); i += 3) std::swap(file[i], file[i + 2]);
    file.append(stride - picture.stride(), '\0');
  }
  return file;
}

std::string encode_tiff(const Picture& picture) {
  constexpr std::uint64_t TAGS = 10;
  constexpr std::uint64_t DEPTHS_AT = 8 + 2 + 12 * TAGS + 4;
  constexpr std::uint64_t PIXELS_AT = DEPTHS_AT + 8;
  std::string file("II*\0\x08\0\0\0", 8);
  file.reserve(PIXELS_AT + picture.rgb.size());
  put(file, TAGS, 2);
  put_tag(file, 256, LONG, static_cast<std::uint64_t>(picture.width));
  put_tag(file, 257, LONG, static_cast<std::uint64_t>(picture.height));
  put_tag(file, 258, SHORT, DEPTHS_AT, 3);
  put_tag(file, 259, SHORT, 1);  // not compressed
  put_tag(file, 262, SHORT, 2);  // RGB
  put_tag(file, 273, LONG, PIXELS_AT);
  put_tag(file, 277, SHORT, 3);
  put_tag(file, 278, LONG, static_cast<std::uint64_t>(picture.height));
  put_tag(file, 279, LONG, picture.rgb.size());
  put_tag(file, 284, SHORT, 1);  // samples side by side
  put(file, 0, 4);               // no further page
  put(file, 8 | 8 << 16 | std::uint64_t{8} << 32, 8);
  file.append(reinterpret_cast<const char*>(picture.rgb.data()), picture.rgb.size());
  return file;
}

}  // namespace zv::image
