#include "image/tiff_blocks.h"

#include <algorithm>

#include "base/error.h"
#include "image/codec.h"

namespace zv::image {
namespace {

// The most one block may need: every pixel allowed, with four samples of 16 bits.
constexpr std::uint64_t kMaxBlockBytes = kMaxPixels * 8;

}  // namespace

TiffBlocks::TiffBlocks(const TiffFile& file, const TiffSamples& layout)
    : tiled(TIFFIsTiled(file.get()) != 0),
      width(file.long_field(tiled ? TIFFTAG_TILEWIDTH : TIFFTAG_IMAGEWIDTH)),
      height(file.long_field(tiled ? TIFFTAG_TILELENGTH : TIFFTAG_ROWSPERSTRIP)) {
  const bool separate = file.short_field(TIFFTAG_PLANARCONFIG) == PLANARCONFIG_SEPARATE;
  if (!tiled) height = std::min<std::uint64_t>(height, file.long_field(TIFFTAG_IMAGELENGTH));
  check_size(width, height);
  planes = separate ? layout.per_pixel() : 1;
  samples = separate ? 1 : layout.per_pixel();
  row_bytes = (width * samples * layout.bits() + 7) / 8;
  const auto row = tiled ? TIFFTileRowSize64(file.get()) : TIFFScanlineSize64(file.get());
  if (row_bytes != row) throw Error("broken TIFF file: unexpected row size");
  if (std::max(bytes(height) * planes, width * layout.per_pixel()) > kMaxBlockBytes) {
    throw Error("TIFF file with a strip or tile too large to decode");
  }
}

TiffBlockReader::TiffBlockReader(const TiffFile& file)
    : file_(file),
      samples_(file),
      blocks_(file, samples_),
      // Not set to zero: the system then provides memory only as the blocks are filled.
      packed_(new std::uint8_t[blocks_.bytes(blocks_.height) * blocks_.planes]),
      row_(blocks_.width * samples_.per_pixel()) {}

void TiffBlockReader::read_into(Picture& picture) {
  const auto width = static_cast<std::uint64_t>(picture.width);
  const auto height = static_cast<std::uint64_t>(picture.height);
  for (std::uint64_t y = 0; y < height; y += blocks_.height) {
    const std::uint64_t rows = std::min(blocks_.height, height - y);
    for (std::uint64_t x = 0; x < width; x += blocks_.width) {
      read_planes(x, y, rows);
      paint(picture, x, y, rows);
    }
  }
}

void TiffBlockReader::read_planes(std::uint64_t x, std::uint64_t y, std::uint64_t rows) {
  TIFF* tiff = file_.get();
  const auto column = static_cast<std::uint32_t>(x);
  const auto row = static_cast<std::uint32_t>(y);
  const auto size = static_cast<tmsize_t>(blocks_.bytes(blocks_.tiled ? blocks_.height : rows));
  for (std::size_t p = 0; p < blocks_.planes; ++p) {
    const auto sample = static_cast<std::uint16_t>(p);
    const tmsize_t got =
        blocks_.tiled
            ? TIFFReadEncodedTile(tiff, TIFFComputeTile(tiff, column, row, 0, sample), plane(p),
                                  size)
            : TIFFReadEncodedStrip(tiff, TIFFComputeStrip(tiff, row, sample), plane(p), size);
    if (got < 0) file_.fail();
    if (got != size) throw Error(kTruncated);
  }
}

void TiffBlockReader::paint(Picture& picture, std::uint64_t x, std::uint64_t y,
                            std::uint64_t rows) {
  const auto columns = std::min(blocks_.width, static_cast<std::uint64_t>(picture.width) - x);
  for (std::uint64_t i = 0; i < rows; ++i) {
    for (std::size_t p = 0; p < blocks_.planes; ++p) {
      samples_.unpack(plane(p) + i * blocks_.row_bytes, columns * blocks_.samples, row_.data() + p,
                      blocks_.planes);
    }
    samples_.convert(row_.data(), columns,
                     picture.pixel(static_cast<int>(x), static_cast<int>(y + i)));
  }
}

}  // namespace zv::image
