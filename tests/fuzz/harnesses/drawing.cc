// Pictures made here: what is written is read back, and plates are drawn wherever they lie.
#include <cstdint>
#include <cstring>
#include <string>

#include "base/value.h"
#include "harness.h"
#include "image/codec.h"
#include "read/draw_results.h"

namespace zv::fuzz {
namespace {

// Up to 40 x 40 pixels out of the input's bytes, of which there must be three.
image::Picture picture_of(std::string_view bytes) {
  const auto side = [&](std::size_t at) { return static_cast<unsigned char>(bytes[at]) % 40U + 1; };
  image::Picture picture = image::unpainted(side(0), side(1));
  for (std::size_t i = 0; i < picture.rgb.size(); ++i) {
    picture.rgb[i] = static_cast<std::uint8_t>(bytes[2 + i % (bytes.size() - 2)]);
  }
  return picture;
}

void same_size(const image::Picture& one, const image::Picture& other) {
  promise(one.width == other.width && one.height == other.height, "the size that was written");
}

}  // namespace

void encoders(std::string_view input) {
  if (input.size() < 3) return;
  const image::Picture picture = picture_of(input);
  succeeds([&] {
    const auto png = image::decode_png(image::encode_png(picture)).picture;
    const auto bmp = image::decode_bmp(image::encode_bmp(picture)).picture;
    const auto tiff = image::decode_tiff(image::encode_tiff(picture)).picture;
    for (const image::Picture* read : {&png, &bmp, &tiff}) {
      same_size(*read, picture);
      promise(read->rgb == picture.rgb, "the pixels that were written");
    }
    same_size(image::decode_jpeg(image::encode_jpeg(picture)).picture, picture);
  });
}

void labels(std::string_view input) {
  constexpr std::size_t HEAD = 2 + 4 * sizeof(std::int32_t);
  if (input.size() < HEAD) return;
  List box;
  for (std::size_t at = 2; at < HEAD; at += sizeof(std::int32_t)) {
    std::int32_t side = 0;
    std::memcpy(&side, input.data() + at, sizeof side);
    // Both far away and near by, both whole and not.
    if (input[0] < 0) {
      box.push_back(side * 1e3);
    } else {
      box.push_back(std::int64_t{side >> (static_cast<unsigned char>(input[1]) % 32)});
    }
  }
  const image::Picture picture = picture_of(input);
  succeeds([&] {
    const Map plate{
        {"ocr_text", std::string(input.substr(HEAD))}, {"ocr_conf", 0.5}, {"bbox", box}};
    same_size(read::draw_results(picture, {read::Plate(plate)}), picture);
  });
}

}  // namespace zv::fuzz
