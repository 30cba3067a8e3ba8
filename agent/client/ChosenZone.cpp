#include "agent/client/ChosenZone.h"

#include "agent/client/ExitCode.h"
#include "agent/library/Pattern.h"

#include <cstdlib>
#include <ctime>
#include <fstream>

namespace NoxAgent {

namespace {

bool IsZoneFile(const std::string& name) {
  if (name.front() == '/' || name.find("..") != std::string::npos) {
    return false;
  }
  const char* const directory = std::getenv("TZDIR");
  std::ifstream file((directory ? directory : "/usr/share/zoneinfo") + ("/" + name));
  std::string magic(4, ' ');
  return file.read(magic.data(), 4) && magic == "TZif";
}

// The beginning of a rule: a name of letters or in angle brackets, then a distance from UTC.
bool IsRule(const std::string& text) {
  return !MatchPattern("(<[A-Za-z0-9+-]+>|[A-Za-z]{3,})[+-]?[0-9].*", text).empty();
}

void Refuse(const std::string& zone) {
  throw CommandError(ExitCode::Usage, "there is no time zone \"" + zone +
                                          "\"; name one like Europe/Berlin, or a rule like "
                                          "CET-1CEST,M3.5.0,M10.5.0/3");
}

void SetZone(const char* zone) {
  if (zone == nullptr) {
    (void)::unsetenv("TZ");
  } else {
    (void)::setenv("TZ", zone, 1);
  }
  ::tzset();
}

}  // namespace

ChosenZone::ChosenZone(const std::string& zone) : m_Changes(!zone.empty()) {
  if (!m_Changes) {
    return;
  }
  if (!IsZoneFile(zone) && !IsRule(zone)) {
    Refuse(zone);
  }
  if (const char* const before = std::getenv("TZ")) {
    m_Before = before;
  }
  SetZone(zone.c_str());
}

ChosenZone::~ChosenZone() {
  if (m_Changes) {
    SetZone(m_Before ? m_Before->c_str() : nullptr);
  }
}

}  // namespace NoxAgent
