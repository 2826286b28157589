// Photos: every decoder, and turning upright what it gave.
#include <boost/crc.hpp>
#include <string>
#include <utility>

#include "harness.h"
#include "image/codec.h"
#include "image/orientation.h"

namespace zv::fuzz {
namespace {

void decode(image::Decoded (*decoder)(std::string_view), std::string_view file) {
  succeeds([&] {
    image::Decoded decoded = decoder(file);
    promise(decoded.orientation >= 1 && decoded.orientation <= 8, "an orientation of EXIF's");
    const image::Picture picture = upright(std::move(decoded.picture), decoded.orientation);
    promise(picture.width > 0 && picture.height > 0, "a picture with pixels");
    promise(picture.rgb.size() == picture.stride() * static_cast<std::size_t>(picture.height),
            "as many bytes as the size says");
  });
}

std::uint32_t big_endian(std::string_view bytes) {
  std::uint32_t number = 0;
  for (const char byte : bytes.substr(0, 4))
    number = number << 8 | static_cast<unsigned char>(byte);
  return number;
}

// The sums of all chunks made right, so that damage is met behind them and not by them.
std::string with_right_sums(std::string file) {
  constexpr std::size_t SIGNATURE = 8, AROUND = 12;
  for (std::size_t at = SIGNATURE; at + AROUND <= file.size();) {
    const std::string_view rest = std::string_view(file).substr(at);
    const std::size_t length = big_endian(rest);
    if (length > rest.size() - AROUND) break;
    boost::crc_32_type sum;
    sum.process_bytes(rest.data() + 4, length + 4);
    for (std::size_t i = 0; i < 4; ++i) {
      file[at + 8 + length + i] = static_cast<char>(sum.checksum() >> (24 - 8 * i));
    }
    at += AROUND + length;
  }
  return file;
}

}  // namespace

void jpeg(std::string_view input) {
  decode(image::decode_jpeg, input);
}

void png(std::string_view input) {
  decode(image::decode_png, with_right_sums(std::string(input)));
}

void bmp(std::string_view input) {
  decode(image::decode_bmp, input);
}

void tiff(std::string_view input) {
  decode(image::decode_tiff, input);
}

void orientation(std::string_view input) {
  using Add = void (image::Orientation::*)(std::string_view);
  for (const Add add :
       {&image::Orientation::add_exif, &image::Orientation::add_xmp,
        &image::Orientation::add_jpeg_segment, &image::Orientation::add_raw_profile}) {
    succeeds([&] {
      image::Orientation said;
      (said.*add)(input);
      (said.*add)(input);
      promise(said.value() >= 1 && said.value() <= 8, "an orientation of EXIF's");
    });
  }
}

}  // namespace zv::fuzz
