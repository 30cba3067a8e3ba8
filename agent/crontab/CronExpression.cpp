#include "agent/crontab/CronExpression.h"

#include "agent/crontab/CronField.h"
#include "agent/schedule/TriggerRule.h"

#include <array>
#include <string>

namespace NoxAgent {

namespace {

constexpr std::size_t FieldCount = 5;

struct Nickname {
  std::string_view m_Word;
  std::string_view m_Fields;
};
constexpr std::array<Nickname, 7> Nicknames = {{{"@yearly", "0 0 1 1 *"},
                                                {"@annually", "0 0 1 1 *"},
                                                {"@monthly", "0 0 1 * *"},
                                                {"@weekly", "0 0 * * 0"},
                                                {"@daily", "0 0 * * *"},
                                                {"@midnight", "0 0 * * *"},
                                                {"@hourly", "0 * * * *"}}};

std::variant<std::string_view, CronRefusal> FieldsOf(const CrontabWord& nickname) {
  for (const Nickname& each : Nicknames) {
    if (each.m_Word == nickname.m_Text) {
      return each.m_Fields;
    }
  }
  if (nickname.m_Text == "@reboot") {
    return CronRefusal{"@reboot is no time: a task has no start for when the machine comes up",
                       "have the service manager run the command when the machine starts"};
  }
  return CronRefusal{
      "\"" + std::string(nickname.m_Text) + "\" in column " + std::to_string(nickname.m_Column) +
          " is not known",
      "write @yearly, @annually, @monthly, @weekly, @daily, @midnight, @hourly or five fields"};
}

using Fields = std::array<CronField, FieldCount>;

std::variant<Fields, CronRefusal> ReadFields(CrontabWords words) {
  Fields fields;
  for (std::size_t i = 0; i < FieldCount; ++i) {
    const CrontabWord word = words.Next();
    if (word.m_Text.empty()) {
      return CronRefusal{"there are " + std::to_string(i) + " fields instead of five",
                         "write minute, hour, day of the month, month and weekday"};
    }
    const auto field = CronField::Parse(static_cast<CronField::Kind>(i), word);
    if (const auto* const refusal = std::get_if<CronRefusal>(&field)) {
      return *refusal;
    }
    fields[i] = std::get<CronField>(field);
  }
  if (const CrontabWord rest = words.Rest(); !rest.m_Text.empty()) {
    return CronRefusal{
        "nothing is expected in column " + std::to_string(rest.m_Column) + ", behind five fields",
        {}};
  }
  return fields;
}

std::variant<Fields, CronRefusal> ReadNickname(CrontabWords words) {
  const auto meaning = FieldsOf(words.Next());
  if (const auto* const refusal = std::get_if<CronRefusal>(&meaning)) {
    return *refusal;
  }
  if (const CrontabWord rest = words.Rest(); !rest.m_Text.empty()) {
    return CronRefusal{"nothing is expected in column " + std::to_string(rest.m_Column), {}};
  }
  return ReadFields(CrontabWords(std::get<std::string_view>(meaning)));
}

}  // namespace

std::variant<CronExpression, CronRefusal> CronExpression::Parse(std::string_view text,
                                                                std::size_t column) {
  CrontabWords words(text, column);
  const bool isNickname = words.Rest().m_Text.substr(0, 1) == "@";
  const auto fields = isNickname ? ReadNickname(words) : ReadFields(words);
  if (const auto* const refusal = std::get_if<CronRefusal>(&fields)) {
    return *refusal;
  }
  const auto& [minute, hour, day, month, weekday] = std::get<Fields>(fields);
  CronExpression expression;
  expression.m_Minutes = minute.m_Numbers;
  expression.m_Hours = static_cast<long>(hour.m_Numbers);
  expression.m_DaysOfMonth = static_cast<long>(day.m_Numbers >> 1);
  expression.m_MonthsOfYear = static_cast<long>(month.m_Numbers >> 1);
  expression.m_DaysOfWeek = static_cast<long>(weekday.m_Numbers);
  expression.m_EitherDaySuffices = !day.m_IsStarred && !weekday.m_IsStarred;
  return expression;
}

bool CronExpression::Matches(int minute, int hour, int day, int month, int weekday) const {
  return (m_Minutes >> minute & 1) != 0 && HasBit(m_Hours, hour) && MatchesDay(day, month, weekday);
}

bool CronExpression::MatchesDay(int day, int month, int weekday) const {
  const bool date = HasBit(m_DaysOfMonth, day - 1);
  const bool dayOfWeek = HasBit(m_DaysOfWeek, weekday);
  return HasBit(m_MonthsOfYear, month - 1) &&
         (m_EitherDaySuffices ? date || dayOfWeek : date && dayOfWeek);
}

}  // namespace NoxAgent
