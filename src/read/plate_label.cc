#include "read/plate_label.h"

#include "base/arithmetic.h"
#include "base/error.h"
#include "base/value_text.h"

namespace zv::read {
namespace {

image::Rectangle box_of(const Map& record) {
  const Value* bbox = record.find("bbox");
  if (bbox == nullptr) throw Error("'bbox'");
  const List* corners = bbox->as<List>();
  if (corners == nullptr) throw Error("bbox " + quoted_text(*bbox) + " is not a list of numbers");
  std::int64_t edges[4];
  for (std::size_t i = 0; i < 4; ++i) {
    if (i >= corners->size()) throw Error("list index out of range");
    edges[i] = truncate((*corners)[i]);
  }
  return {edges[0], edges[1], edges[2], edges[3]};
}

}  // namespace

PlateLabel plate_label(const Value& record) {
  const Map* fields = record.as<Map>();
  if (fields == nullptr) throw Error("result " + quoted_text(record) + " is not a record");
  const image::Rectangle box = box_of(*fields);
  return {box, plain_text(get(*fields, "ocr_text", "N/A")) + " (" +
                   fixed_text(get(*fields, "ocr_conf", 0.0), 2) + ")"};
}

}  // namespace zv::read
