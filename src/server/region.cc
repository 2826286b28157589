#include "base/error.h"
#include "base/output_stream.h"
#include "base/python_text.h"
#include "base/value.h"
#include "http/server_api.h"
#include "server/answer.h"
#include "server/commands.h"

namespace zv::server {
namespace {

// What every server of this release knows, for when it does not say.
constexpr const char* KNOWN_REGIONS =
    "univ, euplus, eu, asia, africa, oceania, exussr, na, korea, china, japan, + country codes";

void change(const std::string& base, const std::string& name, Session& session) {
  const Value answer = http::_server_api(
      session.engine, {.url = base + "/api/region", .method = "PUT", .data = {{"region", name}}});
  const Map& verdict = http::object_of(answer);
  if (truthy(get(verdict, "success"))) {
    session.out << "Region changed: " << Foreign{shown(verdict, "previous_region")} << " → "
                << Foreign{shown(verdict, "current_region")} << "\n";
  } else {
    session.out << "Failed: " << Foreign{plain_text(answer)} << "\n";
  }
}

void print_current(const std::string& base, Session& session) {
  const Value answer = http::_server_api(session.engine, {.url = base + "/api/region"});
  const Map& region = http::object_of(answer);
  session.out << "Region:    " << Foreign{shown(region, "default_region", "?")} << "\n";
  const Value active = get(region, "active_region");
  if (truthy(active) && !equal(active, get(region, "default_region"))) {
    session.out << "Active:    " << Foreign{plain_text(active)} << "\n";
  }
}

// Empty when the server knows none.
std::string offered_regions(const std::string& base, Engine& engine) {
  const Value answer = http::_server_api(engine, {.url = base + "/api/regions"});
  const Value groups = get(http::object_of(answer), "internal_groups", List());
  if (!truthy(groups)) return {};
  const auto* names = groups.as<List>();
  if (!names) throw Error("the region groups are no list");
  return joined(*names, ", ") + ", + 80 country codes";
}

void print_available(const std::string& base, Session& session) {
  try {
    const std::string regions = offered_regions(base, session.engine);
    if (!regions.empty()) session.out << "Available: " << Foreign{regions} << "\n";
  } catch (const std::exception&) {
    session.out << "Available: " << KNOWN_REGIONS << "\n";
  }
}

void cmd_server_region(const Args& args, Session& session) {
  const std::string base = http::_server_base_url(args);
  const std::string name = args.text("name");
  try {
    if (!name.empty()) return change(base, name, session);
    print_current(base, session);
    print_available(base, session);
  } catch (const std::exception& error) {
    if (name.empty()) {
      session.out << Foreign{unreachable(base, error)} << "\n";
    } else {
      session.out << "Error: " << Foreign{error.what()} << "\n";
    }
  }
}

constexpr Option OPTIONS[] = {
    {.names = "name",
     .help =
         "New region (univ, euplus, eu, asia, na, korea, china, japan, or 2-letter country code)"},
    SERVER_HOST,
    SERVER_PORT,
};

}  // namespace

constinit const Command REGION = {.name = "region",
                                  .help = "View/change server default region",
                                  .options = OPTIONS,
                                  .handler = cmd_server_region,
                                  .page_help = "View/change default OCR region"};

}  // namespace zv::server
