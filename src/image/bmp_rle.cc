#include "image/bmp_rle.h"

#include <algorithm>

#include "base/error.h"
#include "image/codec.h"

namespace zv::image {
namespace {

// Second byte of a pair whose first is 0; from 3 on it counts literal pixels.
enum : std::uint8_t { kEndOfLine = 0, kEndOfPicture = 1, kDelta = 2 };

class RunDecoder {
 public:
  RunDecoder(InputFile& file, const BmpHeader& header, Picture& picture)
      : file_(file), header_(header), picture_(picture) {}

  void decode() {
    while (y_ < picture_.height) {
      const std::uint8_t count = next();
      const std::uint8_t value = next();
      if (count != 0)
        run(count, value);
      else if (value == kEndOfPicture)
        return;
      else
        escape(value);
    }
  }

 private:
  std::uint8_t next() {
    if (at_ == filled_) {
      filled_ = file_.read(buffer_.data(), buffer_.size());
      at_ = 0;
      file_.check();
      if (filled_ == 0) throw Error(kTruncated);
    }
    return buffer_[at_++];
  }

  void escape(std::uint8_t value) {
    if (value == kEndOfLine) {
      x_ = 0;
      ++y_;
    } else if (value == kDelta) {
      x_ = std::min(x_ + next(), picture_.width);
      y_ += next();
    } else {
      literal(value);
    }
  }

  // With 4 bits a byte holds two pixels that alternate over the run.
  void run(int count, std::uint8_t value) {
    for (int i = 0; i < count; ++i) put(index_in(value, i));
  }

  void literal(int count) {
    std::uint8_t value = 0;
    const int per_byte = four_bits() ? 2 : 1;
    for (int i = 0; i < count; ++i) {
      if (i % per_byte == 0) value = next();
      put(index_in(value, i));
    }
    const int bytes = (count + per_byte - 1) / per_byte;
    if (bytes % 2 != 0) next();  // literals are padded to whole 16-bit words
  }

  std::uint8_t index_in(std::uint8_t value, int pixel) const {
    if (!four_bits()) return value;
    return static_cast<std::uint8_t>(pixel % 2 == 0 ? value >> 4 : value & 15);
  }

  void put(std::uint8_t index) {
    if (x_ >= picture_.width || y_ >= picture_.height) return;
    const int row = header_.top_down ? y_ : picture_.height - 1 - y_;
    std::copy_n(header_.palette[index].data(), 3, picture_.pixel(x_, row));
    ++x_;
  }

  bool four_bits() const { return header_.compression == BmpCompression::kRle4; }

  InputFile& file_;
  const BmpHeader& header_;
  Picture& picture_;
  std::array<std::uint8_t, 1 << 14> buffer_{};
  std::size_t at_ = 0;
  std::size_t filled_ = 0;
  int x_ = 0;
  int y_ = 0;  // counted in the order of the file
};

}  // namespace

void decode_bmp_runs(InputFile& file, const BmpHeader& header, Picture& picture) {
  for (std::size_t i = 0; i < picture.rgb.size(); ++i) picture.rgb[i] = header.palette[0][i % 3];
  RunDecoder(file, header, picture).decode();
}

}  // namespace zv::image
