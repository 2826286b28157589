// The --host option of commands that bind.
#pragma once

#include <string>
#include <string_view>

namespace zv::server {

// Digits only, white space aside: a port that was meant for --port.
bool looks_like_port(std::string_view host);
// What to say then, in one line.
std::string mistaken_port(const std::string& host);

}  // namespace zv::server
