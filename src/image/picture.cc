#include "image/picture.h"

#include <string>

#include "base/error.h"

namespace zv::image {

void check_size(std::uint64_t width, std::uint64_t height) {
  if (width == 0 || height == 0) throw Error("image has no pixels");
  if (width <= kMaxPixels && height <= kMaxPixels / width) return;
  throw Error("image size (" + std::to_string(width) + " x " + std::to_string(height) +
              " pixels) exceeds the limit of " + std::to_string(kMaxPixels) + " pixels");
}

Picture empty_picture(std::uint64_t width, std::uint64_t height) {
  check_size(width, height);
  Picture picture{static_cast<int>(width), static_cast<int>(height), {}};
  picture.rgb.reserve(picture.stride() * static_cast<std::size_t>(height));
  return picture;
}

Picture blank_picture(std::uint64_t width, std::uint64_t height) {
  Picture picture = empty_picture(width, height);
  picture.rgb.resize(picture.stride() * static_cast<std::size_t>(height));
  return picture;
}

std::uint8_t* append_row(Picture& picture) {
  const std::size_t start = picture.rgb.size();
  picture.rgb.resize(start + picture.stride());
  return picture.rgb.data() + start;
}

}  // namespace zv::image
