#pragma once

#include <optional>
#include <string>

namespace VirtualTime {

/// The process's time zone, for as long as this lives; the earlier one returns with its end. Best a
/// rule such as `CET-1CEST,M3.5.0,M10.5.0/3`, which needs no zone files. No other thread may work
/// with local time while a Zone begins or ends, for the environment is changed.
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
