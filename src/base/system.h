// What operating systems name and keep differently.
#pragma once

#include <string>
#include <vector>

namespace zv {

// "Linux", "Darwin", "Windows", ..., as the engine's language knows it.
std::string system_name();
// The folder of the running program, links resolved; empty when it cannot be told.
std::string program_folder();
// "python", "python3" as files are named here.
std::vector<std::string> interpreter_names();
// The folder of an environment that holds its interpreter ("bin").
std::string scripts_folder(const std::string& environment);
char path_list_separator();
bool runnable(const std::string& path);

}  // namespace zv
