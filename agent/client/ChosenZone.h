#pragma once

#include <optional>
#include <string>

namespace NoxAgent {

/// The time zone that a command works in: the one given with --zone, or the agent's.
///
/// While an object lives, its zone is that of the process (TZ), and of the processes that it
/// starts. No other thread may work with local time while an object begins or ends.
class ChosenZone {
 public:
  /// A name such as "Europe/Berlin" or a rule such as "CET-1CEST,M3.5.0,M10.5.0/3"; empty: the zone
  /// stays as it is. Throws CommandError (Usage) for what is neither, because the C library would
  /// take it for UTC.
  explicit ChosenZone(const std::string& zone);
  /// As above for a zone that some process has in force, as its TZ names it; it is not checked.
  /// ":/etc/localtime" is the zone of the machine; empty: the zone stays as it is.
  static ChosenZone AsNamed(const std::string& zone) { return {zone, Unchecked{}}; }
  ~ChosenZone();
  ChosenZone(const ChosenZone&) = delete;
  ChosenZone& operator=(const ChosenZone&) = delete;

 private:
  struct Unchecked {};
  ChosenZone(const std::string& zone, Unchecked);

  const bool m_Changes;
  std::optional<std::string> m_Before;
};

}  // namespace NoxAgent
