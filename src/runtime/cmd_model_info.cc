#include <array>
#include <string>
#include <string_view>
#include <utility>

#include "runtime/commands.h"

namespace zv::runtime {
namespace {

constexpr std::array<std::string_view, 2> DETECTOR_MODELS = {"320p_fp32", "640p_fp32 (default)"};
constexpr std::array<std::string_view, 2> OCR_MODELS = {"fp32 (default)", "int8"};
constexpr std::array<std::pair<std::string_view, std::string_view>, 6> REGIONS = {{
    {"eup", "Europe+ (EU, ex-USSR, Asia, Africa, Oceania, UK)"},
    {"na", "North America (US, CA, MX)"},
    {"kr", "Korea"},
    {"cn", "China"},
    {"jp", "Japan"},
    {"univ", "Universal (default)"},
}};
constexpr std::string_view BACKENDS =
    "    cpu        Default, all platforms\n"
    "    cuda       NVIDIA GPU (requires onnxruntime-gpu)\n"
    "    directml   Windows GPU (requires onnxruntime-directml)\n";
constexpr std::string_view EXAMPLES =
    "  zv-anpr photo.jpg\n"
    "  zv-anpr photo.jpg --region kr\n"
    "  zv-anpr photo.jpg --detector-model 320p_fp32 --ocr-model fp32\n"
    "  zv-anpr photo.jpg --backend cuda\n"
    "  zv-anpr *.jpg --json results.json\n";
constexpr std::size_t RULE_WIDTH = 55;
constexpr std::size_t CODE_WIDTH = 8;

std::string title(std::string_view text) {
  return "\n\n" + std::string(text) + "\n" + std::string(RULE_WIDTH, '-') + "\n";
}

void print_models(std::ostream& out) {
  out << "\n★ V17 MODELS\n" << std::string(RULE_WIDTH, '-') << "\n";
  out << "\n  Detector (--detector-model):\n";
  for (const auto model : DETECTOR_MODELS) out << "    • " << model << "\n";
  out << "\n  OCR (--ocr-model):\n";
  for (const auto model : OCR_MODELS) out << "    • " << model << "\n";
  out << "\n  Models are downloaded once with a certificate into ~/.zelvoran/anpr/.\n"
         "  After that they run offline; copy that folder to an offline machine.\n";
}

void print_regions(std::ostream& out) {
  out << title("Regions (--region)");
  for (const auto& [code, description] : REGIONS) {
    out << "    " << code << std::string(CODE_WIDTH - code.size(), ' ') << " " << description
        << "\n";
  }
  out << "  Also accepts 2-letter codes (de, us, au) or names (germany, korea)\n";
}

void cmd_model_info(const Args&, Session& session) {
  std::ostream& out = session.out;
  out << "\nZelvoran ANPR v" << session.engine.version() << " — Model Info\n"
      << std::string(RULE_WIDTH, '=') << "\n";
  print_models(out);
  print_regions(out);
  out << title("Backends (--backend)") << BACKENDS << title("Examples") << EXAMPLES;
}

}  // namespace

constinit const Command MODEL_INFO = {.name = "model-info",
                                      .help = "Show available models, regions, and backends",
                                      .handler = cmd_model_info,
                                      .calls_engine = false};

}  // namespace zv::runtime
