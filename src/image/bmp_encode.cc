// Pixels to a BMP file: 24 bits, bottom-up, 96 dots per inch.
#include <algorithm>
#include <vector>

#include "base/error.h"
#include "image/codec.h"

namespace zv::image {
namespace {

constexpr std::uint32_t kHeaderSize = 14 + 40;
constexpr std::uint32_t kDotsPerMetre = 3780;

void put(std::vector<std::uint8_t>& to, std::uint64_t value, int bytes) {
  for (int i = 0; i < bytes; ++i) to.push_back(static_cast<std::uint8_t>(value >> (8 * i)));
}

std::vector<std::uint8_t> header_of(const Picture& picture, std::uint64_t pixel_bytes) {
  std::vector<std::uint8_t> header{'B', 'M'};
  put(header, kHeaderSize + pixel_bytes, 4);
  put(header, 0, 4);
  put(header, kHeaderSize, 4);
  put(header, 40, 4);
  put(header, static_cast<std::uint64_t>(picture.width), 4);
  put(header, static_cast<std::uint64_t>(picture.height), 4);
  put(header, 1, 2);   // planes
  put(header, 24, 2);  // bits per pixel
  put(header, 0, 4);   // no compression
  put(header, pixel_bytes, 4);
  put(header, kDotsPerMetre, 4);
  put(header, kDotsPerMetre, 4);
  put(header, 0, 8);  // no palette
  return header;
}

}  // namespace

void encode_bmp(const Picture& picture, OutputFile& file) {
  std::vector<std::uint8_t> row((picture.stride() + 3) / 4 * 4);
  const auto header =
      header_of(picture, std::uint64_t{row.size()} * static_cast<std::uint64_t>(picture.height));
  file.write(header.data(), header.size());
  for (int y = picture.height - 1; y >= 0; --y) {
    const std::uint8_t* from = picture.row(y);
    for (std::size_t i = 0; i < picture.stride(); i += 3) {
      std::reverse_copy(from + i, from + i + 3, row.data() + i);
    }
    file.write(row.data(), row.size());
  }
}

}  // namespace zv::image
