// Reading the server's answers: loosely typed data whose keys may be missing or of the wrong kind.
#pragma once

#include <exception>
#include <string>

#include "base/value.h"

namespace zv::server {

// How many elements, members or characters. Throws Error for what has none.
std::size_t length(const Value& value);
// Throws Error for an element that is no text.
std::string joined(const List& texts, const std::string& separator);
// The value under a key as a person reads it; the fallback counts only when the key is missing.
std::string shown(const Map& answer, std::string_view key, const Value& fallback = nullptr);
// What a health answer says about make, model and colour.
bool mmc_available(const Map& health);
// "42s", "2m", "1.5h". Throws Error for what is no number.
std::string uptime_text(const Value& seconds);
// "12/500 today (488 remaining)"; the given text stands before the rest that remains.
std::string quota_text(const Map& mmc, const std::string& before_rest);
// "Error: Could not reach server at ..." with what went wrong in parentheses.
std::string unreachable(const std::string& base_url, const std::exception& error);

}  // namespace zv::server
