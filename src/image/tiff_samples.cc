// The samples of a TIFF picture, from the strips or tiles where they lie, to RGB.
#include <algorithm>
#include <bit>
#include <cstring>

#include "base/error.h"
#include "base/interrupt.h"
#include "image/codec.h"
#include "image/tiff_file.h"

namespace zv::image {
namespace {

// The most one block may need: every pixel allowed, with four samples of 16 bits.
constexpr std::uint64_t MAX_BLOCK_BYTES = MAX_PIXELS * 8;

// How the samples are stored and what they mean, and how they are cut into strips or tiles. A
// picture of separate planes has each block once for each of them.
struct Layout {
  explicit Layout(const TiffFile& file);

  std::size_t wanted() const {
    return meaning == PHOTOMETRIC_SEPARATED ? 4 : meaning == PHOTOMETRIC_RGB ? 3 : 1;
  }
  std::size_t planes() const { return separate ? wanted() : 1; }
  std::uint8_t sample(const std::uint8_t* row, std::size_t index) const;
  void convert(const std::uint8_t* row, std::size_t x, std::uint8_t* rgb) const;

  std::size_t per_pixel;
  std::uint32_t bits;
  std::uint16_t format;   // whole, signed or real numbers
  std::uint16_t meaning;  // libtiff's photometric interpretation
  bool separate;
  bool tiled;
  std::uint64_t width;
  std::uint64_t height;
  std::size_t row_bytes = 0;
  std::size_t plane_bytes = 0;
};

// Of greys, RGB and inks, the only colours that come here.
bool showable(const Layout& layout) {
  const bool whole = layout.format == SAMPLEFORMAT_UINT || layout.format == SAMPLEFORMAT_VOID;
  const bool common = whole && layout.bits <= 16 && std::has_single_bit(layout.bits);
  const bool measured = layout.bits == 32 && layout.meaning == PHOTOMETRIC_MINISBLACK;
  return layout.per_pixel >= layout.wanted() && (common || measured);
}

Layout::Layout(const TiffFile& file)
    : per_pixel(file.field<std::uint16_t>(TIFFTAG_SAMPLESPERPIXEL)),
      bits(file.field<std::uint16_t>(TIFFTAG_BITSPERSAMPLE)),
      format(file.field<std::uint16_t>(TIFFTAG_SAMPLEFORMAT)),
      meaning(file.field<std::uint16_t>(TIFFTAG_PHOTOMETRIC)),
      separate(file.field<std::uint16_t>(TIFFTAG_PLANARCONFIG) == PLANARCONFIG_SEPARATE),
      tiled(TIFFIsTiled(file.get()) != 0),
      width(file.field<std::uint32_t>(tiled ? TIFFTAG_TILEWIDTH : TIFFTAG_IMAGEWIDTH)),
      height(file.field<std::uint32_t>(tiled ? TIFFTAG_TILELENGTH : TIFFTAG_ROWSPERSTRIP)) {
  if (!showable(*this)) {
    throw Error("unsupported TIFF layout (colour space " + std::to_string(meaning) + ", " +
                std::to_string(per_pixel) + " x " + std::to_string(bits) + " bits)");
  }
  if (!tiled)
    height = std::min<std::uint64_t>(height, file.field<std::uint32_t>(TIFFTAG_IMAGELENGTH));
  check_size(width, height);
  row_bytes = (width * (separate ? 1 : per_pixel) * bits + 7) / 8;
  plane_bytes = row_bytes * height;
  const auto row = tiled ? TIFFTileRowSize64(file.get()) : TIFFScanlineSize64(file.get());
  if (row_bytes != row) throw Error("broken TIFF file: unexpected row size");
  if (plane_bytes * planes() > MAX_BLOCK_BYTES) {
    throw Error("TIFF file with a strip or tile too large to decode");
  }
}

// A 16-bit sample as 8 bits: value / 257, rounded to nearest.
std::uint8_t narrow_sample(std::uint16_t value) {
  return static_cast<std::uint8_t>((value * 255U + 32895U) >> 16);
}

// Measurements without a natural white: what lies outside 0 to 255 is cut off.
template <class Number>
std::uint8_t cut(const std::uint8_t* from) {
  Number value;
  std::memcpy(&value, from, sizeof value);
  if (!(value > Number{0})) return 0;  // not-a-number, too
  return value < Number{255} ? static_cast<std::uint8_t>(value) : 255;
}

std::uint8_t Layout::sample(const std::uint8_t* row, std::size_t index) const {
  const std::uint8_t* at = row + index * bits / 8;
  if (bits == 8) return *at;
  if (bits < 8) {
    const std::uint32_t most = (1U << bits) - 1;
    return static_cast<std::uint8_t>((*at >> (8 - bits - index * bits % 8) & most) * (255 / most));
  }
  if (bits == 16) {
    std::uint16_t value = 0;
    std::memcpy(&value, at, sizeof value);
    return narrow_sample(value);
  }
  if (format == SAMPLEFORMAT_IEEEFP) return cut<float>(at);
  return format == SAMPLEFORMAT_INT ? cut<std::int32_t>(at) : cut<std::uint32_t>(at);
}

void Layout::convert(const std::uint8_t* row, std::size_t x, std::uint8_t* rgb) const {
  std::uint8_t samples[4] = {};
  for (std::size_t i = 0; i < wanted(); ++i) {
    samples[i] = separate ? sample(row + i * plane_bytes, x) : sample(row, x * per_pixel + i);
  }
  if (meaning == PHOTOMETRIC_SEPARATED)
    cmyk_to_rgb(samples, rgb);
  else if (meaning == PHOTOMETRIC_RGB)
    std::copy_n(samples, 3, rgb);
  else
    std::fill_n(rgb, 3,
                meaning == PHOTOMETRIC_MINISWHITE ? static_cast<std::uint8_t>(255 - samples[0])
                                                  : samples[0]);
}

// Where a block and its rows lie in the picture.
struct Block {
  std::uint32_t x;
  std::uint32_t y;
  std::uint64_t columns;
  std::uint64_t rows;
};

void read(const TiffFile& file, const Layout& layout, const Block& block, Bytes& to) {
  const std::uint64_t rows = layout.tiled ? layout.height : block.rows;
  const auto size = static_cast<tmsize_t>(layout.row_bytes * rows);
  for (std::size_t i = 0; i < layout.planes(); ++i) {
    const auto plane = static_cast<std::uint16_t>(i);
    const auto index = layout.tiled ? TIFFComputeTile(file.get(), block.x, block.y, 0, plane)
                                    : TIFFComputeStrip(file.get(), block.y, plane);
    const auto read_one = layout.tiled ? TIFFReadEncodedTile : TIFFReadEncodedStrip;
    const tmsize_t got = read_one(file.get(), index, to.data() + i * layout.plane_bytes, size);
    if (got < 0) file.fail();
    if (got != size) throw Error(TRUNCATED);
  }
}

void paint(const Layout& layout, const Block& block, const Bytes& from, Picture& picture) {
  for (std::uint64_t y = 0; y < block.rows; ++y) {
    std::uint8_t* pixel = picture.pixel(static_cast<int>(block.x), static_cast<int>(block.y + y));
    for (std::uint64_t x = 0; x < block.columns; ++x, pixel += 3) {
      layout.convert(from.data() + y * layout.row_bytes, x, pixel);
    }
  }
}

}  // namespace

bool needs_samples(const TiffFile& file) {
  const auto bits = file.field<std::uint16_t>(TIFFTAG_BITSPERSAMPLE);
  if (file.field<std::uint16_t>(TIFFTAG_COMPRESSION) == COMPRESSION_OJPEG) return false;
  switch (file.field<std::uint16_t>(TIFFTAG_PHOTOMETRIC)) {
    case PHOTOMETRIC_SEPARATED:
      return true;
    case PHOTOMETRIC_RGB:
      return bits < 8;
    case PHOTOMETRIC_MINISBLACK:
    case PHOTOMETRIC_MINISWHITE:
      return bits > 8;
    default:
      return false;
  }
}

void paint_samples(const TiffFile& file, Picture& picture) {
  const Layout layout(file);
  Bytes bytes(layout.plane_bytes * layout.planes());
  const auto width = static_cast<std::uint64_t>(picture.width);
  const auto height = static_cast<std::uint64_t>(picture.height);
  for (std::uint64_t y = 0; y < height; y += layout.height) {
    for (std::uint64_t x = 0; x < width; x += layout.width) {
      check_interrupt();
      const Block block{static_cast<std::uint32_t>(x), static_cast<std::uint32_t>(y),
                        std::min(layout.width, width - x), std::min(layout.height, height - y)};
      read(file, layout, block, bytes);
      paint(layout, block, bytes, picture);
    }
  }
}

}  // namespace zv::image
