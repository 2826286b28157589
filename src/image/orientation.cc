#include "image/orientation.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <string>

namespace zv::image {
namespace {

constexpr std::string_view EXIF_PREFIX{"Exif\0\0", 6};
constexpr std::string_view XMP_PREFIX{"http://ns.adobe.com/xap/1.0/\0", 29};
constexpr std::uint32_t ORIENTATION_TAG = 0x0112;

// A number of `count` bytes; 0 where the block ends too early.
std::uint32_t number(std::string_view block, std::size_t at, std::size_t count) {
  if (at > block.size() || block.size() - at < count) return 0;
  const bool big_endian = block[0] == 'M';
  std::uint32_t value = 0;
  for (std::size_t i = 0; i < count; ++i) {
    const char byte = block[big_endian ? at + i : at + count - 1 - i];
    value = value << 8 | static_cast<std::uint8_t>(byte);
  }
  return value;
}

int exif_orientation(std::string_view block) {
  constexpr std::size_t WIDTHS[] = {0, 1, 0, 2, 4};  // by the type of the field
  const std::size_t directory = number(block, 4, 4);
  const std::size_t count = number(block, directory, 2);
  for (std::size_t i = 0; i < count; ++i) {
    const std::size_t entry = directory + 2 + 12 * i;
    if (number(block, entry, 2) != ORIENTATION_TAG) continue;
    const std::uint32_t type = number(block, entry + 2, 2);
    const std::uint32_t value = number(block, entry + 8, type < 5 ? WIDTHS[type] : 0);
    return value <= 8 ? static_cast<int>(value) : 0;
  }
  return 0;
}

// Either an attribute, tiff:Orientation="6", or an element, <tiff:Orientation>6<.
int xmp_orientation(std::string_view packet) {
  for (const std::string_view name : {"tiff:Orientation=\"", "tiff:Orientation>"}) {
    for (auto at = packet.find(name); at != packet.npos; at = packet.find(name, at + 1)) {
      const std::string_view digit = packet.substr(at + name.size(), 1);
      if (!digit.empty() && digit[0] >= '1' && digit[0] <= '8') return digit[0] - '0';
    }
  }
  return 0;
}

// Where the stored pixel that becomes (x, y) of the upright picture lies: swapped exchanges the
// axes first, then the stored axes are read backwards where mirrored.
struct Turn {
  bool swapped;
  bool mirror_x;
  bool mirror_y;
};

// Indexed by EXIF orientation.
constexpr Turn TURNS[9] = {
    {false, false, false},  // (none)
    {false, false, false},  // upright
    {false, true, false},   // mirrored
    {false, true, true},    // upside down
    {false, false, true},   // upside down and mirrored
    {true, false, false},   // mirrored, lying on its side
    {true, false, true},    // lying, top to the right
    {true, true, true},     // mirrored, lying on the other side
    {true, true, false},    // lying, top to the left
};

// Small enough for the rows that a turned tile is gathered from to stay in the cache.
constexpr int TILE = 32;

void copy_tile(const Picture& from, const Turn& turn, Picture& to, int left, int top) {
  for (int y = top; y < std::min(top + TILE, to.height); ++y) {
    std::uint8_t* pixel = to.pixel(left, y);
    for (int x = left; x < std::min(left + TILE, to.width); ++x) {
      const int column = turn.swapped ? y : x;
      const int row = turn.swapped ? x : y;
      const std::uint8_t* source = from.row(turn.mirror_y ? from.height - 1 - row : row);
      const std::ptrdiff_t place = turn.mirror_x ? from.width - 1 - column : column;
      pixel = std::copy_n(source + 3 * place, 3, pixel);
    }
  }
}

}  // namespace

void Orientation::add_exif(std::string_view block) {
  if (block.starts_with(EXIF_PREFIX)) block.remove_prefix(EXIF_PREFIX.size());
  const bool known = block.starts_with("II") || block.starts_with("MM");
  if (exif_ == 0 && known) exif_ = exif_orientation(block);
}

void Orientation::add_xmp(std::string_view packet) {
  if (xmp_ == 0) xmp_ = xmp_orientation(packet);
}

void Orientation::add_jpeg_segment(std::string_view segment) {
  if (segment.starts_with(EXIF_PREFIX)) add_exif(segment);
  if (segment.starts_with(XMP_PREFIX)) add_xmp(segment.substr(XMP_PREFIX.size()));
}

void Orientation::add_raw_profile(std::string_view text) {
  // The text opens with a line break; name and length follow, each on a line of its own.
  for (int line = 0; line < 3; ++line) {
    const std::size_t end = text.find('\n');
    text = end == text.npos ? std::string_view() : text.substr(end + 1);
  }
  std::string digits(text);
  digits.erase(std::remove(digits.begin(), digits.end(), '\n'), digits.end());
  std::string block;
  for (const char* at = digits.data(); at + 2 <= digits.data() + digits.size(); at += 2) {
    unsigned byte = 0;
    if (std::from_chars(at, at + 2, byte, 16).ptr != at + 2) break;
    block += static_cast<char>(byte);
  }
  add_exif(block);
}

Picture upright(Picture stored, int orientation) {
  if (orientation < 2 || orientation > 8) return stored;
  const Turn turn = TURNS[orientation];
  const auto width = static_cast<std::uint64_t>(stored.width);
  const auto height = static_cast<std::uint64_t>(stored.height);
  Picture result = turn.swapped ? unpainted(height, width) : unpainted(width, height);
  for (int y = 0; y < result.height; y += TILE) {
    for (int x = 0; x < result.width; x += TILE) copy_tile(stored, turn, result, x, y);
  }
  return result;
}

}  // namespace zv::image
