// PNG files to pixels: every colour type and depth, interlaced or not.
#include <string>

#include "base/error.h"
#include "image/codec.h"
#include "image/exif.h"
#include "image/png_errors.h"
#include "image/raw_profile.h"

namespace zv::image {
namespace {

struct Reader : PngErrors {
  explicit Reader(InputFile& input)
      : file(input),
        png(png_create_read_struct(PNG_LIBPNG_VER_STRING, static_cast<PngErrors*>(this), leave,
                                   ignore_warning)),
        info(png_create_info_struct(png)) {}
  ~Reader() { png_destroy_read_struct(&png, &info, nullptr); }
  Reader(const Reader&) = delete;
  Reader& operator=(const Reader&) = delete;

  void open();
  void begin();
  void read_rows(Picture& picture);
  void read_interlaced(Picture& picture);
  int orientation();
  [[noreturn]] void fail() const;

  InputFile& file;
  png_structp png;
  png_infop info;
  int passes = 1;
};

void read_bytes(png_structp png, png_bytep to, std::size_t count) {
  if (static_cast<InputFile*>(png_get_io_ptr(png))->read(to, count) < count) {
    png_error(png, kTruncated);
  }
}

void Reader::open() {
  png_set_read_fn(png, &file, read_bytes);
  // The limit on pixels is ours; a long and narrow picture is fine.
  png_set_user_limits(png, PNG_UINT_31_MAX, PNG_UINT_31_MAX);
  png_read_info(png, info);
}

void Reader::begin() {
  png_set_expand(png);
  png_set_scale_16(png);
  png_set_gray_to_rgb(png);
  png_set_strip_alpha(png);
  passes = png_set_interlace_handling(png);
  png_read_update_info(png, info);
  if (png_get_rowbytes(png, info) != std::size_t{3} * png_get_image_width(png, info)) {
    png_error(png, "unexpected row size");
  }
}

void Reader::read_rows(Picture& picture) {
  for (int y = 0; y < picture.height; ++y) png_read_row(png, append_row(picture), nullptr);
}

void Reader::read_interlaced(Picture& picture) {
  for (int pass = 0; pass < passes; ++pass) {
    for (int y = 0; y < picture.height; ++y) png_read_row(png, picture.row(y), nullptr);
  }
}

void Reader::fail() const {
  file.check();
  if (file.ran_out() || std::string(message) == "Not enough image data") throw Error(kTruncated);
  throw Error("broken PNG file: " + std::string(message));
}

// Blocks after the pixels count too; when they are broken, what came before them holds.
int Reader::orientation() {
  run([this] { png_read_end(png, info); });
  OrientationFinder finder;
  png_uint_32 size = 0;
  png_bytep exif = nullptr;
  if (png_get_eXIf_1(png, info, &size, &exif) != 0) finder.add_exif({exif, size});
  png_textp texts = nullptr;
  const int count = png_get_text(png, info, &texts, nullptr);
  for (int i = 0; i < count; ++i) {
    const std::string_view key = texts[i].key;
    const std::string_view text = texts[i].text != nullptr ? texts[i].text : "";
    if (key == "XML:com.adobe.xmp") finder.add_xmp(text);
    if (key == "Raw profile type exif") finder.add_exif(parse_raw_profile(text));
  }
  return finder.orientation();
}

}  // namespace

Decoded decode_png(InputFile& file) {
  Reader reader(file);
  if (!reader.run([&] { reader.open(); })) reader.fail();
  const auto width = png_get_image_width(reader.png, reader.info);
  const auto height = png_get_image_height(reader.png, reader.info);
  check_size(width, height);
  if (!reader.run([&] { reader.begin(); })) reader.fail();
  const bool interlaced = reader.passes > 1;
  Decoded result{interlaced ? blank_picture(width, height) : empty_picture(width, height)};
  const bool done = reader.run([&] {
    interlaced ? reader.read_interlaced(result.picture) : reader.read_rows(result.picture);
  });
  if (!done) reader.fail();
  result.orientation = reader.orientation();
  return result;
}

}  // namespace zv::image
