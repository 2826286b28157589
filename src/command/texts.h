// Byte counts and failures of the network for people.
#pragma once

#include <string>

#include "base/network_failure.h"
#include "base/value.h"

namespace zv {

// "512 B", "1.5 KB", "2048.0 GB"; no unit above GB.
std::string _fmt_size(const Value& bytes);

// In one line.
std::string _humanize_network_error(const std::string& message,
                                    NetworkFailure kind = NetworkFailure::other);

}  // namespace zv
