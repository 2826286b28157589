#include "read/plate.h"

#include <array>

#include "base/error.h"
#include "base/python_number.h"
#include "base/python_text.h"

namespace zv::read {
namespace {

// The engine may report percentages: what is greater than 1 is one.
Value fraction(const python::Object& plate, const char* key) {
  const Value number = plate.get(key, 0);
  const Value again = plate.get(key, 0);  // engines may count: the second answer is the one kept
  return greater(number, 1) ? Value(divide(again, 100.0)) : again;
}

}  // namespace

Plate::Plate(const python::Object& found) {
  record_.set("ocr_text", found.get("ocr", ""));
  record_.set("ocr_conf", fraction(found, "ocr_conf"));
  record_.set("bbox", found.get("ltrb", List()));
  record_.set("bbox_conf", fraction(found, "ltrb_conf"));
}

bool Plate::at_least(double confidence) const {
  return greater_equal(get(record_, "ocr_conf", 0), confidence);
}

std::string Plate::label() const {
  return plain_text(get(record_, "ocr_text", "N/A")) + " (" +
         fixed_text(get(record_, "ocr_conf", 0.0), 2) + ")";
}

image::Rectangle Plate::box() const {
  const Value* bbox = record_.find("bbox");
  if (bbox == nullptr) throw Error("'bbox'");
  const List* corners = bbox->as<List>();
  if (corners == nullptr) throw Error("bbox " + quoted_text(*bbox) + " is not a list of numbers");
  std::array<std::int64_t, 4> edges{};
  for (std::size_t i = 0; i < edges.size(); ++i) {
    if (i >= corners->size()) throw Error("list index out of range");
    edges[i] = truncate((*corners)[i]);
  }
  return {edges[0], edges[1], edges[2], edges[3]};
}

Map Plate::record(const std::filesystem::path& photo) const {
  Map record = record_;
  record.set("filename", photo.string());
  return record;
}

}  // namespace zv::read
