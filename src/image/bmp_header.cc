#include "image/bmp_header.h"

#include <algorithm>
#include <bit>
#include <span>
#include <string>

#include "base/error.h"
#include "image/codec.h"

namespace zv::image {
namespace {

constexpr std::size_t kFileHeaderSize = 14;
constexpr std::uint32_t kCoreHeaderSize = 12;   // the oldest: 16-bit sizes, 3-byte colours
constexpr std::uint32_t kInfoHeaderSize = 40;   // the common one
constexpr std::uint32_t kLastHeaderSize = 124;  // the newest
constexpr std::uint32_t kMasksInHeader = 52;    // from this size on the masks are a part of it

// Values of the compression field.
enum : std::uint32_t { kPlain = 0, kRunLength8 = 1, kRunLength4 = 2, kMasks = 3, kAlphaMasks = 6 };

using Masks = std::array<std::uint32_t, 3>;
constexpr Masks kMasks555{0x7C00, 0x03E0, 0x001F};
constexpr Masks kMasks888{0xFF0000, 0x00FF00, 0x0000FF};

void read_exactly(InputFile& file, std::span<std::uint8_t> to) {
  if (file.read(to.data(), to.size()) == to.size()) return;
  file.check();
  throw Error(kTruncated);
}

std::uint32_t number(const std::uint8_t* at, int bytes) {
  std::uint32_t value = 0;
  for (int i = bytes - 1; i >= 0; --i) value = value << 8 | at[i];
  return value;
}

// The header behind its own length, padded with zeros to the newest layout.
struct Fields {
  std::uint32_t length = 0;
  std::array<std::uint8_t, kLastHeaderSize> bytes{};

  bool core() const { return length == kCoreHeaderSize; }
  std::uint32_t get(std::size_t at, int size = 4) const { return number(bytes.data() + at, size); }
  std::uint32_t bits() const { return core() ? get(10, 2) : get(14, 2); }
  std::uint32_t compression() const { return core() ? kPlain : get(16); }
  std::uint32_t colours() const { return core() ? 0 : get(32); }
};

Fields read_fields(InputFile& file) {
  Fields fields;
  read_exactly(file, std::span(fields.bytes).first(4));
  fields.length = fields.get(0);
  const bool known = fields.core() || (fields.length >= 16 && fields.length <= kLastHeaderSize);
  if (!known) throw Error("unsupported BMP header type (" + std::to_string(fields.length) + ")");
  read_exactly(file, std::span(fields.bytes).subspan(4, fields.length - 4));
  return fields;
}

void set_size(const Fields& fields, BmpHeader& header) {
  if (fields.core()) {
    header.width = fields.get(4, 2);
    header.height = fields.get(6, 2);
    return;
  }
  const auto width = static_cast<std::int32_t>(fields.get(4));
  const std::int64_t height = static_cast<std::int32_t>(fields.get(8));
  if (width < 0) throw Error("broken BMP file: negative width");
  header.width = static_cast<std::uint64_t>(width);
  header.top_down = height < 0;
  header.height = static_cast<std::uint64_t>(height < 0 ? -height : height);
}

void set_compression(const Fields& fields, BmpHeader& header) {
  header.bits = fields.bits();
  const bool depth_known = std::has_single_bit(header.bits) ? header.bits <= 32 : header.bits == 24;
  if (!depth_known) {
    throw Error("unsupported BMP pixel depth (" + std::to_string(header.bits) + ")");
  }
  const std::uint32_t value = fields.compression();
  const bool masks = (value == kMasks || value == kAlphaMasks) && header.bits >= 16;
  if (value == kRunLength8 && header.bits == 8)
    header.compression = BmpCompression::kRle8;
  else if (value == kRunLength4 && header.bits == 4)
    header.compression = BmpCompression::kRle4;
  else if (value != kPlain && !masks) {
    throw Error("unsupported BMP compression (" + std::to_string(value) + ")");
  }
}

// The masks stand in the header or, with the common header, right behind it.
Masks read_masks(InputFile& file, const Fields& fields, unsigned bits) {
  const std::uint32_t compression = fields.compression();
  if (compression != kMasks && compression != kAlphaMasks) {
    return bits == 16 ? kMasks555 : kMasks888;
  }
  std::array<std::uint8_t, 16> behind{};
  const std::uint8_t* from = fields.bytes.data() + kInfoHeaderSize;
  if (fields.length < kMasksInHeader) {
    read_exactly(file, std::span(behind).first(compression == kMasks ? 12 : 16));
    from = behind.data();
  }
  return {number(from, 4), number(from + 4, 4), number(from + 8, 4)};
}

BmpChannel channel_of(std::uint32_t mask) {
  if (mask == 0) return {};
  const auto shift = static_cast<unsigned>(std::countr_zero(mask));
  return {shift, mask >> shift};
}

// Indices that the file gives no colour are black.
std::vector<Rgb> read_palette(InputFile& file, const Fields& fields, unsigned bits,
                              std::uint64_t pixels_at) {
  const std::size_t entry = fields.core() ? 3 : 4;
  const std::uint64_t possible = std::uint64_t{1} << bits;
  std::uint64_t count =
      fields.colours() == 0 ? possible : std::min<std::uint64_t>(fields.colours(), possible);
  if (pixels_at > file.position()) count = std::min(count, (pixels_at - file.position()) / entry);
  std::vector<std::uint8_t> bytes(count * entry);
  read_exactly(file, bytes);
  std::vector<Rgb> palette(possible);
  for (std::size_t i = 0; i < count; ++i) {
    const std::uint8_t* blue = bytes.data() + i * entry;
    palette[i] = {blue[2], blue[1], blue[0]};
  }
  return palette;
}

}  // namespace

BmpHeader read_bmp_header(InputFile& file) {
  std::array<std::uint8_t, kFileHeaderSize> start{};
  read_exactly(file, start);
  const std::uint64_t pixels_at = number(start.data() + 10, 4);
  const Fields fields = read_fields(file);
  BmpHeader header;
  set_size(fields, header);
  set_compression(fields, header);
  if (header.bits == 16 || header.bits == 32) {
    const Masks masks = read_masks(file, fields, header.bits);
    std::transform(masks.begin(), masks.end(), header.channels.begin(), channel_of);
  }
  if (header.bits <= 8) header.palette = read_palette(file, fields, header.bits, pixels_at);
  if (pixels_at != 0) file.seek(pixels_at);
  return header;
}

}  // namespace zv::image
