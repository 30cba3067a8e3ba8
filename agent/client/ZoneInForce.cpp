#include "agent/client/ZoneInForce.h"

#include <cstdlib>
#include <filesystem>

namespace NoxAgent {

namespace {

constexpr const char* MachinesZone = "/etc/localtime";

// The zone that a TZ names, always written in the same way.
std::string Plain(std::string zone) {
  if (zone.rfind(':', 0) == 0) {
    zone.erase(0, 1);
  }
  std::error_code ignored;
  if (zone == MachinesZone) {
    const std::filesystem::path target = std::filesystem::read_symlink(zone, ignored);
    zone = target.empty() ? zone : target.string();
  }
  const std::string directory = "/zoneinfo/";
  const std::size_t at = zone.rfind(directory);
  return at == std::string::npos ? zone : zone.substr(at + directory.size());
}

bool IsOf(const LiveTask& task, const std::string& zone) {
  const std::string plain = Plain(zone);
  return task.m_Zone.empty() || plain == Plain(task.m_Zone) || plain == task.m_ZoneName;
}

std::string ClientsZone() {
  const char* const zone = std::getenv("TZ");
  return zone == nullptr ? MachinesZone : zone;
}

std::string NoteOn(const std::string& option, const LiveTask& task) {
  if (!option.empty()) {
    return IsOf(task, option)
               ? ""
               : "This is told for the zone " + option + "; the agent runs its tasks by its own, " +
                     task.m_ZoneName + ".";
  }
  return IsOf(task, ClientsZone())
             ? ""
             : "Times are those of the agent's zone, " + task.m_ZoneName + ".";
}

}  // namespace

ZoneInForce::ZoneInForce(const std::string& option, const std::optional<LiveTask>& task)
    : m_Note(task ? NoteOn(option, *task) : ""),
      m_Zone(option.empty() && task ? ChosenZone::AsNamed(task->m_Zone) : ChosenZone(option)) {}

std::string ClientsZoneName() {
  return Plain(ClientsZone());
}

}  // namespace NoxAgent
