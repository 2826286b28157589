// The way older editors hide an EXIF block in a PNG text: a name, a length, then hexadecimal
// digits.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

namespace zv::image {

// The block's bytes; as many as could be read from a text that is damaged.
std::vector<std::uint8_t> parse_raw_profile(std::string_view text);

}  // namespace zv::image
