#include "image/exif.h"

#include <cstddef>
#include <optional>

namespace zv::image {
namespace {

using Bytes = std::span<const std::uint8_t>;

constexpr std::string_view kExifPrefix{"Exif\0\0", 6};
constexpr std::string_view kXmpPrefix{"http://ns.adobe.com/xap/1.0/\0", 29};
constexpr std::uint32_t kOrientationTag = 0x0112;
enum FieldType : std::uint32_t { kByte = 1, kShort = 3, kLong = 4 };

std::string_view as_text(Bytes bytes) {
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

int valid(std::uint32_t value) {
  return value >= 1 && value <= 8 ? static_cast<int>(value) : 0;
}

// Numbers of a TIFF structure; none where the block ends too early.
struct TiffBlock {
  Bytes bytes;
  bool big_endian = false;

  std::optional<std::uint32_t> number(std::size_t at, std::size_t count) const {
    if (at > bytes.size() || bytes.size() - at < count) return std::nullopt;
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < count; ++i) {
      value = value << 8 | bytes[big_endian ? at + i : at + count - 1 - i];
    }
    return value;
  }

  std::uint32_t entry_value(std::size_t entry) const {
    switch (number(entry + 2, 2).value_or(0)) {
      case kByte:
        return number(entry + 8, 1).value_or(0);
      case kShort:
        return number(entry + 8, 2).value_or(0);
      case kLong:
        return number(entry + 8, 4).value_or(0);
      default:
        return 0;
    }
  }
};

int orientation_in(const TiffBlock& block) {
  const std::size_t directory = block.number(4, 4).value_or(0);
  const std::size_t count = block.number(directory, 2).value_or(0);
  for (std::size_t i = 0; i < count; ++i) {
    const std::size_t entry = directory + 2 + 12 * i;
    if (block.number(entry, 2) == kOrientationTag) return valid(block.entry_value(entry));
  }
  return 0;
}

}  // namespace

void OrientationFinder::add_exif(Bytes block) {
  if (as_text(block).starts_with(kExifPrefix)) block = block.subspan(kExifPrefix.size());
  const std::string_view order = as_text(block).substr(0, 2);
  if (exif_ != 0 || (order != "II" && order != "MM")) return;
  exif_ = orientation_in({block, order == "MM"});
}

void OrientationFinder::add_xmp(std::string_view packet) {
  constexpr std::string_view name = "tiff:Orientation";
  for (auto at = packet.find(name); at != packet.npos && xmp_ == 0;
       at = packet.find(name, at + 1)) {
    std::string_view rest = packet.substr(at + name.size());
    // Either an attribute, tiff:Orientation="6", or an element, <tiff:Orientation>6<.
    if (rest.starts_with("=\""))
      rest.remove_prefix(2);
    else if (rest.starts_with('>'))
      rest.remove_prefix(1);
    else
      continue;
    if (!rest.empty() && rest[0] >= '0') xmp_ = valid(static_cast<std::uint32_t>(rest[0] - '0'));
  }
}

void OrientationFinder::add_jpeg_segment(Bytes segment) {
  const std::string_view text = as_text(segment);
  if (text.starts_with(kExifPrefix)) add_exif(segment);
  if (text.starts_with(kXmpPrefix)) add_xmp(text.substr(kXmpPrefix.size()));
}

}  // namespace zv::image
