#include "base/output_stream.h"

#include <cerrno>
#include <utility>

#include "base/unicode.h"

namespace zv {

OutputStream::OutputStream(std::FILE* file) : std::ostream(nullptr), buffer_(file) {
  rdbuf(&buffer_);
  exceptions(std::ios::badbit);  // lets OutputClosed out of operator<<
}

OutputStream::Buffer::int_type OutputStream::Buffer::overflow(int_type c) {
  if (c == traits_type::eof()) return 0;
  const char one = static_cast<char>(c);
  xsputn(&one, 1);
  return c;
}

std::streamsize OutputStream::Buffer::xsputn(const char* text, std::streamsize count) {
  pending_.append(text, static_cast<std::size_t>(count));
  if (pending_.ends_with('\n')) write_out();
  return count;
}

int OutputStream::Buffer::sync() {
  write_out();
  return 0;
}

void OutputStream::Buffer::write_out() {
  const std::string text = escape_invalid(std::exchange(pending_, {}));
  if (text.empty() || failure != 0) return;
  errno = 0;
  const bool written =
      std::fwrite(text.data(), 1, text.size(), file) == text.size() && std::fflush(file) == 0;
  if (written) return;
  failure = errno != 0 ? errno : EIO;
  if (failure == EPIPE) throw OutputClosed();
}

}  // namespace zv
