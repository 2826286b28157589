// The report of gpu-info below its first lines.
#pragma once

#include <ostream>
#include <string>

#include "runtime/backend_facts.h"

namespace zv::runtime {

void print_backend_report(const BackendFacts& facts, const std::string& system, std::ostream& out);

}  // namespace zv::runtime
