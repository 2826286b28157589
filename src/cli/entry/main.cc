// The executable: standard streams in, exit status out.
#include <cstring>
#include <iostream>

#include "cli/console.h"
#include "cli/run.h"

namespace {

int finish(int status, const zv::OutputStream& out, std::ostream& err) {
  if (out.failure() == 0) return status;
  err << "zv-anpr: cannot write to standard output: " << std::strerror(out.failure()) << "\n";
  return status == 0 ? 1 : status;
}

}  // namespace

int main(int count, char** words) {
  zv::cli::prepare_console();
  zv::OutputStream out(stdout, zv::cli::is_terminal(stdout));
  zv::OutputStream err(stderr, zv::cli::is_terminal(stderr));
  try {
    const int status = zv::cli::run(zv::cli::command_line_words(count, words), out, err, std::cin);
    return finish(status, out, err);
  } catch (const zv::OutputClosed&) {
    zv::cli::end_unread();
  }
}
