// The strips or tiles of a TIFF picture, decoded and put in their places.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "image/picture.h"
#include "image/tiff_file.h"
#include "image/tiff_samples.h"

namespace zv::image {

// How a picture is cut into blocks, be they strips or tiles.
struct TiffBlocks {
  // Throws Error for a cut that makes no sense or needs too much memory.
  TiffBlocks(const TiffFile& file, const TiffSamples& samples);

  bool tiled;
  std::uint64_t width;
  std::uint64_t height;
  std::size_t planes;     // each block is stored once for each of them
  std::size_t samples;    // of each pixel in one plane
  std::size_t row_bytes;  // of one block in one plane

  std::uint64_t bytes(std::uint64_t rows) const { return row_bytes * rows; }
};

class TiffBlockReader {
 public:
  // Throws Error for a layout that this program cannot show.
  explicit TiffBlockReader(const TiffFile& file);

  // Fills a picture of the file's size; throws Error when the file is truncated or broken.
  void read_into(Picture& picture);

 private:
  std::uint8_t* plane(std::size_t index) {
    return packed_.get() + index * blocks_.bytes(blocks_.height);
  }
  void read_planes(std::uint64_t x, std::uint64_t y, std::uint64_t rows);
  void paint(Picture& picture, std::uint64_t x, std::uint64_t y, std::uint64_t rows);

  const TiffFile& file_;
  TiffSamples samples_;
  TiffBlocks blocks_;
  std::unique_ptr<std::uint8_t[]> packed_;  // one block in all its planes
  std::vector<std::uint8_t> row_;           // one row of it, a byte for each sample
};

}  // namespace zv::image
