#include "agent/daemon/control/ZoneReport.h"

#include <cstdlib>
#include <filesystem>
#include <string_view>

namespace NoxAgent {

std::string ZoneReport::Value() {
  const char* const zone = std::getenv("TZ");
  return zone != nullptr ? zone : ":/etc/localtime";
}

std::string ZoneReport::Name() {
  std::string zone = Value();
  if (zone.starts_with(':')) {
    zone.erase(0, 1);
  }
  if (!zone.starts_with('/')) {
    return zone;
  }
  constexpr std::string_view Directory = "/zoneinfo/";
  std::error_code ignored;
  const std::string file = std::filesystem::canonical(zone, ignored);
  const std::size_t found = file.rfind(Directory);
  return found == std::string::npos ? zone : file.substr(found + Directory.size());
}

}  // namespace NoxAgent
