#include "runtime/switch_note.h"

#include <filesystem>

#include "base/error.h"
#include "base/files.h"

namespace zv::runtime {
namespace {

constexpr const char* FILE_NAME = "/.zv-anpr-gpu-setup";
constexpr const char* CONTENT = "zv-anpr gpu-setup is changing packages here, or was cut off.\n";

}  // namespace

SwitchNote::SwitchNote(Engine& engine) : path_(engine.load("sys", "prefix").text() + FILE_NAME) {
  found_ = present();
}

bool SwitchNote::present() const {
  std::error_code error;
  return std::filesystem::exists(path_, error);
}

void SwitchNote::write() const {
  if (found_) return;  // its time tells when the first of the interrupted runs began
  try {
    write_file(path_, CONTENT);
  } catch (const Error&) {
    return;
  }
}

void SwitchNote::remove() const {
  std::error_code error;
  std::filesystem::remove(path_, error);
}

}  // namespace zv::runtime
