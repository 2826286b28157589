// A TIFF file in memory, open for libtiff, that prints nothing. Only the tiff_*.cc files include
// it.
#pragma once

#include <tiffio.h>

#include <memory>
#include <string>
#include <string_view>

#include "image/picture.h"

namespace zv::image {

class TiffFile {
 public:
  // Throws Error for a header that makes no sense.
  explicit TiffFile(std::string_view bytes);
  TiffFile(const TiffFile&) = delete;
  TiffFile& operator=(const TiffFile&) = delete;

  TIFF* get() const { return handle_.get(); }
  // A field's value, or what the format says holds without it.
  template <class Number>
  Number field(std::uint32_t tag) const {
    Number value = 0;
    TIFFGetFieldDefaulted(get(), tag, &value);
    return value;
  }
  // The library's first complaint, or "truncated" when the file gave out.
  [[noreturn]] void fail() const;

 private:
  struct Close {
    void operator()(TIFF* tiff) const { TIFFClose(tiff); }
  };
  static tmsize_t read(void* self, void* to, tmsize_t count);
  static toff_t seek(void* self, toff_t offset, int whence);
  static int keep_first(TIFF*, void* self, const char*, const char* format, va_list arguments);

  std::string_view bytes_;
  std::uint64_t position_ = 0;
  bool ran_out_ = false;
  char message_[160] = {};
  std::unique_ptr<TIFF, Close> handle_;
};

// Of the layouts that the library's own conversion refuses, or rounds otherwise than the engine
// does: inks, measurements of 16 and 32 bits, colours of less than 8.
bool needs_samples(const TiffFile& file);
// Paints all of a picture of the file's size. Throws Error.
void paint_samples(const TiffFile& file, Picture& picture);

}  // namespace zv::image
