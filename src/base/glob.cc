#include "base/glob.h"

#include <algorithm>
#include <filesystem>
#include <optional>

#include "base/unicode.h"

namespace zv {
namespace {

namespace fs = std::filesystem;

// Whether `point` is in the set that begins after "["; moves `at` past its "]". Nothing when the
// set is never closed, which makes the bracket an ordinary character.
std::optional<bool> in_set(std::string_view pattern, std::size_t& at, std::uint32_t point) {
  std::size_t position = at;
  const bool negated = pattern.substr(position).starts_with('!');
  if (negated) ++position;
  bool found = false;
  for (bool first = true; position < pattern.size(); first = false) {
    const std::uint32_t low = next_code_point(pattern, position);
    if (low == ']' && !first) {
      at = position;
      return found != negated;
    }
    std::uint32_t high = low;
    const bool range = pattern.substr(position).starts_with('-') && position + 1 < pattern.size() &&
                       pattern[position + 1] != ']';
    if (range) high = next_code_point(pattern, ++position);
    found = found || (low <= point && point <= high);
  }
  return std::nullopt;
}

// One step of the pattern against one code point; moves `at` on a match.
bool step(std::string_view pattern, std::size_t& at, std::uint32_t point) {
  if (at == pattern.size()) return false;
  std::size_t next = at;
  const std::uint32_t wanted = next_code_point(pattern, next);
  if (wanted == '[') {
    std::size_t after = next;
    if (const auto inside = in_set(pattern, after, point)) {
      at = after;
      return *inside;
    }
  }
  at = next;
  return wanted == '?' || wanted == point;
}

bool hidden_mismatch(std::string_view pattern, std::string_view name) {
  return name.starts_with('.') && !pattern.starts_with('.');
}

void expand(const fs::path& prefix, fs::path::iterator part, const fs::path::iterator& end,
            std::vector<std::string>& found) {
  if (part == end) {
    found.push_back(prefix.string());
    return;
  }
  const std::string name = part->string();
  const auto rest = std::next(part);
  std::error_code error;
  if (!has_wildcards(name)) {
    const fs::path path = prefix / *part;
    if (fs::exists(fs::symlink_status(path, error))) expand(path, rest, end, found);
    return;
  }
  const fs::path folder = prefix.empty() ? fs::path(".") : prefix;
  for (fs::directory_iterator entry(folder, error), last; !error && entry != last;
       entry.increment(error)) {
    const fs::path entry_name = entry->path().filename();
    if (hidden_mismatch(name, entry_name.string()) || !matches(name, entry_name.string())) continue;
    if (rest == end || entry->is_directory(error)) expand(prefix / entry_name, rest, end, found);
    error.clear();
  }
}

}  // namespace

bool has_wildcards(std::string_view text) {
  return text.find_first_of("*?[") != std::string_view::npos;
}

bool matches(std::string_view pattern, std::string_view name) {
  std::size_t at = 0;
  std::size_t position = 0;
  std::optional<std::pair<std::size_t, std::size_t>>
      star;  // after the last "*", and where it stands
  while (position < name.size()) {
    if (at < pattern.size() && pattern[at] == '*') {
      star = {++at, position};
      continue;
    }
    std::size_t next = position;
    if (step(pattern, at, next_code_point(name, next))) {
      position = next;
    } else if (star) {
      at = star->first;
      next_code_point(name, star->second);
      position = star->second;
    } else {
      return false;
    }
  }
  while (at < pattern.size() && pattern[at] == '*') ++at;
  return at == pattern.size();
}

std::vector<std::string> glob(const std::string& pattern) {
  std::vector<std::string> found;
  const fs::path path(pattern);
  if (path.empty()) return found;
  expand({}, path.begin(), path.end(), found);
  std::sort(found.begin(), found.end());
  return found;
}

}  // namespace zv
