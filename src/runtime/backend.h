// What gpu-info knows after its probes, and its report of it.
#pragma once

#include <cstdint>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "runtime/environment.h"

namespace zv::runtime {

struct BackendFacts {
  std::optional<std::string> pillow;  // its version, when it could be told
  bool runtime_imports = false;
  std::string runtime_version;
  std::optional<std::vector<std::string>> providers;  // nothing: they cannot be listed
  std::string cuda_version;                           // "12.4"; empty when nobody tells
  std::optional<std::string> tensorrt;                // the module's version, when it loads
  Conflict conflict;

  bool lists(const std::string& provider) const;
};

// Takes about as long as the slowest of its probes. Only Ctrl+C gets out of it.
BackendFacts gather_facts(Engine& engine);

// Everything below the first lines.
void print_backend_report(const BackendFacts& facts, const std::string& system, std::ostream& out);

// 12040 is "12.4".
std::string cuda_version_text(std::int64_t version);

}  // namespace zv::runtime
