// The JSON of the bridge: plain values as they are, {"$...": ...} for what JSON cannot carry.
#pragma once

#include <string>
#include <string_view>

#include "base/error.h"
#include "base/value.h"

namespace zv::python {

// What is said of an answer that is none.
inline constexpr const char* NO_ANSWER =
    "the engine process sent something that is no answer of its bridge";

// A part of an answer that has to be of this kind. Throws Error.
template <class T>
const T& expected(const Value& value) {
  const T* found = value.as<T>();
  if (!found) throw Error(NO_ANSWER);
  return *found;
}

// Turns the host's tagged JSON back into values. Throws Error.
Value read_answer(std::string_view line);

}  // namespace zv::python
