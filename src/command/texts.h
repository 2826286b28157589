// Byte counts and failures of the network for people.
#pragma once

#include <string>

#include "base/value.h"

namespace zv {

// "512 B", "1.5 KB", "2048.0 GB"; no unit above GB.
std::string _fmt_size(const Value& bytes);

// What a failure of the network is, when more is known than its text.
enum class NetworkFailure { other, name_resolution, time_out, refused };

// In one line.
std::string _humanize_network_error(const std::string& message,
                                    NetworkFailure kind = NetworkFailure::other);

}  // namespace zv
