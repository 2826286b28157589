// What kind of failure of a network operation a message stands for, when more is known than its
// text.
#pragma once

namespace zv {

enum class NetworkFailure { other, name_resolution, time_out, refused };

}  // namespace zv
