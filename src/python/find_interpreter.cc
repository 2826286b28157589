#include "python/find_interpreter.h"

#include <cstdlib>

#include "base/system.h"

namespace zv::python {
namespace {

class Search {
 public:
  explicit Search(const Surroundings& surroundings) : surroundings_(surroundings) {}

  // A path as it is; a bare name through PATH.
  void program(const std::string& label, const std::string& name) {
    if (name.find_first_of("/\\") != std::string::npos) {
      look(label, name);
    } else {
      on_path(label, name);
    }
  }

  void folder(const std::string& label, const std::string& folder) {
    for (const std::string& name : interpreter_names()) look(label, folder + "/" + name);
  }

  void on_path(const std::string& label, const std::string& name) {
    if (done()) return;
    std::string rest = surroundings_.variable("PATH").value_or("");
    while (!rest.empty() && !done()) {
      const auto end = rest.find(path_list_separator());
      const std::string entry = rest.substr(0, end);
      if (!entry.empty() && runnable(entry + "/" + name)) found.interpreter = entry + "/" + name;
      rest = end == std::string::npos ? "" : rest.substr(end + 1);
    }
    if (!done()) found.tried.push_back(label + " (" + name + ")");
  }

  bool done() const { return !found.interpreter.empty(); }

  Found found;

 private:
  void look(const std::string& label, const std::string& path) {
    if (done()) return;
    if (runnable(path)) {
      found.interpreter = path;
    } else {
      found.tried.push_back(label + " (" + path + ")");
    }
  }

  const Surroundings& surroundings_;
};

}  // namespace

Surroundings real_surroundings() {
  return {[](const std::string& name) -> std::optional<std::string> {
            const char* value = std::getenv(name.c_str());
            return value && *value ? std::optional<std::string>(value) : std::nullopt;
          },
          program_folder()};
}

Found find_interpreter(const Surroundings& surroundings) {
  Search search(surroundings);
  if (const auto chosen = surroundings.variable("ZV_ANPR_PYTHON")) {
    search.program("ZV_ANPR_PYTHON", *chosen);
    if (!search.done()) search.found.hint = "ZV_ANPR_PYTHON names no program: " + *chosen;
  }
  if (!surroundings.executable_folder.empty()) {
    search.folder("beside the program", surroundings.executable_folder);
  }
  for (const char* name : {"VIRTUAL_ENV", "CONDA_PREFIX"}) {
    const auto environment = surroundings.variable(name);
    if (environment) search.folder(name, scripts_folder(*environment));
  }
  search.on_path("PATH", interpreter_names()[1]);
  search.on_path("PATH", interpreter_names()[0]);
  return std::move(search.found);
}

}  // namespace zv::python
