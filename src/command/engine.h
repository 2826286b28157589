// Engine: the engine package as the front end needs it, loaded when the program starts.
#pragma once

#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "python/object.h"

namespace zv {

// The names that must exist for the program to start, in the order in which they are loaded.
std::vector<std::string> engine_names();

class Engine {
 public:
  // Starts the interpreter and returns at once. Throws Error when it cannot be started.
  Engine(const std::string& interpreter, std::ostream& out);

  // A crash took the interpreter away: starts another. Objects of the old one are of no use then;
  // true tells their owner.
  bool revived();
  // For commands that want no more than the version: spares the interpreter a wait.
  void expect_no_calls() { host().expect_no_calls(); }
  // Waits until the names are loaded. Throws python::LoadError.
  void wait_loaded();
  const std::string& version();
  // The interpreter's own path, for child processes.
  const std::string& python();

  python::Object detector_class();
  python::Object ocr_class();
  python::Object from_image_file();
  python::Object to_internal_region();
  // The door by which an engine is told of photos beforehand; most packages have none.
  std::optional<python::Object> expect_image_files();
  // A name from one of the package's further modules, loaded when asked for. Throws PythonError.
  python::Object load(std::string_view module, std::string_view name);
  // Fails as `load` does when one of the names, separated by ", ", is not there.
  void require(std::string_view module, std::string_view names) { load(module, names); }

 private:
  python::Object named(std::size_t index);

  python::Host& host() { return *hosts_.back(); }

  std::string interpreter_;
  std::ostream& out_;
  // The last one serves; those before it are dead, and outlive the objects that point at them.
  std::vector<std::unique_ptr<python::Host>> hosts_;
  std::vector<python::Object> named_;  // kept for the whole run
};

}  // namespace zv
