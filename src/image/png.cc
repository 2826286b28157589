// PNG files to pixels and back: every colour type and depth, interlaced or not.
// The simplified interface of the library would do, but it corrects gamma,
// which the engine does not, hides the notes about orientation, and cannot be
// broken off.
#include <png.h>

#include <exception>

#include "base/error.h"
#include "base/interrupt.h"
#include "image/codec.h"
#include "image/orientation.h"

namespace zv::image {
namespace {

struct Codec : Escape {
  // To `create` either kind of state.
  template <class Create>
  explicit Codec(Create create) {
    const auto on_error = [](png_structp from, png_const_charp text) {
      static_cast<Codec*>(png_get_error_ptr(from))->leave(text);
    };
    png = create(PNG_LIBPNG_VER_STRING, this, on_error, [](png_structp, png_const_charp) {});
    info = png_create_info_struct(png);
    // The limit on pixels is ours; a long and narrow picture is fine.
    png_set_user_limits(png, PNG_UINT_31_MAX, PNG_UINT_31_MAX);
  }

  png_structp png = nullptr;
  png_infop info = nullptr;
};

struct Reader : Codec {
  explicit Reader(std::string_view file) : Codec(png_create_read_struct), rest(file) {
    png_set_read_fn(png, this, read);
  }
  ~Reader() { png_destroy_read_struct(&png, &info, nullptr); }

  static void read(png_structp png, png_bytep to, std::size_t count);
  template <class Step>
  void run_or_fail(Step step);
  void read_rows(Picture& picture);
  int orientation();

  std::string_view rest;
};

void Reader::read(png_structp png, png_bytep to, std::size_t count) {
  auto& rest = static_cast<Reader*>(png_get_io_ptr(png))->rest;
  if (pending_interrupts() > 0) png_error(png, "interrupted");
  if (rest.size() < count) png_error(png, TRUNCATED);
  rest.copy(reinterpret_cast<char*>(to), count);
  rest.remove_prefix(count);
}

template <class Step>
void Reader::run_or_fail(Step step) {
  if (run(step)) return;
  check_interrupt();
  const std::string_view said = message;
  if (said == TRUNCATED || said == "Not enough image data") throw Error(TRUNCATED);
  throw Error("broken PNG file: " + std::string(said));
}

void Reader::read_rows(Picture& picture) {
  png_set_expand(png);
  png_set_scale_16(png);
  png_set_gray_to_rgb(png);
  png_set_strip_alpha(png);
  const int passes = png_set_interlace_handling(png);
  png_read_update_info(png, info);
  if (png_get_rowbytes(png, info) != picture.stride()) png_error(png, "unexpected row size");
  for (int pass = 0; pass < passes; ++pass) {
    for (int y = 0; y < picture.height; ++y) png_read_row(png, picture.row(y), nullptr);
  }
}

// Blocks after the pixels count too; when they are broken, what came before
// them holds.
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
  Writer() : Codec(png_create_write_struct) {
    png_set_write_fn(png, this, append, [](png_structp) {});
  }
  ~Writer() { png_destroy_write_struct(&png, &info); }

  static void append(png_structp png, png_bytep from, std::size_t count);
  void write(const Picture& picture);

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
  reader.run_or_fail([&] { png_read_info(reader.png, reader.info); });
  Decoded result{unpainted(png_get_image_width(reader.png, reader.info),
                           png_get_image_height(reader.png, reader.info))};
  reader.run_or_fail([&] { reader.read_rows(result.picture); });
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
