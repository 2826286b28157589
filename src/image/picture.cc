#include "image/picture.h"

#include <string>

#include "base/error.h"

namespace zv::image {

void check_size(std::uint64_t width, std::uint64_t height) {
  if (width == 0 || height == 0) throw Error("image has no pixels");
  if (width <= MAX_PIXELS && height <= MAX_PIXELS / width) return;
  throw Error("image size (" + std::to_string(width) + " x " + std::to_string(height) +
              " pixels) exceeds the limit of " + std::to_string(MAX_PIXELS) + " pixels");
}

Picture unpainted(std::uint64_t width, std::uint64_t height) {
  check_size(width, height);
  Picture picture{static_cast<int>(width), static_cast<int>(height), {}};
  picture.rgb.resize(picture.stride() * static_cast<std::size_t>(height));
  return picture;
}

}  // namespace zv::image
