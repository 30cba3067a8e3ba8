#pragma once

#include <optional>
#include <string>

namespace VirtualTime {

/// Sets the time zone of the process (TZ) for as long as the object lives; afterwards the earlier
/// one is back. A rule such as `CET-1CEST,M3.5.0,M10.5.0/3` is best, for it needs no zone files. No
/// other thread may work with local time while a Zone begins or ends: it changes the environment.
class Zone {
 public:
  explicit Zone(const char* tz);
  Zone(const Zone&) = delete;
  Zone& operator=(const Zone&) = delete;
  ~Zone();

 private:
  std::optional<std::string> m_Before;  ///< empty when TZ was not set
};

}  // namespace VirtualTime
