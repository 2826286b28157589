// PNG files to pixels and back: every colour type and depth, interlaced or not. The simplified
// interface of the library would do, but it corrects gamma, which the engine does not, hides the
// notes about orientation, and cannot be broken off.
#include <png.h>

#include <csetjmp>
#include <cstdio>
#include <exception>

#include "base/error.h"
#include "base/interrupt.h"
#include "image/codec.h"
#include "image/orientation.h"

namespace zv::image {
namespace {

// libpng reports errors by leaving its caller; here they become Error, without ever throwing
// through its frames.
struct Codec {
  template <class Step>
  bool run(Step&& step) {  // false for an error; a step may not own anything while inside libpng
    if (setjmp(escape) != 0) return false;
    step();
    return true;
  }

  [[noreturn]] static void leave(png_structp png, png_const_charp text) {
    auto& self = *static_cast<Codec*>(png_get_error_ptr(png));
    std::snprintf(self.message, sizeof self.message, "%s", text);
    std::longjmp(self.escape, 1);
  }
  static void ignore(png_structp, png_const_charp) {}

  std::jmp_buf escape{};
  char message[160] = {};
  png_structp png = nullptr;
  png_infop info = nullptr;
};

struct Reader : Codec {
  explicit Reader(std::string_view file) : rest(file) {
    png = png_create_read_struct(PNG_LIBPNG_VER_STRING, static_cast<Codec*>(this), leave, ignore);
    info = png_create_info_struct(png);
  }
  ~Reader() { png_destroy_read_struct(&png, &info, nullptr); }

  void open();
  void begin();
  void read_rows(Picture& picture);
  int orientation();
  [[noreturn]] void fail() const;

  static void read(png_structp png, png_bytep to, std::size_t count);

  std::string_view rest;
  int passes = 1;
};

void Reader::read(png_structp png, png_bytep to, std::size_t count) {
  auto& rest = static_cast<Reader*>(png_get_io_ptr(png))->rest;
  if (pending_interrupts() > 0) png_error(png, "interrupted");
  if (rest.size() < count) png_error(png, TRUNCATED);
  rest.copy(reinterpret_cast<char*>(to), count);
  rest.remove_prefix(count);
}

void Reader::open() {
  png_set_read_fn(png, this, read);
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
  for (int pass = 0; pass < passes; ++pass) {
    for (int y = 0; y < picture.height; ++y) png_read_row(png, picture.row(y), nullptr);
  }
}

void Reader::fail() const {
  check_interrupt();
  const std::string_view said = message;
  if (said == TRUNCATED || said == "Not enough image data") throw Error(TRUNCATED);
  throw Error("broken PNG file: " + std::string(said));
}

// Blocks after the pixels count too; when they are broken, what came before them holds.
int Reader::orientation() {
  run([this] { png_read_end(png, info); });
  Orientation found;
  png_uint_32 size = 0;
  png_bytep exif = nullptr;
  if (png_get_eXIf_1(png, info, &size, &exif) != 0) {
    found.add_exif({reinterpret_cast<char*>(exif), size});
  }
  png_textp texts = nullptr;
  const int count = png_get_text(png, info, &texts, nullptr);
  for (int i = 0; i < count; ++i) {
    const std::string_view key = texts[i].key;
    const std::string_view text = texts[i].text != nullptr ? texts[i].text : "";
    if (key == "XML:com.adobe.xmp") found.add_xmp(text);
    if (key == "Raw profile type exif") found.add_raw_profile(text);
  }
  return found.value();
}

struct Writer : Codec {
  Writer() {
    png = png_create_write_struct(PNG_LIBPNG_VER_STRING, static_cast<Codec*>(this), leave, ignore);
    info = png_create_info_struct(png);
  }
  ~Writer() { png_destroy_write_struct(&png, &info); }

  void write(const Picture& picture);

  static void append(png_structp png, png_bytep from, std::size_t count);

  std::string file;
};

void Writer::append(png_structp png, png_bytep from, std::size_t count) {
  bool enough = true;
  try {
    static_cast<Writer*>(png_get_io_ptr(png))->file.append(reinterpret_cast<char*>(from), count);
  } catch (const std::exception&) {
    enough = false;
  }
  if (!enough) png_error(png, "not enough memory");
}

void Writer::write(const Picture& picture) {
  png_set_write_fn(png, this, append, [](png_structp) {});
  png_set_user_limits(png, PNG_UINT_31_MAX, PNG_UINT_31_MAX);
  png_set_IHDR(png, info, static_cast<png_uint_32>(picture.width),
               static_cast<png_uint_32>(picture.height), 8, PNG_COLOR_TYPE_RGB, PNG_INTERLACE_NONE,
               PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
  png_write_info(png, info);
  for (int y = 0; y < picture.height; ++y) {
    if (pending_interrupts() > 0) png_error(png, "interrupted");
    png_write_row(png, picture.row(y));
  }
  png_write_end(png, nullptr);
}

}  // namespace

Decoded decode_png(std::string_view file) {
  Reader reader(file);
  if (!reader.run([&] { reader.open(); })) reader.fail();
  const auto width = png_get_image_width(reader.png, reader.info);
  const auto height = png_get_image_height(reader.png, reader.info);
  check_size(width, height);
  if (!reader.run([&] { reader.begin(); })) reader.fail();
  Decoded result{unpainted(width, height), 1, {}};
  if (!reader.run([&] { reader.read_rows(result.picture); })) reader.fail();
  result.orientation = reader.orientation();
  return result;
}

std::string encode_png(const Picture& picture) {
  Writer writer;
  const bool done = writer.run([&] { writer.write(picture); });
  check_interrupt();
  if (!done) throw Error("cannot write PNG: " + std::string(writer.message));
  return std::move(writer.file);
}

}  // namespace zv::image
