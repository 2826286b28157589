#include <filesystem>

#include "base/error.h"
#include "base/files.h"
#include "base/glob.h"
#include "base/output_stream.h"
#include "base/python_number.h"
#include "base/python_text.h"
#include "command/image_files.h"
#include "http/client.h"
#include "http/server_api.h"
#include "server/answer.h"
#include "server/commands.h"

namespace zv::server {
namespace {

namespace fs = std::filesystem;

std::vector<fs::path> expanded(const List& images, std::ostream& out) {
  std::vector<fs::path> paths;
  for (const Value& image : images) {
    const std::string word = plain_text(image);
    auto matches = glob(word);
    std::error_code ignored;
    // A name that would do for a pattern and matches nothing is taken as it is.
    if (matches.empty() && fs::exists(word, ignored)) matches.emplace_back(word);
    paths.insert(paths.end(), matches.begin(), matches.end());
    if (matches.empty()) out << "Warning: " << Foreign{word} << " not found, skipping\n";
  }
  return paths;
}

// Colour, make and model as far as they are known; nothing without a make.
std::string vehicle(const Map& plate) {
  if (!truthy(get(plate, "mmc_make"))) return {};
  List words;
  for (const char* key : {"mmc_color", "mmc_make", "mmc_model"}) {
    const Value word = get(plate, key, "");
    if (truthy(word)) words.push_back(word);
  }
  return "  " + joined(words, " ");
}

std::string plate_line(const Map& plate) {
  return "    " + shown(plate, "plate_text", "?") + " (" +
         fixed_text(get(plate, "confidence", 0), 0) + "%)" + vehicle(plate);
}

void print_plates(const std::string& name, const Map& answer, std::ostream& out) {
  const Value results = get(answer, "results", List());
  const Value seconds = get(answer, "processing_sec", 0);
  const auto time = [&seconds] { return "  [" + fixed_text(seconds, 2) + "s]"; };
  if (!truthy(results)) {
    out << Foreign{"  " + name + ": (no plates)" + time()} << "\n";
    return;
  }
  out << Foreign{"  " + name + ": " + std::to_string(length(results)) + " plate(s)" + time()}
      << "\n";
  const auto* plates = results.as<List>();
  if (!plates) throw Error("the server's plates are no list");
  for (const Value& plate : *plates) out << Foreign{plate_line(http::object_of(plate))} << "\n";
}

// One run over the images: the address and the fields are the same for all of them.
class Detection {
 public:
  Detection(const Args& args, Session& session)
      : session_(session),
        address_(http::_server_base_url(args) +
                 (args.flag("mmc") ? "/api/anpr/mmc" : "/api/anpr")) {
    const Value region = args.value("region");
    if (truthy(region)) fields_.set("region", region);
  }

  void detect(const fs::path& path) {
    const std::string name = path.filename().string();
    if (!has_image_extension(path)) {
      session_.out << "Skipping " << Foreign{name} << ": unsupported format\n";
      return;
    }
    try {
      upload(path, name);
    } catch (const http::UrlError& error) {
      session_.out << "  " << Foreign{name} << ": Error - server not reachable ("
                   << Foreign{error.what()} << ")\n";
    } catch (const std::exception& error) {
      session_.out << "  " << Foreign{name} << ": Error - " << Foreign{error.what()} << "\n";
    }
  }

 private:
  void upload(const fs::path& path, const std::string& name) {
    // The server tells formats by their content: everything goes as image/jpeg.
    http::ServerRequest request{.url = address_, .data = fields_};
    request.files.emplace_back("image", http::Upload{name, read_file(path), "image/jpeg"});
    const Value answer = http::_server_api(session_.engine, request);
    print_plates(name, http::object_of(answer), session_.out);
  }

  Session& session_;
  std::string address_;
  Map fields_;
};

void cmd_server_detect(const Args& args, Session& session) {
  const auto paths = expanded(args.list("images"), session.out);
  if (paths.empty()) {
    session.out << "No images provided.\n"
                << "Usage: zv-anpr server detect <image> [image2 ...] [--region korea] [--mmc]\n";
    return;
  }
  Detection detection(args, session);
  for (const fs::path& path : paths) detection.detect(path);
  if (paths.size() >= 2) session.out << "\nTotal: " << paths.size() << " images processed\n";
}

constexpr Option OPTIONS[] = {
    {.names = "images",
     .kind = Kind::list,
     .help = "Image file(s) or glob patterns",
     .required = true,
     .file = true},
    {.names = "--mmc", .kind = Kind::flag, .help = "Include MMC enrichment (make, model, color)"},
    {.names = "--region", .help = "OCR region for this request"},
    {.names = "--host", .help = "Server host (default: 127.0.0.1)"},
    {.names = "--port", .kind = Kind::integer, .help = "Server port (default: 8000)"},
};

}  // namespace

constinit const Command DETECT = {.name = "detect",
                                  .help = "Send image(s) to running server for detection",
                                  .options = OPTIONS,
                                  .handler = cmd_server_detect,
                                  .page_help = "Send image(s) for plate detection"};

}  // namespace zv::server
