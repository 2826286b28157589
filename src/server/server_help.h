// The help page of the `server` command.
#pragma once

#include <string_view>

namespace zv {

constexpr std::string_view SERVER_HELP = R"(Usage: zv-anpr server <command>

Server lifecycle:
  start    Start the ANPR REST API server
  stop     Stop the background server
  restart  Restart the server
  status   Check if server is running
  list     List all running ANPR server instances
  upgrade  Upgrade package and restart server
  logs     View server logs
  token    Show the API token and a dashboard sign-in link (--rotate for a new one)

Server API (talk to running server):
  detect   Send image(s) for plate detection
  health   Show server health status
  mmc      MMC status and quota
  region   View/change default OCR region

Quick start:
  zv-anpr server start --daemon            # start in background
  zv-anpr server detect car.jpg            # detect (local only)
  zv-anpr server detect car.jpg --mmc      # detect + MMC enrichment
  zv-anpr server detect *.jpg --region kr  # batch with region
  zv-anpr server health                    # check health
  zv-anpr server list                      # list all running instances
  zv-anpr server stop --port 8001          # stop specific instance
  zv-anpr server stop --all                # stop all instances
  zv-anpr server mmc                       # MMC status
  zv-anpr server region                    # view region
  zv-anpr server region korea              # change region

REST API (curl):
  curl -X POST http://127.0.0.1:8000/api/anpr -F "image=@car.jpg"
  curl -X POST http://127.0.0.1:8000/api/anpr/mmc -F "image=@car.jpg"
  curl http://127.0.0.1:8000/api/health
  (Windows PowerShell: use curl.exe instead of curl)

Web UI & docs:
  http://127.0.0.1:8000/                    # Dashboard
  http://127.0.0.1:8000/docs                # Swagger UI

Run 'zv-anpr server <command> -h' for command options.
)";

}  // namespace zv
