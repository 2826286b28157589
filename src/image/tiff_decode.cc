// TIFF files to pixels: the first page, in strips or tiles, with any compression the library knows.
#include <string_view>
#include <vector>

#include "base/error.h"
#include "image/codec.h"
#include "image/exif.h"
#include "image/tiff_blocks.h"
#include "image/tiff_file.h"

namespace zv::image {
namespace {

// Colour spaces with a conversion of their own: the library converts the picture as a whole.
bool needs_library_conversion(const TiffFile& file) {
  const auto compression = file.short_field(TIFFTAG_COMPRESSION);
  switch (file.short_field(TIFFTAG_PHOTOMETRIC)) {
    case PHOTOMETRIC_YCBCR:
      return compression != COMPRESSION_JPEG;
    case PHOTOMETRIC_CIELAB:
    case PHOTOMETRIC_LOGL:
    case PHOTOMETRIC_LOGLUV:
      return true;
    default:
      return compression == COMPRESSION_OJPEG;
  }
}

void convert_by_library(const TiffFile& file, Picture& picture) {
  std::vector<std::uint32_t> raster(picture.rgb.size() / 3);
  // Turning is done elsewhere; here the pixels are wanted as stored.
  TIFFSetField(file.get(), TIFFTAG_ORIENTATION, ORIENTATION_TOPLEFT);
  if (TIFFReadRGBAImageOriented(file.get(), static_cast<std::uint32_t>(picture.width),
                                static_cast<std::uint32_t>(picture.height), raster.data(),
                                ORIENTATION_TOPLEFT, 1) == 0) {
    file.fail();
  }
  for (std::size_t i = 0; i < raster.size(); ++i) {
    picture.rgb[3 * i] = static_cast<std::uint8_t>(TIFFGetR(raster[i]));
    picture.rgb[3 * i + 1] = static_cast<std::uint8_t>(TIFFGetG(raster[i]));
    picture.rgb[3 * i + 2] = static_cast<std::uint8_t>(TIFFGetB(raster[i]));
  }
}

int orientation_of(const TiffFile& file) {
  std::uint16_t value = 0;
  if (TIFFGetField(file.get(), TIFFTAG_ORIENTATION, &value) != 0) return value;
  OrientationFinder finder;
  std::uint32_t size = 0;
  const char* packet = nullptr;
  if (TIFFGetField(file.get(), TIFFTAG_XMLPACKET, &size, &packet) != 0)
    finder.add_xmp({packet, size});
  return finder.orientation();
}

}  // namespace

Decoded decode_tiff(InputFile& input) {
  const TiffFile file(input);
  const auto width = file.long_field(TIFFTAG_IMAGEWIDTH);
  const auto height = file.long_field(TIFFTAG_IMAGELENGTH);
  check_size(width, height);
  if (file.short_field(TIFFTAG_COMPRESSION) == COMPRESSION_JPEG) {
    TIFFSetField(file.get(), TIFFTAG_JPEGCOLORMODE, JPEGCOLORMODE_RGB);
  }
  Decoded result{{}, orientation_of(file)};
  if (needs_library_conversion(file)) {
    result.picture = blank_picture(width, height);
    convert_by_library(file, result.picture);
    return result;
  }
  TiffBlockReader reader(file);
  result.picture = blank_picture(width, height);
  reader.read_into(result.picture);
  return result;
}

}  // namespace zv::image
