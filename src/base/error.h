// The few exception types of the program; they become text in one place, cli/run.cc.
#pragma once

#include <stdexcept>
#include <string>

namespace zv {

// An ordinary failure whose message is fit to be shown to the user. May be empty.
class Error : public std::runtime_error {
 public:
  explicit Error(const std::string& message) : std::runtime_error(message) {}
};

// The user pressed Ctrl+C. Deliberately no std::exception: guards for ordinary failures let it
// pass.
class Interrupted {};

// A handler asks for the end of the process with a status of its own.
class ExitRequest {
 public:
  explicit ExitRequest(int exit_status) : status(exit_status) {}
  int status;
};

// "[Errno 13] Permission denied: 'path'", the field's usual wording of an OS failure.
std::string os_error_text(int error_number, const std::string& path = {});

}  // namespace zv
