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

const std::string& Checked(const std::string& zone) {
  if (!zone.empty() && !IsZoneFile(zone) && !IsRule(zone)) {
    throw CommandError(ExitCode::Usage, "there is no time zone \"" + zone +
                                            "\"; name one like Europe/Berlin, or a rule like "
                                            "CET-1CEST,M3.5.0,M10.5.0/3");
  }
  return zone;
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

ChosenZone::ChosenZone(const std::string& zone) : ChosenZone(Checked(zone), Unchecked{}) {}

ChosenZone::ChosenZone(const std::string& zone, Unchecked) : m_Changes(!zone.empty()) {
  if (!m_Changes) {
    return;
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
