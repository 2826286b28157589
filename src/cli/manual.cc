#include "cli/documents.h"
#include "cli/options.h"

namespace zv::cli {
namespace {

constexpr std::string_view INTRODUCTION = R"(.SH NAME
zv\-anpr \- read licence plates on photos, and run the local recognition server
.SH SYNOPSIS
.B zv\-anpr
.I photo
\&...
.RI [ option " ...]"
.br
.B zv\-anpr
.I command
.RI [ option " ...]"
.SH DESCRIPTION
Finds the licence plates on photos and reads them, on this computer.
The first form is short for
.BR "zv\-anpr read" .
A long option may be shortened as long as it stays unambiguous.
Its value may follow after a blank or after "=".
Options may stand between other arguments; after "\-\-" nothing is an option.
.SH COMMANDS
)";

constexpr std::string_view CLOSING = R"(.SH ENVIRONMENT
.TP
.B ZV_ANPR_PYTHON
The Python interpreter whose engine package is used,
instead of the one beside the program.
.TP
.BR VIRTUAL_ENV ", " CONDA_PREFIX ", " PATH
Where an interpreter is looked for next, in this order.
.TP
.B ZELVORAN_CONFIG_DIR
The folder of the server's configuration, token and log; by default
.IR ~/.zelvoran .
.TP
.B COLUMNS
The width of help pages.
.SH EXIT STATUS
.TP
.B 0
Done.
.TP
.B 1
Something failed, or Ctrl+C was pressed; a line says what.
.TP
.B 2
The command line was not understood.
.SH FILES
.TP
.I ~/.zelvoran/server_config.yaml
What the server starts with.
.TP
.I ~/.zelvoran/logs/server.log
What a background server has to say.
.TP
.I ~/.zelvoran/models/vlm
The vision\-language model for make, model and colour.
.SH EXAMPLES
.nf
zv\-anpr car.jpg
zv\-anpr read photos \-\-json plates.json \-\-output annotated
zv\-anpr server start \-\-daemon
zv\-anpr server detect car.jpg \-\-region kr
.fi
)";

// A dash that is typed, a backslash, and a line that would begin a request.
std::string escaped(std::string_view text) {
  std::string out;
  for (const char letter : text) {
    const bool line_start = out.empty() || out.back() == '\n';
    if (line_start && (letter == '.' || letter == '\'')) out += "\\&";
    if (letter == '\\') {
      out += "\\e";
    } else if (letter == '-') {
      out += "\\-";
    } else {
      out += letter;
    }
  }
  return out;
}

std::string option_entry(const Option& option) {
  std::string head;
  for (const std::string& name : names_of(option)) {
    head += (head.empty() ? "\\fB" : ", \\fB") + escaped(name) + "\\fR";
    if (!option.positional() && takes_value(option))
      head += " \\fI" + escaped(metavar(option)) + "\\fR";
  }
  if (option.positional() && !option.choices.empty()) head += " " + escaped(metavar(option));
  return ".TP\n" + head + "\n" + escaped(option.help) + "\n";
}

std::string listing(const std::string& text) {
  return ".PP\n.nf\n" + text + (text.ends_with('\n') ? "" : "\n") + ".fi\n";
}

// The program itself is what the whole page is about: only its own options are listed.
std::string command_entry(const CommandPath& path) {
  const Command& command = *path.back();
  std::string text = ".SS \"" +
                     escaped(path.size() == 1 ? "options without a command" : typed_path(path)) +
                     "\"\n";
  if (!command.help.empty()) text += escaped(command.help) + ".\n";
  if (const Option* positional = positional_at(path)) text += option_entry(*positional);
  for (const Option* option : options_at(path)) text += option_entry(*option);
  if (command.epilog) {
    const std::string epilog = command.epilog();
    text += listing(escaped(epilog.substr(epilog.find_first_not_of('\n'))));
  }
  return text;
}

}  // namespace

std::string manual_page(const Command& program, std::string_view version) {
  std::string page = ".TH ZV\\-ANPR 1 \"\" \"zv\\-anpr " + std::string(version) + "\"\n";
  page += INTRODUCTION;
  for (const CommandPath& path : command_paths(program)) page += command_entry(path);
  return page.append(CLOSING);
}

}  // namespace zv::cli
