#include "image/image_file.h"

#include <array>
#include <new>
#include <string_view>
#include <utility>

#include "base/error.h"
#include "base/files.h"
#include "base/python_text.h"
#include "base/unicode.h"
#include "image/codec.h"
#include "image/orientation.h"

namespace zv::image {
namespace {

using Decoder = Decoded (*)(std::string_view);
using Encoder = std::string (*)(const Picture&);

constexpr std::size_t LONGEST_SIGNATURE = 8;
constexpr std::array<std::pair<std::string_view, Decoder>, 7> SIGNATURES{{
    {"\xFF\xD8\xFF", decode_jpeg},
    {"\x89PNG\r\n\x1A\n", decode_png},
    {"BM", decode_bmp},
    {{"II*\0", 4}, decode_tiff},
    {{"MM\0*", 4}, decode_tiff},
    {{"II+\0", 4}, decode_tiff},
    {{"MM\0+", 4}, decode_tiff},
}};

constexpr std::array<std::pair<std::string_view, Encoder>, 8> SUFFIXES{{
    {".jpg", encode_jpeg},
    {".jpeg", encode_jpeg},
    {".jpe", encode_jpeg},
    {".jfif", encode_jpeg},
    {".png", encode_png},
    {".bmp", encode_bmp},
    {".tif", encode_tiff},
    {".tiff", encode_tiff},
}};

// Judged by the first bytes alone: what is no image may be of any size.
Decoder decoder_for(const std::filesystem::path& path) {
  const std::string start = read_file(path, LONGEST_SIGNATURE);
  for (const auto& [signature, decoder] : SIGNATURES) {
    if (start.starts_with(signature)) return decoder;
  }
  throw Error("cannot identify image file " + quoted_text(path.string()));
}

Encoder encoder_for(const std::filesystem::path& path) {
  const std::string suffix = ascii_lower(path.extension().string());
  for (const auto& [text, encoder] : SUFFIXES) {
    if (suffix == text) return encoder;
  }
  throw Error("unknown file extension: " + suffix);
}

}  // namespace

Photo decode_file(const std::filesystem::path& path) {
  try {
    const Decoder decoder = decoder_for(path);
    Decoded decoded = decoder(read_file(path));
    return {upright(std::move(decoded.picture), decoded.orientation), std::move(decoded.damage)};
  } catch (const std::bad_alloc&) {
    throw Error("not enough memory for this image");
  }
}

void encode_file(const Picture& picture, const std::filesystem::path& path) {
  const Encoder encoder = encoder_for(path);
  try {
    write_file(path, encoder(picture));
  } catch (const std::bad_alloc&) {
    throw Error("not enough memory for this image");
  }
}

}  // namespace zv::image
