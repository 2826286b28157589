#include <algorithm>
#include <array>

#include "harness.h"

namespace zv::fuzz {
namespace {

constexpr std::array<Target, 15> TARGETS{{
    {"jpeg", jpeg},
    {"png", png},
    {"bmp", bmp},
    {"tiff", tiff},
    {"encoders", encoders},
    {"orientation", orientation},
    {"labels", labels},
    {"json", json},
    {"wire", wire},
    {"http", http},
    {"url", url},
    {"glob", glob},
    {"unicode", unicode},
    {"numbers", numbers},
    {"command_line", command_line},
}};

}  // namespace

std::span<const Target> targets() {
  return TARGETS;
}

const Target* find_target(std::string_view name) {
  const auto* found = std::find_if(TARGETS.begin(), TARGETS.end(),
                                   [name](const Target& target) { return target.name == name; });
  return found == TARGETS.end() ? nullptr : found;
}

}  // namespace zv::fuzz
