#pragma once

#include "agent/crontab/CrontabEntry.h"

#include <string>
#include <string_view>
#include <vector>

namespace NoxAgent {

/// What a crontab does not say about itself.
struct CrontabOrigin {
  bool m_HasUserColumn = false;  ///< as /etc/crontab and the files of /etc/cron.d have it
  std::string m_User;            ///< whose crontab it is when there is no such column
  std::string m_Zone;            ///< the name of the machine's zone, such as Europe/Berlin
};

/// Reads a crontab: an entry for each of its lines, in their order. A line that cannot be taken
/// over is a refusal and leaves all others as they are. docs/crontab.md tells what is read.
std::vector<CrontabEntry> ReadCrontab(std::string_view text, const CrontabOrigin& origin);

}  // namespace NoxAgent
