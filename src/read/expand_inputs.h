// From what the user typed to the list of image files.
#pragma once

#include <filesystem>
#include <ostream>
#include <vector>

#include "base/value.h"

namespace zv::read {

// Files as they are, folders by their image files, patterns by what they match; "Skip: " is printed
// for the rest. Duplicates are kept.
std::vector<std::filesystem::path> expand_inputs(const List& inputs, std::ostream& out);

}  // namespace zv::read
