// What the console needs before the first byte is written; differs between systems.
#pragma once

#include <cstdio>
#include <string>
#include <vector>

namespace zv::cli {

// POSIX: descriptors 0 to 2 are open (else the first file opened would become standard output), and
// a reader that goes away and a file that may not grow are errors, not signals. Windows: UTF-8.
void prepare_console();
// The words of the command line as UTF-8 (POSIX: the bytes that were given).
std::vector<std::string> command_line_words(int count, char** words);
bool is_terminal(std::FILE* stream);
// Ends the process the way one ends whose reader has gone away.
[[noreturn]] void end_unread();

}  // namespace zv::cli
