// BMP files to pixels: palettes, 16 to 32 bits with masks, bottom-up and top-down.
#include <algorithm>

#include "base/error.h"
#include "image/bmp_header.h"
#include "image/bmp_rle.h"
#include "image/codec.h"

namespace zv::image {
namespace {

std::uint32_t little_endian(const std::uint8_t* at, unsigned bytes) {
  std::uint32_t value = 0;
  for (unsigned i = bytes; i-- > 0;) value = value << 8 | at[i];
  return value;
}

void convert_indexed(const BmpHeader& header, const std::uint8_t* from, std::uint8_t* to) {
  const unsigned per_byte = 8 / header.bits;
  const unsigned mask = (1U << header.bits) - 1;
  for (std::uint64_t x = 0; x < header.width; ++x, to += 3) {
    const auto shift = static_cast<unsigned>(per_byte - 1 - x % per_byte) * header.bits;
    std::copy_n(header.palette[from[x / per_byte] >> shift & mask].data(), 3, to);
  }
}

void convert_masked(const BmpHeader& header, const std::uint8_t* from, std::uint8_t* to) {
  const unsigned bytes = header.bits / 8;
  for (std::uint64_t x = 0; x < header.width; ++x, from += bytes, to += 3) {
    const std::uint32_t pixel = little_endian(from, bytes);
    for (std::size_t c = 0; c < 3; ++c) to[c] = header.channels[c].value(pixel);
  }
}

void convert_true_colour(const BmpHeader& header, const std::uint8_t* from, std::uint8_t* to) {
  for (std::uint64_t x = 0; x < header.width; ++x, from += 3, to += 3) {
    std::reverse_copy(from, from + 3, to);
  }
}

auto row_converter(unsigned bits) {
  if (bits <= 8) return convert_indexed;
  return bits == 24 ? convert_true_colour : convert_masked;
}

// Rows are padded to whole 32-bit words.
void decode_rows(InputFile& file, const BmpHeader& header, Picture& picture) {
  const auto convert = row_converter(header.bits);
  std::vector<std::uint8_t> row((header.width * header.bits + 31) / 32 * 4);
  for (int y = 0; y < picture.height; ++y) {
    const std::size_t got = file.read(row.data(), row.size());
    file.check();
    // The padding of the last row may be missing.
    if (got * 8 < header.width * header.bits) throw Error(kTruncated);
    convert(header, row.data(), picture.row(header.top_down ? y : picture.height - 1 - y));
  }
}

}  // namespace

Decoded decode_bmp(InputFile& file) {
  const BmpHeader header = read_bmp_header(file);
  check_size(header.width, header.height);
  const bool plain = header.compression == BmpCompression::kNone;
  const std::uint64_t needed = header.width * header.bits / 8 * header.height;
  if (plain && needed > file.size()) throw Error(kTruncated);
  Decoded result{blank_picture(header.width, header.height)};
  plain ? decode_rows(file, header, result.picture) : decode_bmp_runs(file, header, result.picture);
  return result;
}

}  // namespace zv::image
