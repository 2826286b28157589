// Pixels to a PNG file: 8-bit RGB, the library's own compression.
#include <string>

#include "base/error.h"
#include "image/codec.h"
#include "image/png_errors.h"

namespace zv::image {
namespace {

struct Writer : PngErrors {
  Writer()
      : png(png_create_write_struct(PNG_LIBPNG_VER_STRING, static_cast<PngErrors*>(this), leave,
                                    ignore_warning)),
        info(png_create_info_struct(png)) {}
  ~Writer() { png_destroy_write_struct(&png, &info); }
  Writer(const Writer&) = delete;
  Writer& operator=(const Writer&) = delete;

  void write(const Picture& picture, OutputFile& file);

  png_structp png;
  png_infop info;
};

void write_bytes(png_structp png, png_bytep from, std::size_t count) {
  static_cast<OutputFile*>(png_get_io_ptr(png))->write(from, count);
}

void Writer::write(const Picture& picture, OutputFile& file) {
  png_set_write_fn(png, &file, write_bytes, [](png_structp) {});
  png_set_user_limits(png, PNG_UINT_31_MAX, PNG_UINT_31_MAX);
  png_set_IHDR(png, info, static_cast<png_uint_32>(picture.width),
               static_cast<png_uint_32>(picture.height), 8, PNG_COLOR_TYPE_RGB, PNG_INTERLACE_NONE,
               PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
  png_write_info(png, info);
  for (int y = 0; y < picture.height; ++y) png_write_row(png, picture.row(y));
  png_write_end(png, nullptr);
}

}  // namespace

void encode_png(const Picture& picture, OutputFile& file) {
  Writer writer;
  if (writer.run([&] { writer.write(picture, file); })) return;
  throw Error("cannot write PNG: " + std::string(writer.message));
}

}  // namespace zv::image
