#include "image/encode.h"

#include <algorithm>
#include <array>
#include <string>
#include <string_view>

#include "base/error.h"
#include "image/codec.h"

namespace zv::image {
namespace {

using Encoder = void (*)(const Picture&, OutputFile&);

struct Suffix {
  std::string_view text;
  Encoder encoder;
};

constexpr std::array<Suffix, 8> kSuffixes{{
    {".jpg", encode_jpeg},
    {".jpeg", encode_jpeg},
    {".jpe", encode_jpeg},
    {".jfif", encode_jpeg},
    {".png", encode_png},
    {".bmp", encode_bmp},
    {".tif", encode_tiff},
    {".tiff", encode_tiff},
}};

std::string lower_suffix(const std::filesystem::path& path) {
  std::string suffix = path.extension().string();
  std::transform(suffix.begin(), suffix.end(), suffix.begin(), [](char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  });
  return suffix;
}

Encoder encoder_for(const std::filesystem::path& path) {
  const std::string suffix = lower_suffix(path);
  for (const auto& [text, encoder] : kSuffixes) {
    if (suffix == text) return encoder;
  }
  throw Error("unknown file extension: " + suffix);
}

}  // namespace

void encode_file(const Picture& picture, const std::filesystem::path& path) {
  const Encoder encoder = encoder_for(path);
  OutputFile file(path);
  encoder(picture, file);
  file.finish();
}

}  // namespace zv::image
