#include "cli/command_table.h"

#include "base/error.h"
#include "cli/version.h"
#include "mmc/cmd_mmc_backend.h"
#include "mmc/cmd_mmc_setup.h"
#include "mmc/cmd_mmc_uninstall.h"
#include "read/cmd_read.h"
#include "runtime/cmd_gpu_info.h"
#include "runtime/cmd_gpu_setup.h"
#include "runtime/cmd_model_info.h"
#include "server/cmd_server.h"
#include "server/server_help.h"

namespace zv::cli {
namespace {

using enum Kind;
using Choice = std::string_view;

// The one handler whose result counts.
void gpu_setup(const Args& args, Session& session) {
  if (!runtime::cmd_gpu_setup(args, session)) throw ExitRequest(1);
}

constexpr Choice GPU_TARGETS[] = {"cuda", "gpu", "directml", "cpu"};
constexpr Choice LLAMA_VARIANTS[] = {"auto", "cpu", "vulkan", "cuda", "metal"};
constexpr Choice MMC_BACKENDS[] = {"cloud", "local"};
constexpr Choice V17[] = {"v17"};
constexpr Choice BACKENDS[] = {"cpu", "cuda", "directml"};

constexpr Option COMMON[] = {
    {.names = "-h/--help",
     .field = "help",
     .kind = flag,
     .help = "show this help message and exit"},
    {.names = "--version",
     .field = "version",
     .kind = flag,
     .help = "show program's version number and exit"},
};

constexpr Option GPU_SETUP[] = {
    {.names = "gpu_target",
     .field = "gpu_target",
     .help = "Backend to install (default: cuda)",
     .fallback = "cuda",
     .choices = GPU_TARGETS},
};

constexpr Option MMC_SETUP[] = {
    {.names = "--hf-endpoint",
     .field = "hf_endpoint",
     .help = "HuggingFace endpoint mirror (e.g. https://hf-mirror.com)"},
    {.names = "--server-bin",
     .field = "server_bin",
     .help = "Path to an existing llama.cpp llama-server binary",
     .file = true},
    {.names = "--llama-variant",
     .field = "llama_variant",
     .help = "Prebuilt llama-server variant to install (default: auto)",
     .fallback = "auto",
     .choices = LLAMA_VARIANTS},
    {.names = "--llama-tag",
     .field = "llama_tag",
     .help = "Pin a llama.cpp release tag (e.g. b10068); default: latest"},
    {.names = "--skip-llama",
     .field = "skip_llama",
     .kind = flag,
     .help = "Do not auto-install llama-server, only report its status"},
    {.names = "--no-download",
     .field = "no_download",
     .kind = flag,
     .help = "Do not download the model (still sets up llama-server)"},
};

constexpr Option MMC_BACKEND[] = {
    {.names = "backend",
     .field = "backend",
     .help = "Backend to use (omit to show current)",
     .choices = MMC_BACKENDS},
    {.names = "--host", .field = "host", .help = "Running server host (for live switch)"},
    {.names = "--port",
     .field = "port",
     .kind = integer,
     .help = "Running server port (for live switch)"},
};

constexpr Option MMC_UNINSTALL[] = {
    {.names = "--all",
     .field = "all",
     .kind = flag,
     .help = "Also remove the downloaded VLM model (~/.zelvoran/models/vlm)"},
    {.names = "--models-only",
     .field = "models_only",
     .kind = flag,
     .help = "Remove only the VLM model, keep the llama-server binary"},
    {.names = "-y/--yes", .field = "yes", .kind = flag, .help = "Do not prompt for confirmation"},
};

constexpr Option READ[] = {
    {.names = "input",
     .field = "input",
     .kind = list,
     .help = "Input image file(s) or directory",
     .required = true,
     .file = true},
    {.names = "--detector-model",
     .field = "detector_model",
     .help = "Detector model (320p_fp32, 640p_fp32)",
     .fallback = "640p_fp32"},
    {.names = "--ocr-model",
     .field = "ocr_model",
     .help = "OCR model (fp32, int8)",
     .fallback = "fp32"},
    {.names = "--region",
     .field = "region",
     .help = "Region (eup/na/kr/cn/jp/univ or country code)",
     .fallback = "univ"},
    {.names = "--detector-version",
     .field = "detector_version",
     .help = "Detector version (default: v17)",
     .fallback = "v17",
     .choices = V17},
    {.names = "--ocr-version",
     .field = "ocr_version",
     .help = "OCR version (default: v17)",
     .fallback = "v17",
     .choices = V17},
    {.names = "--backend",
     .field = "backend",
     .help = "Backend (default: cpu)",
     .fallback = "cpu",
     .choices = BACKENDS},
    {.names = "--confidence",
     .field = "confidence",
     .kind = real,
     .help = "Min confidence threshold (default: 0.5)",
     .fallback = "0.5"},
    {.names = "--output", .field = "output", .help = "Save annotated image", .file = true},
    {.names = "--json", .field = "json", .help = "Save results as JSON", .file = true},
};

constexpr Option START[] = {
    {.names = "--host", .field = "host", .help = "Host to bind to (default: 127.0.0.1)"},
    {.names = "--port", .field = "port", .kind = integer, .help = "Port (default: 8000)"},
    {.names = "--daemon/-d", .field = "daemon", .kind = flag, .help = "Run in background"},
    {.names = "--workers/--threads",
     .field = "threads",
     .kind = integer,
     .help = "Worker thread pool size (default: 4)"},
    {.names = "--config", .field = "config", .help = "Path to server_config.yaml", .file = true},
};

constexpr Option STOP[] = {
    {.names = "--force/-f", .field = "force", .kind = flag, .help = "Force kill (SIGKILL)"},
    {.names = "--port",
     .field = "target_port",
     .kind = integer,
     .help = "Stop server on this port"},
    {.names = "--pid", .field = "target_pid", .kind = integer, .help = "Stop server with this PID"},
    {.names = "--all", .field = "stop_all", .kind = flag, .help = "Stop all running ANPR servers"},
};

constexpr Option RESTART[] = {
    {.names = "--host", .field = "host", .help = "Host to bind to"},
    {.names = "--port", .field = "port", .kind = integer, .help = "Port"},
    {.names = "--workers/--threads",
     .field = "threads",
     .kind = integer,
     .help = "Worker thread pool size"},
};

constexpr Option TOKEN[] = {
    {.names = "--rotate",
     .field = "rotate",
     .kind = flag,
     .help = "Replace the token with a new one"},
};

constexpr Option UPGRADE[] = {
    {.names = "--host", .field = "host", .help = "Host after restart"},
    {.names = "--port", .field = "port", .kind = integer, .help = "Port after restart"},
    {.names = "--pip-args", .field = "pip_args", .help = "Extra pip arguments"},
};

constexpr Option LOGS[] = {
    {.names = "--lines/-n",
     .field = "lines",
     .kind = integer,
     .help = "Number of lines",
     .fallback = "50"},
    {.names = "--follow/-f", .field = "follow", .kind = flag, .help = "Tail logs"},
};

constexpr Option DETECT[] = {
    {.names = "images",
     .field = "images",
     .kind = list,
     .help = "Image file(s) or glob patterns",
     .required = true,
     .file = true},
    {.names = "--mmc",
     .field = "mmc",
     .kind = flag,
     .help = "Include MMC enrichment (make, model, color)"},
    {.names = "--region", .field = "region", .help = "OCR region for this request"},
    {.names = "--host", .field = "host", .help = "Server host (default: 127.0.0.1)"},
    {.names = "--port", .field = "port", .kind = integer, .help = "Server port (default: 8000)"},
};

constexpr Option ENDPOINT[] = {
    {.names = "--host", .field = "host", .help = "Server host"},
    {.names = "--port", .field = "port", .kind = integer, .help = "Server port"},
};

constexpr Option REGION[] = {
    {.names = "name",
     .field = "name",
     .help =
         "New region (univ, euplus, eu, asia, na, korea, china, japan, or 2-letter country code)"},
    {.names = "--host", .field = "host", .help = "Server host"},
    {.names = "--port", .field = "port", .kind = integer, .help = "Server port"},
};

constexpr Command SERVER_COMMANDS[] = {
    {.name = "start", .help = "Start the ANPR server", .options = START},
    {.name = "stop", .help = "Stop the background server", .options = STOP},
    {.name = "restart", .help = "Restart the server", .options = RESTART},
    {.name = "status", .help = "Check if server is running"},
    {.name = "token", .help = "Show the API token and a dashboard sign-in link", .options = TOKEN},
    {.name = "list", .help = "List all running ANPR server instances"},
    {.name = "upgrade", .help = "Upgrade package and restart server", .options = UPGRADE},
    {.name = "logs", .help = "View server logs", .options = LOGS},
    {.name = "detect", .help = "Send image(s) to running server for detection", .options = DETECT},
    {.name = "health", .help = "Show server health status", .options = ENDPOINT},
    {.name = "mmc", .help = "MMC status and quota", .options = ENDPOINT},
    {.name = "region", .help = "View/change server default region", .options = REGION},
};

// The page's first line says what the usage line says already.
constexpr std::string_view SERVER_EPILOG = SERVER_HELP.substr(SERVER_HELP.find('\n') + 1);

constexpr Command COMMANDS[] = {
    {.name = "gpu-info", .help = "Display GPU/CUDA information", .handler = runtime::cmd_gpu_info},
    {.name = "gpu-setup",
     .help = "Install/switch GPU backend (cuda, directml, cpu)",
     .options = GPU_SETUP,
     .handler = gpu_setup},
    {.name = "model-info",
     .help = "Show available models, regions, and backends",
     .handler = runtime::cmd_model_info,
     .calls_engine = false},
    {.name = "version",
     .help = "Show version information",
     .handler = cmd_version,
     .calls_engine = false},
    {.name = "mmc-setup",
     .help = "Install local MMC deps and download the on-device VLM model",
     .options = MMC_SETUP,
     .handler = mmc::cmd_mmc_setup},
    {.name = "mmc-backend",
     .help = "View/switch MMC backend (cloud | local)",
     .options = MMC_BACKEND,
     .handler = mmc::cmd_mmc_backend},
    {.name = "mmc-uninstall",
     .help = "Cleanly remove the on-device MMC llama-server and/or model",
     .options = MMC_UNINSTALL,
     .handler = mmc::cmd_mmc_uninstall},
    {.name = "read", .options = READ, .handler = read::cmd_read},
    {.name = "server",
     .help = "Manage ANPR REST API server",
     .commands = SERVER_COMMANDS,
     .commands_title = "Server commands",
     .commands_field = "server_command",
     .epilog = SERVER_EPILOG,
     .handler = server::cmd_server},
};

constexpr Command PROGRAM = {
    .name = "zelvoran-anpr",
    .commands = COMMANDS,
    .commands_title = "Available commands",
    .commands_field = "command",
    .description = "Zelvoran ANPR CLI - License Plate Detection and Recognition",
};

}  // namespace

const Command& program() {
  return PROGRAM;
}

std::span<const Option> common_options(bool top) {
  return std::span(COMMON).first(top ? 2 : 1);
}

}  // namespace zv::cli
