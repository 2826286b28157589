#include "base/run.h"

#include "base/interrupt.h"
#include "base/unicode.h"

namespace zv {
namespace {

std::string as_text(std::string_view bytes) {
  std::string text;
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    const bool carriage_return = bytes[i] == '\r';
    if (carriage_return && bytes.substr(i + 1).starts_with('\n')) continue;
    text += carriage_return ? '\n' : bytes[i];
  }
  return replace_invalid(text);
}

}  // namespace

std::string ExitState::text() const {
  return signal != 0 ? "signal " + std::to_string(signal) : "exit status " + std::to_string(status);
}

Completed run_captured(const std::vector<std::string>& command) {
  using enum Child::Stream;
  check_interrupt();
  Child child(command, {inherit, read, read}, Relay::unless_from_terminal);
  child.run_until([&] { return child.exit() && child.ended(1) && child.ended(2); });
  check_interrupt();
  return {*child.exit(), as_text(child.received(1)), as_text(child.received(2))};
}

}  // namespace zv
