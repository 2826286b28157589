#include "base/output_stream.h"

#include <cerrno>
#include <cstdint>
#include <utility>

#include "base/interrupt.h"
#include "base/unicode.h"

namespace zv {

namespace {

// Where a stream keeps whether it is a terminal.
int terminal_mark() {
  static const int mark = std::ios_base::xalloc();
  return mark;
}

std::string without_controls(std::string_view text) {
  std::string shown;
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t start = at;
    const std::uint32_t point = next_code_point(text, at);
    const bool control = point < 0x20 || (point >= 0x7F && point < 0xA0);
    if (!control || point == '\n' || point == '\t') {
      shown.append(text.substr(start, at - start));
    } else {
      constexpr char DIGITS[] = "0123456789abcdef";
      shown.append({'\\', 'x', DIGITS[point >> 4], DIGITS[point & 15]});
    }
  }
  return shown;
}

// Goes on after signals that want nothing of us; Ctrl+C does not wait for a reader that is asleep.
bool wrote_all(std::FILE* file, std::string_view text) {
  do {
    errno = 0;
    text.remove_prefix(std::fwrite(text.data(), 1, text.size(), file));
  } while (!text.empty() && errno == EINTR && pending_interrupts() == 0);
  return text.empty() && std::fflush(file) == 0;
}

}  // namespace

std::ostream& operator<<(std::ostream& stream, const Foreign& foreign) {
  if (stream.iword(terminal_mark()) == 0) return stream << foreign.text;
  for (const char c : foreign.text) c == '\n' ? stream << "\\n" : stream << c;
  return stream;
}

OutputStream::OutputStream(std::FILE* file, bool terminal)
    : std::ostream(nullptr), buffer_(file, terminal) {
  std::setvbuf(file, nullptr, _IONBF, 0);  // lines are gathered here, and no write is to lose any
  rdbuf(&buffer_);
  iword(terminal_mark()) = terminal ? 1 : 0;
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
  std::string text = escape_invalid(std::exchange(pending_, {}));
  if (terminal_) text = without_controls(text);
  if (text.empty() || failure != 0) return;
  if (wrote_all(file_, text)) return;
  failure = errno != 0 ? errno : EIO;
  if (failure == EPIPE) throw OutputClosed();
}

}  // namespace zv
