// A harness hands bytes of anybody's to one parser. A result and an Error are right; anything else
// that escapes, and a result that breaks what the parser promises, ends the process.
#pragma once

#include <cstdio>
#include <cstdlib>
#include <span>
#include <string_view>
#include <typeinfo>

#include "base/error.h"

namespace zv::fuzz {

using Harness = void (*)(std::string_view input);

struct Target {
  std::string_view name;
  Harness harness;
};

// All of them, under the names of the folders that hold their inputs.
std::span<const Target> targets();
// nullptr for an unknown name.
const Target* find_target(std::string_view name);

inline void promise(bool kept, const char* what) {
  if (kept) return;
  std::fprintf(stderr, "broken promise: %s\n", what);
  std::abort();
}

// Whether `step` came to its end, and not to an Error of one line.
template <class Step>
bool succeeds(Step step) {
  try {
    step();
    return true;
  } catch (const Error& error) {
    promise(std::string_view(error.what()).find('\n') == std::string_view::npos, "one line");
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s: %s\n", typeid(error).name(), error.what());
    promise(false, "an Error for bad input");
  }
  return false;
}

void jpeg(std::string_view input);
void png(std::string_view input);
void bmp(std::string_view input);
void tiff(std::string_view input);
void encoders(std::string_view input);
void orientation(std::string_view input);
void labels(std::string_view input);
void json(std::string_view input);
void wire(std::string_view input);
void http(std::string_view input);
void url(std::string_view input);
void glob(std::string_view input);
void unicode(std::string_view input);
void numbers(std::string_view input);
void command_line(std::string_view input);

}  // namespace zv::fuzz
