// TIFF files to pixels: the first page, in strips or tiles, with any compression the library knows.
#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstring>

#include "base/error.h"
#include "base/interrupt.h"
#include "image/codec.h"
#include "image/orientation.h"
#include "image/tiff_file.h"

namespace zv::image {
namespace {

// Above any block this program would decode; a header that asks for more lies.
constexpr tmsize_t MAX_ALLOCATION = tmsize_t{1} << 31;

int orientation_of(const TiffFile& file) {
  std::uint16_t value = 0;
  if (TIFFGetField(file.get(), TIFFTAG_ORIENTATION, &value) != 0) return value;
  Orientation found;
  std::uint32_t size = 0;
  const char* packet = nullptr;
  if (TIFFGetField(file.get(), TIFFTAG_XMLPACKET, &size, &packet) != 0) {
    found.add_xmp({packet, size});
  }
  return found.value();
}

// The library would scale 16 bits to 8 by value / 257, the engine takes the upper ones.
void keep_upper_bits_of_palette(const TiffFile& file) {
  std::uint16_t* channels[3] = {};
  if (TIFFGetField(file.get(), TIFFTAG_COLORMAP, channels, channels + 1, channels + 2) == 0) return;
  const std::size_t count = std::size_t{1} << file.field<std::uint16_t>(TIFFTAG_BITSPERSAMPLE);
  for (std::uint16_t* channel : channels) {
    std::transform(channel, channel + count, channel, [](std::uint16_t value) {
      return static_cast<std::uint16_t>((value >> 8) * 257);
    });
  }
}

// Colours that are stored multiplied with alpha are divided again; the library must not multiply
// others, which it does not when it takes their alpha for the first kind.
bool colours_multiplied(const TiffFile& file) {
  std::uint16_t count = 0;
  std::uint16_t* kinds = nullptr;
  TIFFGetFieldDefaulted(file.get(), TIFFTAG_EXTRASAMPLES, &count, &kinds);
  if (count == 0 || kinds == nullptr) return false;
  const bool multiplied = kinds[0] == EXTRASAMPLE_ASSOCALPHA;
  if (kinds[0] == EXTRASAMPLE_UNASSALPHA) kinds[0] = EXTRASAMPLE_ASSOCALPHA;
  return multiplied && file.field<std::uint16_t>(TIFFTAG_PHOTOMETRIC) == PHOTOMETRIC_RGB;
}

std::uint8_t divided(std::uint32_t value, std::uint32_t alpha) {
  return alpha == 0 ? 0 : static_cast<std::uint8_t>(std::min(255U, value * 255 / alpha));
}

// The library's pixels have four bytes; three of each come to lie where they belong.
void pack(Bytes& bytes, bool multiplied) {
  for (std::size_t i = 0; i < bytes.size() / 4; ++i) {
    std::uint32_t pixel = 0;
    std::memcpy(&pixel, bytes.data() + 4 * i, sizeof pixel);
    const std::uint32_t alpha = multiplied ? TIFFGetA(pixel) : 255;
    bytes[3 * i] = divided(TIFFGetR(pixel), alpha);
    bytes[3 * i + 1] = divided(TIFFGetG(pixel), alpha);
    bytes[3 * i + 2] = divided(TIFFGetB(pixel), alpha);
  }
  bytes.resize(bytes.size() / 4 * 3);
}

void paint_by_library(const TiffFile& file, Picture& picture) {
  const bool multiplied = colours_multiplied(file);
  if (file.field<std::uint16_t>(TIFFTAG_PHOTOMETRIC) == PHOTOMETRIC_PALETTE) {
    keep_upper_bits_of_palette(file);
  }
  // Turning is done elsewhere; here the pixels are wanted as stored.
  TIFFSetField(file.get(), TIFFTAG_ORIENTATION, ORIENTATION_TOPLEFT);
  picture.rgb.resize(picture.rgb.size() / 3 * 4);
  if (TIFFReadRGBAImageOriented(file.get(), static_cast<std::uint32_t>(picture.width),
                                static_cast<std::uint32_t>(picture.height),
                                reinterpret_cast<std::uint32_t*>(picture.rgb.data()),
                                ORIENTATION_TOPLEFT, 1) == 0) {
    file.fail();
  }
  pack(picture.rgb, multiplied);
}

}  // namespace

tmsize_t TiffFile::read(void* client, void* to, tmsize_t count) {
  auto& self = *static_cast<TiffFile*>(client);
  if (pending_interrupts() > 0) return -1;
  const std::uint64_t there =
      self.bytes_.size() - std::min<std::uint64_t>(self.position_, self.bytes_.size());
  const std::size_t got = std::min(static_cast<std::uint64_t>(count), there);
  if (got < static_cast<std::size_t>(count)) self.ran_out_ = true;
  if (got > 0) std::memcpy(to, self.bytes_.data() + self.position_, got);
  self.position_ += got;
  return static_cast<tmsize_t>(got);
}

toff_t TiffFile::seek(void* client, toff_t offset, int whence) {
  auto& self = *static_cast<TiffFile*>(client);
  const std::uint64_t base = whence == SEEK_CUR   ? self.position_
                             : whence == SEEK_END ? self.bytes_.size()
                                                  : 0;
  return self.position_ = base + offset;
}

int TiffFile::keep_first(TIFF*, void* client, const char*, const char* format, va_list arguments) {
  auto& self = *static_cast<TiffFile*>(client);
  if (self.message_[0] == '\0') {
    std::vsnprintf(self.message_, sizeof self.message_, format, arguments);
  }
  return 1;
}

TiffFile::TiffFile(std::string_view bytes) : bytes_(bytes) {
  const std::unique_ptr<TIFFOpenOptions, void (*)(TIFFOpenOptions*)> options(TIFFOpenOptionsAlloc(),
                                                                             TIFFOpenOptionsFree);
  TIFFOpenOptionsSetErrorHandlerExtR(options.get(), keep_first, this);
  TIFFOpenOptionsSetWarningHandlerExtR(
      options.get(), [](TIFF*, void*, const char*, const char*, va_list) { return 1; }, nullptr);
  TIFFOpenOptionsSetMaxSingleMemAlloc(options.get(), MAX_ALLOCATION);
  handle_.reset(TIFFClientOpenExt(
      "image", "rm", this, read, [](void*, void*, tmsize_t) { return tmsize_t{0}; }, seek,
      [](void*) { return 0; },
      [](void* self) { return toff_t{static_cast<TiffFile*>(self)->bytes_.size()}; }, nullptr,
      nullptr, options.get()));
  if (!handle_) fail();
}

void TiffFile::fail() const {
  check_interrupt();
  if (ran_out_) throw Error(TRUNCATED);
  throw Error("broken TIFF file: " + std::string(message_));
}

Decoded decode_tiff(std::string_view bytes) {
  const TiffFile file(bytes);
  Decoded result{unpainted(file.field<std::uint32_t>(TIFFTAG_IMAGEWIDTH),
                           file.field<std::uint32_t>(TIFFTAG_IMAGELENGTH)),
                 orientation_of(file),
                 {}};
  needs_samples(file) ? paint_samples(file, result.picture)
                      : paint_by_library(file, result.picture);
  return result;
}

}  // namespace zv::image
