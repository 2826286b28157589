// Pixels to a TIFF file: 8-bit RGB, not compressed.
#include "image/codec.h"
#include "image/tiff_file.h"

namespace zv::image {
namespace {

void describe(TIFF* tiff, const Picture& picture) {
  TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, picture.width);
  TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, picture.height);
  TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, 8);
  TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, 3);
  TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_RGB);
  TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
  TIFFSetField(tiff, TIFFTAG_COMPRESSION, COMPRESSION_NONE);
  TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, TIFFDefaultStripSize(tiff, 0));
}

}  // namespace

void encode_tiff(const Picture& picture, OutputFile& file) {
  const TiffFile tiff(file);
  describe(tiff.get(), picture);
  for (int y = 0; y < picture.height; ++y) {
    auto* row = const_cast<std::uint8_t*>(picture.row(y));
    if (TIFFWriteScanline(tiff.get(), row, static_cast<std::uint32_t>(y), 0) < 0) tiff.fail();
  }
  if (TIFFWriteDirectory(tiff.get()) == 0) tiff.fail();
}

}  // namespace zv::image
