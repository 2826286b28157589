// One plate of a photo: the engine's word on it as the program shows, draws and writes it.
#pragma once

#include <filesystem>
#include <string>

#include "base/value.h"
#include "image/canvas.h"
#include "python/object.h"

namespace zv::read {

class Plate {
 public:
  // From a plate of the engine's answer. Throws Error where a confidence is no number.
  explicit Plate(const python::Object& found);
  // From a record {ocr_text, ocr_conf, bbox, bbox_conf}, any of which may be missing.
  explicit Plate(Map record) : record_(std::move(record)) {}

  bool at_least(double confidence) const;
  // "12AB3456 (0.98)"
  std::string label() const;
  // Cut towards zero. Throws Error unless the engine's are four numbers.
  image::Rectangle box() const;

  // As in the JSON file: the engine's own numbers and texts, and the photo as the last entry.
  Map record(const std::filesystem::path& photo) const;

 private:
  Map record_;
};

}  // namespace zv::read
