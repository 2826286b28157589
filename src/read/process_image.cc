#include "read/process_image.h"

#include "base/arithmetic.h"

namespace zv::read {
namespace {

Map backend_of(const Args& args) {
  return {{"backend", args.value("backend", "cpu")}};
}

// The engine may report percentages: what is greater than 1 is one.
Value normalised(const python::Object& plate, const char* key) {
  const auto look_up = [&] { return plate.call_method("get", {key, 0}); };
  if (greater(look_up(), 1)) return divide(look_up(), 100.0);
  return look_up();
}

Map record_of(const python::Object& plate) {
  Map record;
  record.set("ocr_text", plate.call_method("get", {"ocr", ""}));
  record.set("ocr_conf", normalised(plate, "ocr_conf"));
  record.set("bbox", plate.call_method("get", {"ltrb", List()}));
  record.set("bbox_conf", normalised(plate, "ltrb_conf"));
  return record;
}

}  // namespace

List ImageReader::process_image(const std::string& image_path, const Args& args) {
  if (engine_.revived()) forget();
  translated_region(args);
  const python::Object answer =
      engine_.from_image_file().make({detector(args), ocr(args), image_path});
  if (!answer.truthy() || !answer.contains("results")) return {};
  List records;
  for (const python::Object& plate : answer.item("results").elements()) {
    records.push_back(record_of(plate));
  }
  return records;
}

void ImageReader::forget() {
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
