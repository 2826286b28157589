// File-name patterns with "*", "?" and "[...]"; "?" and sets stand for one code point.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace zv {

bool has_wildcards(std::string_view text);
bool matches(std::string_view pattern, std::string_view name);
// The existing paths that a pattern names, spelled as the pattern spells them, sorted. Names that
// begin with "." are matched only by patterns that begin so.
std::vector<std::string> glob(const std::string& pattern);

}  // namespace zv
