#pragma once

#include <string>

namespace NoxAgent {

/// The time zone that the agent reckons local times by. [any thread]
struct ZoneReport {
  /// The value of TZ in force; ":/etc/localtime" when the administrator has set none.
  static std::string Value();
  /// For people: "Europe/Berlin", where that can be told, else the value.
  static std::string Name();
};

}  // namespace NoxAgent
