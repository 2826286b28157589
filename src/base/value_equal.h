// Whether two values are the same to a person: numbers by their value, maps whatever their order.
#pragma once

#include "base/value.h"

namespace zv {

bool equal(const Value& left, const Value& right);

}  // namespace zv
