#include "image/decode.h"

#include <array>
#include <new>
#include <string_view>
#include <utility>

#include "image/codec.h"
#include "image/file_error.h"
#include "image/orientation.h"

namespace zv::image {
namespace {

using Decoder = Decoded (*)(InputFile&);

struct Signature {
  std::string_view start;
  Decoder decoder;
};

constexpr std::size_t kLongestSignature = 8;
constexpr std::array<Signature, 7> kSignatures{{
    {"\xFF\xD8\xFF", decode_jpeg},
    {"\x89PNG\r\n\x1A\n", decode_png},
    {"BM", decode_bmp},
    {std::string_view("II*\0", 4), decode_tiff},
    {std::string_view("MM\0*", 4), decode_tiff},
    {std::string_view("II+\0", 4), decode_tiff},
    {std::string_view("MM\0+", 4), decode_tiff},
}};

Decoder decoder_for(InputFile& file) {
  char start[kLongestSignature] = {};
  const std::string_view read(start, file.read(start, sizeof start));
  file.check();
  file.seek(0);
  for (const auto& [signature, decoder] : kSignatures) {
    if (read.starts_with(signature)) return decoder;
  }
  throw Error("cannot identify image file " + quoted(file.path()));
}

}  // namespace

Picture decode_file(const std::filesystem::path& path) {
  InputFile file(path);
  try {
    Decoded decoded = decoder_for(file)(file);
    return upright(std::move(decoded.picture), decoded.orientation);
  } catch (const std::bad_alloc&) {
    throw Error("not enough memory for this image");
  }
}

}  // namespace zv::image
