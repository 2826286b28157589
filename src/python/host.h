// The resident engine host: one Python process that this program uses one call at a time.
#pragma once

#include <map>
#include <memory>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "base/child.h"
#include "base/error.h"
#include "base/value.h"

namespace zv::python {

// An exception raised in the host; its message is the exception's text, which may be empty.
class PythonError : public Error {
 public:
  PythonError(std::string type_name, const std::string& text, bool of_import)
      : Error(text), type(std::move(type_name)), import_error(of_import) {}
  std::string type;
  bool import_error;
};

// The names asked for at the start cannot be loaded, or the interpreter does not answer.
class LoadError : public Error {
 public:
  using Error::Error;
};

struct Hello {
  std::string executable;        // the interpreter's own path
  std::string version;           // of the engine package
  std::vector<Reference> names;  // 0 where a name that may be missing is
};

// An object that stays in the host, and what is known of it here: a Reference where it is of no
// kind of Python's own.
struct Kept {
  Reference object;
  Value copy;
};

class Host {
 public:
  // Starts the interpreter and returns at once; `out` is flushed before every hand-over, so that
  // text of both sides keeps its order. `names` are "module:attribute",
  // with a "?" at the end where the attribute may be missing.
  Host(const std::string& interpreter, const std::vector<std::string>& names, std::ostream& out);
  ~Host();
  Host(const Host&) = delete;
  Host& operator=(const Host&) = delete;

  // Waits for the first answer. Throws LoadError.
  const Hello& hello();

  bool ended() const { return child_.exit().has_value(); }

  // No call will be made: the interpreter may end as soon as it has said hello.
  void expect_no_calls();

  // The module itself when `name` is empty.
  Kept import(std::string_view module, std::string_view name);
  // One of Python's own functions; asked for once.
  Reference builtin(const std::string& module, const std::string& name);
  Value call(Reference function, List arguments, Map keywords);
  Kept call_keep(Reference function, List arguments, Map keywords);
  Value value(Reference object);
  // The object is let go with the next request.
  void drop(Reference reference) { dropped_.push_back(reference); }

 private:
  Value request(Map request);
  Map answer();
  std::string next_line();
  [[noreturn]] void give_up();

  Child child_;
  std::ostream& out_;
  std::string interpreter_;
  std::unique_ptr<Hello> hello_;
  std::vector<Reference> dropped_;
  std::map<std::pair<std::string, std::string>, Reference> builtins_;
};

}  // namespace zv::python
