#include "read/expand_inputs.h"

#include "base/glob.h"
#include "base/output_stream.h"
#include "base/python_text.h"
#include "base/unicode.h"
#include "command/image_files.h"

namespace zv::read {
namespace {

namespace fs = std::filesystem;
using Files = std::vector<fs::path>;

std::vector<fs::path> entries(const fs::path& folder) {
  std::vector<fs::path> found;
  std::error_code error;
  for (fs::directory_iterator entry(folder, error), end; !error && entry != end;
       entry.increment(error)) {
    found.push_back(entry->path());
  }
  return found;
}

void add_matching(const std::vector<fs::path>& entries, const std::string& suffix, Files& files) {
  for (const fs::path& entry : entries) {
    if (entry.filename().string().ends_with(suffix)) files.push_back(entry);
  }
}

void add_folder(const fs::path& folder, Files& files) {
  const auto listed = entries(folder);
  for (const std::string_view suffix : allowed_image_extensions()) {
    add_matching(listed, std::string(suffix), files);
    add_matching(listed, ascii_upper(suffix), files);
  }
}

// Whether the text named a file or a folder.
bool add_named(const std::string& input, Files& files) {
  if (const auto file = validate_file_path(input)) {
    files.push_back(*file);
    return true;
  }
  std::error_code error;
  const fs::path folder = fs::canonical(input, error);
  if (error || !fs::is_directory(folder, error)) return false;
  add_folder(folder, files);
  return true;
}

void add_pattern(const std::string& pattern, Files& files, std::ostream& out) {
  const auto names = glob(pattern);
  if (names.empty()) out << "Skip: " << Foreign{pattern} << "\n";
  for (const std::string& name : names) {
    if (!add_named(name, files)) out << "Skip: " << Foreign{name} << "\n";
  }
}

bool names_nothing(const std::string& input) {
  std::error_code error;
  return !fs::exists(fs::symlink_status(input, error));
}

}  // namespace

std::vector<fs::path> expand_inputs(const List& inputs, std::ostream& out) {
  Files files;
  for (const Value& input : inputs) {
    const std::string text = plain_text(input);
    if (add_named(text, files)) continue;
    if (has_wildcards(text) && names_nothing(text)) {
      add_pattern(text, files, out);
    } else {
      out << "Skip: " << Foreign{text} << "\n";
    }
  }
  return files;
}

}  // namespace zv::read
