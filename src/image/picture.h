// The pixels every part of this room exchanges: upright 8-bit RGB, and the size every codec obeys.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>
#include <vector>

namespace zv::image {

using Rgb = std::array<std::uint8_t, 3>;

// Leaves new elements without a value: the system provides memory only as it is written to, so that
// a small file with a lying header costs nothing.
template <class T>
struct Untouched : std::allocator<T> {
  template <class U>
  struct rebind {
    using other = Untouched<U>;
  };
  template <class U>
  void construct(U* at) noexcept {
    ::new (static_cast<void*>(at)) U;
  }
};
using Bytes = std::vector<std::uint8_t, Untouched<std::uint8_t>>;

// Interleaved red, green, blue; rows from the top, each 3 * width bytes without padding.
struct Picture {
  int width = 0;
  int height = 0;
  Bytes rgb;

  std::size_t stride() const { return static_cast<std::size_t>(width) * 3; }
  std::uint8_t* row(int y) { return rgb.data() + stride() * static_cast<std::size_t>(y); }
  const std::uint8_t* row(int y) const {
    return rgb.data() + stride() * static_cast<std::size_t>(y);
  }
  std::uint8_t* pixel(int x, int y) { return row(y) + std::ptrdiff_t{3} * x; }
};

// The engine's limit, too: a picture above it is taken for an attack or a mistake. As RGB it would
// fill half a gigabyte. Fuzzers, who define the macro, need many small pictures.
#ifdef FUZZING_BUILD_MODE_UNSAFE_FOR_PRODUCTION
inline constexpr std::uint64_t MAX_PIXELS = 1'000'000;
#else
inline constexpr std::uint64_t MAX_PIXELS = 150'000'000;
#endif

// Throws Error for an empty picture and for one above MAX_PIXELS; called before any allocation.
void check_size(std::uint64_t width, std::uint64_t height);

// A checked picture whose pixels have no value yet.
Picture unpainted(std::uint64_t width, std::uint64_t height);

// a * b / 255, rounded to nearest, for a and b in 0..255.
constexpr std::uint8_t scale_by(unsigned a, unsigned b) {
  const unsigned product = a * b + 128;
  return static_cast<std::uint8_t>((product + (product >> 8)) >> 8);
}

// Ink amounts (0 is bare paper) to light, without a colour profile.
inline void cmyk_to_rgb(const std::uint8_t* cmyk, std::uint8_t* rgb) {
  const unsigned paper = 255U - cmyk[3];
  for (std::size_t i = 0; i < 3; ++i) {
    rgb[i] = static_cast<std::uint8_t>(paper - scale_by(cmyk[i], paper));
  }
}

}  // namespace zv::image
