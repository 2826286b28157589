// Where the system keeps programs: the part of the search that differs between systems.
#pragma once

#include <string>
#include <vector>

namespace zv::python {

// The folder of the running program, links resolved; empty when it cannot be told.
std::string program_folder();
// "python", "python3" as files are named here.
std::vector<std::string> interpreter_names();
// The folder of an environment that holds its interpreter ("bin").
std::string scripts_folder(const std::string& environment);
char path_list_separator();
bool runnable(const std::string& path);

}  // namespace zv::python
