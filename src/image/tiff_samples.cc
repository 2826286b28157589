#include "image/tiff_samples.h"

#include <algorithm>
#include <cstring>
#include <string>

#include "base/error.h"

namespace zv::image {
namespace {

std::size_t samples_needed(std::uint16_t meaning) {
  switch (meaning) {
    case PHOTOMETRIC_RGB:
      return 3;
    case PHOTOMETRIC_SEPARATED:
      return 4;
    default:
      return 1;
  }
}

bool showable(std::uint16_t meaning, unsigned bits, std::size_t samples) {
  const bool known = meaning == PHOTOMETRIC_MINISBLACK || meaning == PHOTOMETRIC_MINISWHITE ||
                     meaning == PHOTOMETRIC_RGB || meaning == PHOTOMETRIC_PALETTE ||
                     meaning == PHOTOMETRIC_SEPARATED;
  const bool depth = bits == 1 || bits == 2 || bits == 4 || bits == 8 ||
                     (bits == 16 && meaning != PHOTOMETRIC_PALETTE) ||
                     (bits == 32 && meaning == PHOTOMETRIC_MINISBLACK);
  return known && depth && samples >= samples_needed(meaning);
}

bool colours_multiplied(const TiffFile& file) {
  std::uint16_t count = 0;
  std::uint16_t* kinds = nullptr;
  TIFFGetFieldDefaulted(file.get(), TIFFTAG_EXTRASAMPLES, &count, &kinds);
  return count > 0 && kinds != nullptr && kinds[0] == EXTRASAMPLE_ASSOCALPHA;
}

std::uint8_t divided(unsigned value, unsigned alpha) {
  return alpha == 0 ? 0 : static_cast<std::uint8_t>(std::min(255U, value * 255 / alpha));
}

// Measurements without a natural white: what lies outside 0 to 255 is cut off.
template <class Number>
std::uint8_t cut(Number value) {
  if (!(value > Number{0})) return 0;  // not-a-number, too
  return value < Number{255} ? static_cast<std::uint8_t>(value) : 255;
}

template <class Number, class ToByte>
void unpack_numbers(const std::uint8_t* packed, std::size_t count, std::uint8_t* to,
                    std::size_t step, ToByte to_byte) {
  for (std::size_t i = 0; i < count; ++i, packed += sizeof(Number), to += step) {
    Number value;
    std::memcpy(&value, packed, sizeof value);
    *to = to_byte(value);
  }
}

void unpack_wide(std::uint16_t format, const std::uint8_t* packed, std::size_t count,
                 std::uint8_t* to, std::size_t step) {
  if (format == SAMPLEFORMAT_IEEEFP)
    unpack_numbers<float>(packed, count, to, step, cut<float>);
  else if (format == SAMPLEFORMAT_INT)
    unpack_numbers<std::int32_t>(packed, count, to, step, cut<std::int32_t>);
  else
    unpack_numbers<std::uint32_t>(packed, count, to, step, cut<std::uint32_t>);
}

void unpack_small(unsigned bits, unsigned scale, const std::uint8_t* packed, std::size_t count,
                  std::uint8_t* to, std::size_t step) {
  const unsigned per_byte = 8 / bits;
  const unsigned mask = (1U << bits) - 1;
  for (std::size_t i = 0; i < count; ++i, to += step) {
    const auto shift = static_cast<unsigned>(per_byte - 1 - i % per_byte) * bits;
    *to = static_cast<std::uint8_t>((packed[i / per_byte] >> shift & mask) * scale);
  }
}

}  // namespace

TiffSamples::TiffSamples(const TiffFile& file)
    : per_pixel_(file.short_field(TIFFTAG_SAMPLESPERPIXEL)),
      bits_(file.short_field(TIFFTAG_BITSPERSAMPLE)),
      format_(file.short_field(TIFFTAG_SAMPLEFORMAT)),
      meaning_(file.short_field(TIFFTAG_PHOTOMETRIC)) {
  // Pictures that libjpeg has turned to RGB on the way keep their old label.
  if (meaning_ == PHOTOMETRIC_YCBCR) meaning_ = PHOTOMETRIC_RGB;
  const bool whole = format_ == SAMPLEFORMAT_UINT || format_ == SAMPLEFORMAT_VOID;
  if (!(whole || bits_ == 32) || !showable(meaning_, bits_, per_pixel_)) {
    throw Error("unsupported TIFF layout (colour space " + std::to_string(meaning_) + ", " +
                std::to_string(per_pixel_) + " x " + std::to_string(bits_) + " bits)");
  }
  multiplied_ = meaning_ == PHOTOMETRIC_RGB && per_pixel_ > 3 && colours_multiplied(file);
  if (meaning_ == PHOTOMETRIC_PALETTE) read_palette(file);
}

void TiffSamples::read_palette(const TiffFile& file) {
  std::uint16_t* channels[3] = {};
  if (TIFFGetField(file.get(), TIFFTAG_COLORMAP, &channels[0], &channels[1], &channels[2]) == 0) {
    throw Error("broken TIFF file: the palette is missing");
  }
  palette_.resize(std::size_t{1} << bits_);
  for (std::size_t i = 0; i < palette_.size(); ++i) {
    for (std::size_t c = 0; c < 3; ++c) {
      palette_[i][c] = static_cast<std::uint8_t>(channels[c][i] >> 8);
    }
  }
}

void TiffSamples::unpack(const std::uint8_t* packed, std::size_t count, std::uint8_t* to,
                         std::size_t step) const {
  if (bits_ == 32) return unpack_wide(format_, packed, count, to, step);
  if (bits_ == 16) return unpack_numbers<std::uint16_t>(packed, count, to, step, narrow_sample);
  const unsigned scale = meaning_ == PHOTOMETRIC_PALETTE ? 1 : 255 / ((1U << bits_) - 1);
  unpack_small(bits_, scale, packed, count, to, step);
}

void TiffSamples::convert_pixel(const std::uint8_t* samples, std::uint8_t* rgb) const {
  switch (meaning_) {
    case PHOTOMETRIC_RGB:
      std::copy_n(samples, 3, rgb);
      if (!multiplied_ || samples[3] == 255) return;
      for (int c = 0; c < 3; ++c) rgb[c] = divided(samples[c], samples[3]);
      return;
    case PHOTOMETRIC_SEPARATED:
      return cmyk_to_rgb(samples, rgb);
    case PHOTOMETRIC_PALETTE:
      std::copy_n(palette_[samples[0]].data(), 3, rgb);
      return;
    case PHOTOMETRIC_MINISWHITE:
      std::fill_n(rgb, 3, static_cast<std::uint8_t>(255 - samples[0]));
      return;
    default:
      std::fill_n(rgb, 3, samples[0]);
  }
}

void TiffSamples::convert(const std::uint8_t* samples, std::size_t pixels,
                          std::uint8_t* rgb) const {
  for (std::size_t i = 0; i < pixels; ++i) convert_pixel(samples + i * per_pixel_, rgb + i * 3);
}

}  // namespace zv::image
