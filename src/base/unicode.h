// UTF-8 texts: code points, cuts, white space, bytes that are no UTF-8.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace zv {

// Reads the code point at `position` and moves past it. A byte that begins no valid sequence is
// answered as 0xDC00 + byte, the usual stand-in of undecodable bytes.
std::uint32_t next_code_point(std::string_view text, std::size_t& position);
// The same, but the three bytes that half a surrogate pair would have are answered as that half:
// texts of Python can hold one. Not for file names, whose bytes have to survive.
std::uint32_t next_code_point_or_half(std::string_view text, std::size_t& position);
void append_code_point(std::string& text, std::uint32_t code_point);
bool valid_utf8(std::string_view text);

// The first `count` code points.
std::string first_characters(std::string_view text, std::size_t count);
std::size_t count_characters(std::string_view text);
// Without the white space at both ends (ASCII and Unicode).
std::string_view strip(std::string_view text);
// Lines without their ends: "\n", "\r\n", "\r"; an end of line at the very end opens no further
// line.
std::vector<std::string> split_lines(std::string_view text);
std::string ascii_lower(std::string_view text);
std::string ascii_upper(std::string_view text);
// Bytes that are no UTF-8 become U+FFFD; for texts of other programs.
std::string replace_invalid(std::string_view text);
// Bytes that are no UTF-8 become "\udcXX", and halves of surrogate pairs "\udXXX", as they stand in
// JSON texts; for output streams.
std::string escape_invalid(std::string_view text);

}  // namespace zv
