#include <fcntl.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>

#include "cli/console.h"

namespace zv::cli {

void prepare_console() {
  std::signal(SIGPIPE, SIG_IGN);
  std::signal(SIGXFSZ, SIG_IGN);
  for (int descriptor = 0; descriptor <= 2; ++descriptor) {
    if (fcntl(descriptor, F_GETFD) != -1) continue;
    // Opened the wrong way round, so that using what the user closed still fails.
    const int opened = open("/dev/null", descriptor == 0 ? O_WRONLY : O_RDONLY);
    if (opened != descriptor && opened >= 0) close(opened);
  }
}

std::vector<std::string> command_line_words(int count, char** words) {
  return {words + 1, words + std::max(count, 1)};
}

bool is_terminal(std::FILE* stream) {
  return isatty(fileno(stream)) != 0;
}

void end_unread() {
  std::signal(SIGPIPE, SIG_DFL);
  std::raise(SIGPIPE);
  std::_Exit(1);
}

}  // namespace zv::cli
