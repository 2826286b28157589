// One image through the engine. The only place that uses the engine's recognition classes.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "command/command.h"
#include "python/object.h"
#include "read/plate.h"

namespace zv::read {

// Holds the engine's objects of one run. They are built for the first image and used for all.
class ImageReader {
 public:
  // `images` are those that will be asked for, in this order: an engine that wants to know of them
  // beforehand is told.
  ImageReader(Engine& engine, List images) : engine_(engine), images_(std::move(images)) {}

  // The plates in the engine's order. Any failure is an Error with the text of the engine's
  // exception.
  std::vector<Plate> process_image(const std::string& image_path, const Args& args);

 private:
  void forget();
  python::Object translated_region(const Args& args);
  python::Object detector(const Args& args);
  python::Object ocr(const Args& args);
  void tell_of_images(const Args& args, std::ptrdiff_t place);

  Engine& engine_;
  List images_;
  std::ptrdiff_t asked_ = 0;
  bool told_ = false;
  std::optional<python::Object> region_;
  std::optional<python::Object> detector_;
  std::optional<python::Object> ocr_;
};

}  // namespace zv::read
