// Failures of network operations in one line for people.
#pragma once

#include <string>

#include "base/network_failure.h"

namespace zv {

std::string _humanize_network_error(const std::string& message,
                                    NetworkFailure kind = NetworkFailure::other);

}  // namespace zv
