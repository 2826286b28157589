#include "server/answer.h"

#include "base/error.h"
#include "base/python_number.h"
#include "base/python_text.h"
#include "base/unicode.h"

namespace zv::server {

std::size_t length(const Value& value) {
  if (const auto* list = value.as<List>()) return list->size();
  if (const auto* map = value.as<Map>()) return map->size();
  if (const auto* text = value.as<std::string>()) return count_characters(*text);
  throw Error("object of type '" + type_name(value) + "' has no len()");
}

std::string joined(const List& texts, const std::string& separator) {
  std::string result;
  for (std::size_t i = 0; i < texts.size(); ++i) {
    const auto* text = texts[i].as<std::string>();
    if (!text) {
      throw Error("sequence item " + std::to_string(i) + ": expected str instance, " +
                  type_name(texts[i]) + " found");
    }
    result += (i == 0 ? "" : separator) + *text;
  }
  return result;
}

std::string shown(const Map& answer, std::string_view key, const Value& fallback) {
  return plain_text(get(answer, key, fallback));
}

bool mmc_available(const Map& health) {
  return truthy(get(health, "mmc_available", get(health, "mmc_enabled")));
}

std::string uptime_text(const Value& seconds) {
  if (less(seconds, 60)) return fixed_text(seconds, 0) + "s";
  if (less(seconds, 3600)) return fixed_text(divide(seconds, 60), 0) + "m";
  return fixed_text(divide(seconds, 3600), 1) + "h";
}

std::string quota_text(const Map& mmc, const std::string& before_rest) {
  return shown(mmc, "mmc_calls_today", 0) + "/" + shown(mmc, "mmc_daily_limit", 0) + " today" +
         before_rest + shown(mmc, "mmc_remaining", 0) + " remaining)";
}

std::string unreachable(const std::string& base_url, const std::exception& error) {
  return "Error: Could not reach server at " + base_url + " (" + error.what() + ")";
}

}  // namespace zv::server
