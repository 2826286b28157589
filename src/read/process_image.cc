#include "read/process_image.h"

#include <algorithm>
#include <iterator>

namespace zv::read {
namespace {

Map backend_of(const Args& args) {
  return {{"backend", args.value("backend", "cpu")}};
}

}  // namespace

std::vector<Plate> ImageReader::process_image(const std::string& image_path, const Args& args) {
  if (engine_.revived()) forget();
  const std::ptrdiff_t place = asked_++;
  translated_region(args);
  if (!told_) tell_of_images(args, place);
  const python::Object answer =
      engine_.from_image_file().make({detector(args), ocr(args), image_path});
  if (!answer.truthy() || !answer.contains("results")) return {};
  std::vector<Plate> plates;
  for (const python::Object& found : answer.item("results").elements()) plates.emplace_back(found);
  return plates;
}

// With the objects that reading will use. What goes wrong here goes wrong for the photo as well, or
// does not matter.
void ImageReader::tell_of_images(const Args& args, std::ptrdiff_t place) {
  const python::Object finds = detector(args);
  const python::Object reads = ocr(args);
  told_ = true;
  const auto door = engine_.expect_image_files();
  const List to_come(images_.begin() + std::min<std::ptrdiff_t>(place, std::ssize(images_)),
                     images_.end());
  if (!door || to_come.size() < 2) return;
  try {
    door->call({finds, reads, to_come});
  } catch (const python::PythonError&) {  // the photos are read one by one, then
  }
}

void ImageReader::forget() {
  told_ = false;
  region_.reset();
  detector_.reset();
  ocr_.reset();
}

python::Object ImageReader::translated_region(const Args& args) {
  if (!region_) region_ = engine_.to_internal_region().make({args.value("region", "univ")});
  return *region_;
}

python::Object ImageReader::detector(const Args& args) {
  if (!detector_) {
    const Value model = args.value("detector_model", "640p_fp32");
    detector_ = engine_.detector_class().make({model}, backend_of(args));
  }
  return *detector_;
}

python::Object ImageReader::ocr(const Args& args) {
  if (!ocr_) {
    const Value model = args.value("ocr_model", "fp32");
    ocr_ = engine_.ocr_class().make({model, translated_region(args)}, backend_of(args));
  }
  return *ocr_;
}

}  // namespace zv::read
