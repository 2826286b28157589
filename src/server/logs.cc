#include <algorithm>
#include <filesystem>
#include <limits>

#include "base/error.h"
#include "base/files.h"
#include "base/interrupt.h"
#include "base/python_text.h"
#include "base/run.h"
#include "base/unicode.h"
#include "server/commands.h"
#include "server/follow_log.h"

namespace zv::server {
namespace {

namespace fs = std::filesystem;

constexpr std::int64_t LINES = 50;

// None for a negative count, all for one beyond any file.
std::size_t wanted_lines(const Value& lines) {
  if (const auto* count = lines.as<std::int64_t>()) {
    return static_cast<std::size_t>(std::max<std::int64_t>(*count, 0));
  }
  const bool negative = plain_text(lines).starts_with('-');
  return negative ? 0 : std::numeric_limits<std::size_t>::max();
}

void print_last(const fs::path& log, std::size_t count, std::ostream& out) {
  const auto lines = split_lines(replace_invalid(read_file(log)));
  const std::size_t first = lines.size() - std::min(count, lines.size());
  for (std::size_t i = first; i < lines.size(); ++i) out << lines[i] << "\n";
}

void run_tail(const fs::path& log, std::ostream& out) {
  out.flush();
  try {
    run_attached({"tail", "-f", log.string()});
  } catch (const Error&) {  // no such program here
    follow_log(log, out);
  }
}

void follow(const fs::path& log, std::ostream& out) {
  try {
    run_tail(log, out);
  } catch (const Interrupted&) {  // the usual way to stop following
    take_interrupts();
  }
}

void logs(const Args& args, Session& session) {
  const fs::path folder = plain_text(session.engine.load(CONFIG_MODULE, "get_config_dir").call());
  const fs::path log = folder / "logs" / "server.log";
  std::error_code problem;
  if (!fs::exists(log, problem)) {
    if (problem) throw Error(os_error_text(problem.value(), log.string()));
    session.out << "No log file found\n";
  } else if (args.flag("follow")) {
    follow(log, session.out);
  } else {
    print_last(log, wanted_lines(args.value("lines", LINES)), session.out);
  }
}

constexpr Option OPTIONS[] = {
    {.names = "--lines/-n", .kind = Kind::integer, .help = "Number of lines", .fallback = "50"},
    {.names = "--follow/-f", .kind = Kind::flag, .help = "Tail logs"},
};

}  // namespace

constinit const Command LOGS = {
    .name = "logs", .help = "View server logs", .options = OPTIONS, .handler = logs};

}  // namespace zv::server
