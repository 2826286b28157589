#include "command/engine.h"

namespace zv {
namespace {

enum Name : std::size_t {
  DETECTOR,
  OCR,
  FROM_IMAGE_FILE,
  VERSION,
  TO_API_REGION,
  TO_INTERNAL_REGION,
  EXPECT_IMAGE_FILES
};

}  // namespace

std::vector<std::string> engine_names() {
  return {"zelvoran_anpr:zv_anpr_detector_v17",
          "zelvoran_anpr:zv_anpr_ocr_v17",
          "zelvoran_anpr:zelvoran_anpr_from_image_file",
          "zelvoran_anpr._version:__version__",
          "zelvoran_anpr.region_aliases:to_api_region",
          "zelvoran_anpr.region_aliases:to_internal_region",
          "zelvoran_anpr:zelvoran_anpr_expect_image_files?"};
}

Engine::Engine(const std::string& interpreter, std::ostream& out)
    : interpreter_(interpreter), out_(out) {
  hosts_.push_back(std::make_unique<python::Host>(interpreter_, engine_names(), out_));
}

bool Engine::revived() {
  if (!host().ended()) return false;
  named_.clear();
  hosts_.push_back(std::make_unique<python::Host>(interpreter_, engine_names(), out_));
  return true;
}

void Engine::wait_loaded() {
  if (!named_.empty()) return;
  for (const Reference& name : host().hello().names) {
    named_.emplace_back(host(), python::Kept{name, name});
  }
}

const std::string& Engine::version() {
  return host().hello().version;
}

const std::string& Engine::python() {
  return host().hello().executable;
}

python::Object Engine::detector_class() {
  return named(DETECTOR);
}

python::Object Engine::ocr_class() {
  return named(OCR);
}

python::Object Engine::from_image_file() {
  return named(FROM_IMAGE_FILE);
}

python::Object Engine::to_internal_region() {
  return named(TO_INTERNAL_REGION);
}

std::optional<python::Object> Engine::expect_image_files() {
  python::Object door = named(EXPECT_IMAGE_FILES);
  if (host().hello().names.at(EXPECT_IMAGE_FILES).id == 0) return std::nullopt;
  return door;
}

python::Object Engine::load(std::string_view module, std::string_view name) {
  return python::Object::import(host(), module, name);
}

python::Object Engine::named(std::size_t index) {
  wait_loaded();
  return named_.at(index);
}

}  // namespace zv
