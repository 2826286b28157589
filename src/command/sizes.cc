#include "command/sizes.h"

#include <array>

#include "base/arithmetic.h"
#include "base/value_text.h"

namespace zv {

std::string _fmt_size(const Value& bytes) {
  if (less(bytes, 1024)) return plain_text(bytes) + " B";
  Value rest = divide(bytes, 1024);
  constexpr std::array<const char*, 3> UNITS = {" KB", " MB", " GB"};
  std::size_t unit = 0;
  while (!less(rest, 1024) && unit + 1 < UNITS.size()) {
    rest = divide(rest, 1024);
    ++unit;
  }
  return fixed_text(rest, 1) + UNITS[unit];
}

}  // namespace zv
