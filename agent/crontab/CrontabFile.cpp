#include "agent/crontab/CrontabFile.h"

#include "agent/crontab/CrontabAssignment.h"
#include "agent/crontab/CrontabWords.h"

#include <BaseSDK/AString.h>

#include <algorithm>

namespace NoxAgent {

namespace {

constexpr int TimeFields = 5;
constexpr const char* ZoneSetting = "CRON_TZ";
// What commands and times have in them.
constexpr std::string_view NoUserCharacters = "/:*\"'`$()[]{}&|;<>\\=%,";

// Why a line is no text that a job file could hold.
std::optional<CronRefusal> FaultOfText(std::string_view line) {
  for (std::size_t i = 0; i < line.size(); ++i) {
    const bool isControl = (line[i] >= 0 && line[i] < ' ' && line[i] != '\t') || line[i] == 0x7F;
    if (isControl && line[i] == '\r' && i + 1 == line.size()) {
      return CronRefusal{"the line ends with a carriage return, which the command would be given",
                         "end lines as Linux does, without one"};
    }
    if (isControl) {
      return CronRefusal{"a control character in column " + std::to_string(i + 1), {}};
    }
  }
  const std::wstring characters = BaseSDK::AString::FromUtf8(std::string(line)).Str();
  // This is how bytes are held that are not UTF-8.
  const bool isUtf8 = std::none_of(characters.begin(), characters.end(), [](wchar_t character) {
    return character >= 0xD800 && character <= 0xDFFF;
  });
  return isUtf8 ? std::nullopt
                : std::optional(CronRefusal{"the line is not UTF-8", "write it in UTF-8"});
}

bool IsSameZone(std::string_view one, std::string_view other) {
  // Etc/UTC is what machines are set to, UTC what people write.
  constexpr std::string_view Area = "Etc/";
  one.remove_prefix(one.starts_with(Area) ? Area.size() : 0);
  other.remove_prefix(other.starts_with(Area) ? Area.size() : 0);
  return one == other;
}

// The command ends at the first "%"; what follows is its input, where each "%" ends a line. "\%" is
// a "%" in both.
void SplitCommand(std::string_view text, CrontabTask& task) {
  std::string* part = &task.m_Command;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '\\' && text.substr(i + 1, 1) == "%") {
      *part += text[++i];
    } else if (text[i] == '%' && !task.m_Input) {
      part = &task.m_Input.emplace();
    } else {
      *part += text[i] == '%' ? '\n' : text[i];
    }
  }
  if (task.m_Input && !task.m_Input->ends_with('\n') && !task.m_Input->empty()) {
    *task.m_Input += '\n';
  }
}

class CrontabReader {
 public:
  explicit CrontabReader(const CrontabOrigin& origin) : m_Origin(origin) {}

  CrontabEntry Read(std::string_view line) {
    CrontabEntry entry;
    entry.m_Line = ++m_Line;
    entry.m_Text = line;
    const std::string_view text = CrontabWords(line).Rest().m_Text;
    if (text.empty() || text[0] == '#' || text == "\r") {
      return entry;
    }
    if (const auto fault = FaultOfText(line)) {
      entry.m_Content = *fault;
    } else if (const auto assignment = ReadAssignment(line)) {
      if (const auto* const setting = std::get_if<CrontabSetting>(&*assignment)) {
        Take(*setting);
        entry.m_Content = *setting;
      } else {
        entry.m_Content = std::get<CronRefusal>(*assignment);
      }
    } else {
      ReadTask(line, entry);
    }
    return entry;
  }

 private:
  void Take(const CrontabSetting& setting) {
    if (setting.m_Name != "LOGNAME") {
      m_Environment[setting.m_Name] = setting.m_Value;
    }
    if (setting.m_Name == ZoneSetting) {
      m_ZoneLine = m_Line;
    }
  }

  void ReadTask(std::string_view line, CrontabEntry& entry) const {
    CrontabWords words(line);
    const CrontabWord first = words.Next();
    std::size_t end = first.m_Column - 1 + first.m_Text.size();
    for (int i = 1; i < TimeFields && first.m_Text[0] != '@'; ++i) {
      const CrontabWord word = words.Next();
      end = word.m_Text.empty() ? end : word.m_Column - 1 + word.m_Text.size();
    }
    const std::string_view times = line.substr(first.m_Column - 1, end - first.m_Column + 1);
    const auto expression = CronExpression::Parse(times, first.m_Column);
    if (const auto* const refusal = std::get_if<CronRefusal>(&expression)) {
      entry.m_Content = *refusal;
      return;
    }
    CrontabTask task{std::get<CronExpression>(expression),
                     std::string(times),
                     m_Origin.m_User,
                     {},
                     std::nullopt,
                     m_Environment};
    if (m_Origin.m_HasUserColumn) {
      task.m_User = words.Next().m_Text;
    }
    SplitCommand(words.Rest().m_Text, task);
    if (const auto refusal = FaultOf(task)) {
      entry.m_Content = *refusal;
    } else {
      entry.m_Content = task;
    }
  }

  std::optional<CronRefusal> FaultOf(const CrontabTask& task) const {
    if (m_Origin.m_HasUserColumn &&
        task.m_User.find_first_of(NoUserCharacters) != std::string::npos) {
      return CronRefusal{"\"" + task.m_User + "\" is no name of a user",
                         "write a user before the command, or read it as the crontab of one user"};
    }
    if (task.m_Command.find_first_not_of(CrontabBlanks) == std::string::npos) {
      return m_Origin.m_HasUserColumn
                 ? CronRefusal{"there is no command", "write a user and a command behind the times"}
                 : CronRefusal{"there is no command", "write one behind the times"};
    }
    const auto zone = m_Environment.find(ZoneSetting);
    if (zone == m_Environment.end() || zone->second.empty() ||
        IsSameZone(zone->second, m_Origin.m_Zone)) {
      return std::nullopt;
    }
    return CronRefusal{"line " + std::to_string(m_ZoneLine) + " sets CRON_TZ to " + zone->second +
                           ", and tasks run by the machine's zone, " + m_Origin.m_Zone,
                       "write its times in the machine's zone, in a crontab without CRON_TZ"};
  }

  const CrontabOrigin& m_Origin;
  unsigned m_Line = 0;
  unsigned m_ZoneLine = 0;
  std::map<std::string, std::string> m_Environment;
};

}  // namespace

std::vector<CrontabEntry> ReadCrontab(std::string_view text, const CrontabOrigin& origin) {
  std::vector<CrontabEntry> entries;
  CrontabReader reader(origin);
  while (!text.empty()) {
    const std::size_t length = std::min(text.find('\n'), text.size());
    entries.push_back(reader.Read(text.substr(0, length)));
    text.remove_prefix(std::min(length + 1, text.size()));
  }
  return entries;
}

}  // namespace NoxAgent
