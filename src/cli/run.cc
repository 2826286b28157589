#include "cli/run.h"

#include "base/interrupt.h"
#include "cli/command_table.h"
#include "cli/documents.h"
#include "cli/parse.h"
#include "python/find_interpreter.h"

namespace zv::cli {
namespace {

constexpr int FAILED = 1;
constexpr int MISUSED = 2;

std::string chosen_interpreter(std::ostream& err) {
  const python::Found found = python::find_interpreter(python::real_surroundings());
  if (!found.interpreter.empty()) {
    if (!found.hint.empty()) {
      err << "zv-anpr: " << found.hint << "; using " << found.interpreter << "\n";
    }
    return found.interpreter;
  }
  std::string places;
  for (const std::string& place : found.tried) places += (places.empty() ? "" : ", ") + place;
  throw python::LoadError("no Python interpreter found; looked at: " + places +
                          "; set ZV_ANPR_PYTHON to the one that has the package");
}

std::string load_advice(const python::LoadError& error, const std::string& interpreter) {
  return std::string("the engine package does not load: ") + error.what() + " (interpreter " +
         interpreter + "; install it with: " + interpreter + " -m pip install zelvoran-anpr)";
}

// Everything inside is guarded: a handler's failure becomes one line on standard output.
int call_handler(const Parsed& parsed, Session& session) {
  try {
    parsed.command->handler(parsed.args, session);
    return 0;
  } catch (const Interrupted&) {
    take_interrupts();
    session.out << "\nOperation cancelled.\n";
  } catch (const ExitRequest& request) {
    return request.status;
  } catch (const std::exception& error) {
    session.out << "Error: " << error.what() << "\n";
  }
  return FAILED;
}

bool calls_engine(const Outcome& outcome) {
  const auto* parsed = std::get_if<Parsed>(&outcome);
  return parsed && parsed->command && parsed->command->calls_engine;
}

int act(const Outcome& outcome, Session& session) {
  if (const auto* wanted = std::get_if<HelpWanted>(&outcome)) {
    session.out << help_page(wanted->path, help_width());
    return 0;
  }
  if (std::holds_alternative<VersionWanted>(outcome)) {
    session.out << version_line(session.engine) << "\n";
    return 0;
  }
  if (const auto* error = std::get_if<UsageError>(&outcome)) {
    session.err << usage(error->path, help_width()) << program_name(error->path)
                << ": error: " << error->message << "\n";
    return MISUSED;
  }
  const auto& parsed = std::get<Parsed>(outcome);
  if (parsed.command) return call_handler(parsed, session);
  session.out << help_page({&program()}, help_width());
  return 0;
}

}  // namespace

int run(const std::vector<std::string>& words, std::ostream& out, std::ostream& err,
        std::istream& in) {
  const InterruptScope interrupts;
  std::string interpreter;
  try {
    interpreter = chosen_interpreter(err);
    Engine engine(interpreter, out);
    const Outcome outcome = parse(program(), with_read(words));
    if (!calls_engine(outcome)) engine.expect_no_calls();
    engine.wait_loaded();
    Session session{out, err, in, engine};
    const int status = act(outcome, session);
    out.flush();
    return status;
  } catch (const python::LoadError& error) {
    err << "zv-anpr: " << (interpreter.empty() ? error.what() : load_advice(error, interpreter))
        << "\n";
  } catch (const Interrupted&) {
    out << "\nOperation cancelled.\n";
  } catch (const std::exception& error) {
    err << "zv-anpr: " << error.what() << "\n";
  }
  return FAILED;
}

}  // namespace zv::cli
