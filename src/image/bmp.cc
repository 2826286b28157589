// BMP files to pixels: palettes, runs, 16 to 32 bits with masks, bottom-up and top-down. Fewer
// lines than a library's conversion to what the engine sees would need: none reads all of these.
#include <algorithm>
#include <bit>
#include <vector>

#include "base/error.h"
#include "base/interrupt.h"
#include "image/codec.h"

namespace zv::image {
namespace {

// Values of the compression field.
enum : std::uint32_t { PLAIN = 0, RUNS_8 = 1, RUNS_4 = 2, MASKS = 3, ALPHA_MASKS = 6 };

constexpr std::size_t HEADER_AT = 14;
constexpr std::uint32_t CORE_HEADER = 12;   // the oldest: 16-bit sizes, 3-byte colours
constexpr std::uint32_t LAST_HEADER = 124;  // the newest
constexpr std::uint32_t MASKS_HEADER = 52;  // from this size on the masks are a part of it

// One channel of a 16- or 32-bit pixel.
struct Channel {
  explicit Channel(std::uint32_t mask = 0)
      : shift(mask == 0 ? 0 : static_cast<unsigned>(std::countr_zero(mask))), most(mask >> shift) {}
  std::uint8_t value(std::uint32_t pixel) const {
    if (most == 0) return 0;
    return static_cast<std::uint8_t>(std::uint64_t{pixel >> shift & most} * 255 / most);
  }
  unsigned shift;
  std::uint32_t most;
};

class Bmp {
 public:
  explicit Bmp(std::string_view file);
  Picture decode() const;

 private:
  std::uint32_t number(std::size_t at, std::size_t count = 4) const;
  std::uint32_t field(std::size_t at) const {
    return at + 4 > length_ ? 0 : number(HEADER_AT + at);
  }
  void read_compression();
  std::size_t read_masks();
  void read_palette(std::size_t at);
  void paint_row(const std::uint8_t* from, std::uint8_t* to) const;
  void paint_rows(Picture& picture) const;
  void paint_runs(Picture& picture) const;

  std::string_view file_;
  std::uint32_t length_;  // of the header
  std::uint64_t width_ = 0;
  std::uint64_t height_ = 0;
  bool top_down_ = false;
  std::uint32_t bits_ = 0;  // per pixel: 1, 2, 4, 8, 16, 24 or 32
  std::uint32_t compression_ = PLAIN;
  Channel channels_[3];       // of 16- and 32-bit pixels
  std::vector<Rgb> palette_;  // an entry for each possible index; of 1 to 8 bits
  std::size_t pixels_at_ = 0;
};

std::uint32_t Bmp::number(std::size_t at, std::size_t count) const {
  if (at > file_.size() || file_.size() - at < count) throw Error(TRUNCATED);
  std::uint32_t value = 0;
  while (count-- > 0) value = value << 8 | static_cast<std::uint8_t>(file_[at + count]);
  return value;
}

Bmp::Bmp(std::string_view file) : file_(file), length_(number(HEADER_AT)) {
  const bool core = length_ == CORE_HEADER;
  if (!core && (length_ < 16 || length_ > LAST_HEADER)) {
    throw Error("unsupported BMP header type (" + std::to_string(length_) + ")");
  }
  number(HEADER_AT + length_ - 1, 1);
  const auto width = static_cast<std::int32_t>(core ? number(18, 2) : field(4));
  const std::int64_t height = static_cast<std::int32_t>(core ? number(20, 2) : field(8));
  if (width < 0) throw Error("broken BMP file: negative width");
  width_ = static_cast<std::uint64_t>(width);
  top_down_ = height < 0;
  height_ = static_cast<std::uint64_t>(top_down_ ? -height : height);
  bits_ = core ? number(24, 2) : number(28, 2);
  read_compression();
  const std::size_t behind = HEADER_AT + length_ + read_masks();
  pixels_at_ = number(10);
  if (bits_ <= 8) read_palette(behind);
  if (pixels_at_ == 0) pixels_at_ = behind + palette_.size() * (core ? 3 : 4);
}

void Bmp::read_compression() {
  const bool known = std::has_single_bit(bits_) ? bits_ <= 32 : bits_ == 24;
  if (!known) throw Error("unsupported BMP pixel depth (" + std::to_string(bits_) + ")");
  compression_ = length_ == CORE_HEADER ? PLAIN : field(16);
  const bool masks = (compression_ == MASKS || compression_ == ALPHA_MASKS) && bits_ >= 16;
  const bool runs =
      (compression_ == RUNS_8 && bits_ == 8) || (compression_ == RUNS_4 && bits_ == 4);
  if (compression_ == PLAIN || masks || runs) return;
  throw Error("unsupported BMP compression (" + std::to_string(compression_) + ")");
}

// The masks stand in the header or, with the common header, right behind it: so many bytes.
std::size_t Bmp::read_masks() {
  const bool given = compression_ == MASKS || compression_ == ALPHA_MASKS;
  const bool inside = length_ >= MASKS_HEADER;
  const std::size_t at = HEADER_AT + (inside ? 40 : length_);
  const bool deep = bits_ == 32;
  for (std::size_t i = 0; i < 3; ++i) {
    const std::uint32_t usual = deep ? 0xFF0000U >> 8 * i : 0x7C00U >> 5 * i;
    channels_[i] = Channel(given ? number(at + 4 * i) : usual);
  }
  return !given || inside ? 0 : compression_ == MASKS ? 12 : 16;
}

// Indices that the file gives no colour are black.
void Bmp::read_palette(std::size_t at) {
  const std::size_t entry = length_ == CORE_HEADER ? 3 : 4;
  const std::size_t possible = std::size_t{1} << bits_;
  std::size_t count = length_ == CORE_HEADER ? 0 : field(32);
  if (count == 0 || count > possible) count = possible;
  if (pixels_at_ > at) count = std::min(count, (pixels_at_ - at) / entry);
  palette_.resize(possible);
  for (std::size_t i = 0; i < count; ++i) {
    for (std::size_t c = 0; c < 3; ++c) {
      palette_[i][c] = static_cast<std::uint8_t>(number(at + i * entry + 2 - c, 1));
    }
  }
}

void Bmp::paint_row(const std::uint8_t* from, std::uint8_t* to) const {
  for (std::size_t x = 0; x < width_; ++x, to += 3) {
    if (bits_ == 24) {
      std::reverse_copy(from + 3 * x, from + 3 * x + 3, to);
    } else if (bits_ < 16) {
      const std::size_t shift = 8 - bits_ - x * bits_ % 8;
      const std::uint8_t* colour =
          palette_[from[x * bits_ / 8] >> shift & ((1U << bits_) - 1)].data();
      std::copy_n(colour, 3, to);
    } else {
      std::uint32_t pixel = 0;
      for (std::size_t i = bits_ / 8; i-- > 0;) pixel = pixel << 8 | from[x * bits_ / 8 + i];
      for (std::size_t c = 0; c < 3; ++c) to[c] = channels_[c].value(pixel);
    }
  }
}

// Rows are padded to whole 32-bit words; the padding of the last row may be missing.
void Bmp::paint_rows(Picture& picture) const {
  const std::size_t stride = (width_ * bits_ + 31) / 32 * 4;
  const auto* bytes = reinterpret_cast<const std::uint8_t*>(file_.data());
  for (int y = 0; y < picture.height; ++y) {
    paint_row(bytes + pixels_at_ + stride * static_cast<std::size_t>(y),
              picture.row(top_down_ ? y : picture.height - 1 - y));
  }
}

// Pairs of bytes: a count and a colour, or 0 and a command; from 3 on that counts literal pixels.
// With 4 bits a byte holds two pixels. Pixels that no run reaches keep the first colour.
void Bmp::paint_runs(Picture& picture) const {
  enum : std::uint32_t { END_OF_LINE = 0, END_OF_PICTURE = 1, JUMP = 2 };
  const bool halves = compression_ == RUNS_4;
  for (std::size_t i = 0; i < picture.rgb.size(); ++i) picture.rgb[i] = palette_[0][i % 3];
  std::size_t at = pixels_at_;
  std::uint64_t x = 0;
  std::uint64_t y = 0;  // counted in the order of the file
  const auto put = [&](std::uint32_t byte, std::uint32_t i) {
    if (x >= width_) return;
    const auto row = static_cast<int>(top_down_ ? y : height_ - 1 - y);
    const std::uint32_t index = !halves ? byte : i % 2 == 0 ? byte >> 4 : byte & 15;
    std::copy_n(palette_[index].data(), 3, picture.pixel(static_cast<int>(x++), row));
  };
  while (y < height_) {
    check_interrupt();
    const std::uint32_t count = number(at++, 1);
    const std::uint32_t value = number(at++, 1);
    if (count == 0 && value == END_OF_PICTURE) return;
    for (std::uint32_t i = 0; i < count; ++i) put(value, i);
    if (count > 0) continue;
    const bool jump = value == JUMP;
    if (value == END_OF_LINE) x = 0;
    if (jump) x = std::min(x + number(at, 1), width_);
    if (value <= JUMP) y += jump ? number(at + 1, 1) : 1;
    for (std::uint32_t i = 0; !jump && i < value; ++i) put(number(at + (halves ? i / 2 : i), 1), i);
    const std::uint32_t bytes = halves ? (value + 1) / 2 : value;
    at += value == END_OF_LINE ? 0 : jump ? 2 : bytes + bytes % 2;  // whole 16-bit words
  }
}

Picture Bmp::decode() const {
  check_size(width_, height_);
  const std::uint64_t stride = (width_ * bits_ + 31) / 32 * 4;
  const std::uint64_t end = pixels_at_ + stride * (height_ - 1) + (width_ * bits_ + 7) / 8;
  const bool runs = compression_ == RUNS_8 || compression_ == RUNS_4;
  if (!runs && end > file_.size()) throw Error(TRUNCATED);
  Picture picture = unpainted(width_, height_);
  runs ? paint_runs(picture) : paint_rows(picture);
  return picture;
}

}  // namespace

Decoded decode_bmp(std::string_view file) {
  return {Bmp(file).decode(), 1, {}};
}

}  // namespace zv::image
