#pragma once

#include "agent/crontab/CronExpression.h"
#include "agent/crontab/CronRefusal.h"

#include <map>
#include <optional>
#include <string>
#include <variant>

namespace NoxAgent {

/// A blank line, or one that begins with "#".
struct CrontabComment {};

/// A line NAME=value. It holds for the lines below it.
struct CrontabSetting {
  std::string m_Name;
  std::string m_Value;  ///< without quotes around it
  std::string m_Note;   ///< what it means to cron and not to a task; empty when there is nothing
};

/// A line that runs a command.
struct CrontabTask {
  CronExpression m_Expression;
  std::string m_Times;  ///< the expression as it is written
  std::string m_User;   ///< of the line, or of the whole crontab
  /// For the shell: with "%" where "\%" is written.
  std::string m_Command;
  /// What the command reads on its standard input, with the line end that cron adds; nothing when
  /// the line has none.
  std::optional<std::string> m_Input;
  /// The settings in force, but for LOGNAME, which cron does not take.
  std::map<std::string, std::string> m_Environment;
};

/// One line of a crontab, and what it is.
struct CrontabEntry {
  unsigned m_Line = 0;  ///< from 1
  std::string m_Text;   ///< the line as it stands
  std::variant<CrontabComment, CrontabSetting, CrontabTask, CronRefusal> m_Content;
};

}  // namespace NoxAgent
