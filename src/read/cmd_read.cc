#include "read/cmd_read.h"

#include "base/arithmetic.h"
#include "base/files.h"
#include "base/interrupt.h"
#include "base/json.h"
#include "base/output_stream.h"
#include "base/value_text.h"
#include "image/image_file.h"
#include "read/draw_results.h"
#include "read/expand_inputs.h"
#include "read/output_files.h"
#include "read/process_image.h"

namespace zv::read {
namespace {

namespace fs = std::filesystem;

// One run over a list of files: what is the same for all of them, and the plates gathered so far.
class Reading {
 public:
  Reading(const Args& args, Session& session, std::vector<fs::path> files)
      : args_(args),
        out_(session.out),
        err_(session.err),
        reader_(session.engine),
        files_(std::move(files)),
        written_(files_) {}

  void run() {
    out_ << "Processing " << files_.size() << " images | " << args_.text("detector_model") << "/"
         << args_.text("ocr_model") << " | Conf: " << args_.text("confidence") << "\n";
    for (const fs::path& file : files_) read_guarded(file);
    check_interrupt();
    const std::string json = args_.text("json");
    if (!json.empty()) export_json(json);
    check_interrupt();
    out_ << "\nTotal: " << plates_.size() << " plates from " << files_.size() << " images\n";
  }

 private:
  void read_guarded(const fs::path& file) {
    try {
      check_interrupt();
      read(file);
    } catch (const std::exception& error) {
      out_ << "Error: " << error.what() << "\n";
    }
  }

  void read(const fs::path& file) {
    out_ << Foreign{file.filename().string()} << ": ";
    const List kept = kept_plates(reader_.process_image(file.string(), args_), file);
    plates_.insert(plates_.end(), kept.begin(), kept.end());
    print(kept);
    const std::string output = args_.text("output");
    if (!output.empty()) save_annotated(file, kept, output_path(output, file, files_.size()));
  }

  List kept_plates(const List& records, const fs::path& file) const {
    List kept;
    for (const Value& record : records) {
      Map plate = *record.as<Map>();
      if (!greater_equal(get(plate, "ocr_conf", 0), args_.value("confidence"))) continue;
      plate.set("filename", file.string());
      kept.emplace_back(std::move(plate));
    }
    return kept;
  }

  void print(const List& kept) {
    if (kept.empty()) {
      out_ << "No plates\n";
      return;
    }
    std::string line;
    for (const Value& record : kept) {
      const Map& plate = *record.as<Map>();
      line += (line.empty() ? "" : ", ") + plain_text(get(plate, "ocr_text", "N/A")) + " (" +
              fixed_text(get(plate, "ocr_conf", 0), 2) + ")";
    }
    out_ << kept.size() << " plates: " << Foreign{line} << "\n";
  }

  void save_annotated(const fs::path& file, const List& kept, const fs::path& target) {
    const image::Photo photo = image::decode_file(file);
    image::encode_file(draw_results(photo.picture, kept), target);
    out_ << "  → Saved: " << Foreign{target.filename().string()} << "\n";
    note_overwriting(target, "the annotated copy of " + file.string());
    if (photo.damage.empty()) return;
    err_ << "zv-anpr: " << Foreign{file.string()} << ": " << photo.damage
         << "; the annotated copy shows what could be read\n";
  }

  void note_overwriting(const fs::path& target, const std::string& content) {
    const std::string note = written_.add(target, content);
    if (!note.empty()) err_ << Foreign{note} << "\n";
  }

  void export_json(const std::string& json) {
    try {
      const fs::path target = resolved(json);
      write_file(json, json_indented(plates_));  // by its own name, as a pipe has no other
      out_ << "\nResults saved to: " << Foreign{target.string()} << "\n";
      note_overwriting(target, "the JSON results");
    } catch (const std::exception& error) {
      err_ << "zv-anpr: " << error.what() << "\n";
      out_ << "\nError: Failed to save JSON results\n";
    }
  }

  const Args& args_;
  std::ostream& out_;
  std::ostream& err_;
  ImageReader reader_;
  std::vector<fs::path> files_;
  WrittenFiles written_;
  List plates_;
};

}  // namespace

void cmd_read(const Args& args, Session& session) {
  auto files = expand_inputs(args.list("input"), session.out);
  if (files.empty()) {
    session.out << "No valid files\n";
    throw ExitRequest(1);
  }
  Reading(args, session, std::move(files)).run();
}

}  // namespace zv::read
