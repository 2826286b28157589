#include "base/files.h"
#include "base/interrupt.h"
#include "base/json.h"
#include "base/output_stream.h"
#include "image/image_file.h"
#include "read/commands.h"
#include "read/draw_results.h"
#include "read/expand_inputs.h"
#include "read/output_files.h"
#include "read/process_image.h"

namespace zv::read {
namespace {

namespace fs = std::filesystem;

List texts(const std::vector<fs::path>& files) {
  List texts;
  for (const fs::path& file : files) texts.emplace_back(file.string());
  return texts;
}

// One run over a list of files: what is the same for all of them, and the plates gathered so far.
class Reading {
 public:
  Reading(const Args& args, Session& session, std::vector<fs::path> files)
      : args_(args),
        out_(session.out),
        err_(session.err),
        files_(std::move(files)),
        reader_(session.engine, texts(files_)),
        written_(files_) {}

  void run() {
    out_ << "Processing " << files_.size() << " images | " << args_.text("detector_model") << "/"
         << args_.text("ocr_model") << " | Conf: " << args_.text("confidence") << "\n";
    for (const fs::path& file : files_) read_guarded(file);
    check_interrupt();
    const std::string json = args_.text("json");
    if (!json.empty()) export_json(json);
    check_interrupt();
    out_ << "\nTotal: " << records_.size() << " plates from " << files_.size() << " images\n";
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
    const auto kept = kept_plates(file);
    for (const Plate& plate : kept) records_.emplace_back(plate.record(file));
    print(kept);
    const std::string output = args_.text("output");
    if (!output.empty()) save_annotated(file, kept, output_path(output, file, files_.size()));
  }

  std::vector<Plate> kept_plates(const fs::path& file) {
    auto plates = reader_.process_image(file.string(), args_);
    const double threshold = args_.real("confidence");
    std::erase_if(plates, [&](const Plate& plate) { return !plate.at_least(threshold); });
    return plates;
  }

  void print(const std::vector<Plate>& kept) {
    if (kept.empty()) {
      out_ << "No plates\n";
      return;
    }
    std::string line;
    for (const Plate& plate : kept) line += (line.empty() ? "" : ", ") + plate.label();
    out_ << kept.size() << " plates: " << Foreign{line} << "\n";
  }

  void save_annotated(const fs::path& file, const std::vector<Plate>& kept,
                      const fs::path& target) {
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
      write_file(json, json_indented(records_));  // by its own name, as a pipe has no other
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
  std::vector<fs::path> files_;
  ImageReader reader_;
  WrittenFiles written_;
  List records_;
};

void cmd_read(const Args& args, Session& session) {
  auto files = expand_inputs(args.list("input"), session.out);
  if (files.empty()) {
    session.out << "No valid files\n";
    throw ExitRequest(1);
  }
  Reading(args, session, std::move(files)).run();
}

constexpr std::string_view V17[] = {"v17"};
constexpr std::string_view BACKENDS[] = {"cpu", "cuda", "directml"};
constexpr Option OPTIONS[] = {
    {.names = "input",
     .kind = Kind::list,
     .help = "Input image file(s) or directory",
     .required = true,
     .file = true},
    {.names = "--detector-model",
     .help = "Detector model (320p_fp32, 640p_fp32)",
     .fallback = "640p_fp32"},
    {.names = "--ocr-model", .help = "OCR model (fp32, int8)", .fallback = "fp32"},
    {.names = "--region",
     .help = "Region (eup/na/kr/cn/jp/univ or country code)",
     .fallback = "univ"},
    {.names = "--detector-version",
     .help = "Detector version (default: v17)",
     .fallback = "v17",
     .choices = V17},
    {.names = "--ocr-version",
     .help = "OCR version (default: v17)",
     .fallback = "v17",
     .choices = V17},
    {.names = "--backend",
     .help = "Backend (default: cpu)",
     .fallback = "cpu",
     .choices = BACKENDS},
    {.names = "--confidence",
     .kind = Kind::real,
     .help = "Min confidence threshold (default: 0.5)",
     .fallback = "0.5"},
    {.names = "--output", .help = "Save annotated image", .file = true},
    {.names = "--json", .help = "Save results as JSON", .file = true},
};

}  // namespace

constinit const Command READ = {.name = "read", .options = OPTIONS, .handler = cmd_read};

}  // namespace zv::read
