// Byte counts for people.
#pragma once

#include <string>

#include "base/value.h"

namespace zv {

// "512 B", "1.5 KB", "2048.0 GB"; no unit above GB.
std::string _fmt_size(const Value& bytes);

}  // namespace zv
