// Sample arithmetic shared by the codecs.
#pragma once

#include <cstddef>
#include <cstdint>

namespace zv::image {

// a * b / 255, rounded to nearest, for a and b in 0..255.
constexpr std::uint8_t scale_by(unsigned a, unsigned b) {
  const unsigned product = a * b + 128;
  return static_cast<std::uint8_t>((product + (product >> 8)) >> 8);
}

// A 16-bit sample as 8 bits: value / 257, rounded to nearest.
constexpr std::uint8_t narrow_sample(std::uint16_t value) {
  return static_cast<std::uint8_t>((value * 255U + 32895U) >> 16);
}

// Ink amounts (0 is bare paper) to light, without a colour profile.
inline void cmyk_to_rgb(const std::uint8_t* cmyk, std::uint8_t* rgb) {
  const unsigned paper = 255U - cmyk[3];
  for (std::size_t i = 0; i < 3; ++i) {
    rgb[i] = static_cast<std::uint8_t>(paper - scale_by(cmyk[i], paper));
  }
}

}  // namespace zv::image
