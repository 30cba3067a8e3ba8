#include "tests/proof/Comparison.h"

#include <VirtualTime/VirtualClock.h>

#include <sstream>

using BaseSDK::AString;
using PlainSchedule::Answer;

namespace {

std::string ShowDefinition(std::int64_t type, std::int64_t interval, std::int64_t duration,
                           std::int64_t begin, std::int64_t end) {
  std::ostringstream text;
  text << "type " << type << " interval " << interval << " duration " << duration << " begin "
       << begin << " end " << end;
  return text.str();
}

}  // namespace

std::string Show(const Answer& answer) {
  std::ostringstream text;
  text << "due " << answer.due << " late " << answer.late << " expired " << answer.expired
       << " sleep " << answer.sleepSeconds << " next " << answer.nextRun;
  return text.str();
}

Answer Ask(CTaskTrigger& trigger, long now, long sleepSeconds) {
  VirtualTime::VirtualClock::Instance().Start(now);
  Answer answer;
  bool nextRunChanged = false;
  answer.due =
      trigger.IsDue(false, false, sleepSeconds, answer.late, answer.expired, nextRunChanged);
  answer.sleepSeconds = sleepSeconds;
  answer.nextRun = trigger.m_NextRun;
  return answer;
}

Contestants::Contestants(const PlainSchedule::Rule& rule)
    : m_Plain(rule), m_Trigger(AString::FromUtf8(rule.ToXml()), &m_LastRun) {}

std::string Contestants::DifferentReading() const {
  if (m_Trigger.m_Disabled != m_Plain.disabled) {
    return "disabled differs\n";
  }
  if (m_Plain.disabled) {
    return {};
  }
  const auto read = ShowDefinition(m_Trigger.m_Type, m_Trigger.m_Interval, m_Trigger.m_Duration,
                                   m_Trigger.m_BeginDate, m_Trigger.m_EndDate);
  const auto wanted =
      ShowDefinition(m_Plain.type, m_Plain.interval, m_Plain.duration, m_Plain.begin, m_Plain.end);
  return read == wanted ? "" : "model: " + read + "\nplain: " + wanted + "\n";
}

std::string Contestants::DifferentStart(long moment) const {
  if (m_Plain.disabled) {
    return {};
  }
  const std::int64_t given = m_Trigger.GetTriggerStartTime(moment);
  const std::int64_t wanted = PlainSchedule::StartOnDayOf(m_Plain, moment);
  if (given == wanted) {
    return {};
  }
  return "start: model " + std::to_string(given) + ", plain " + std::to_string(wanted) + "\n";
}

std::string Contestants::Disagreement(const Case& asked) {
  m_LastRun = asked.lastRun;
  const Answer given = Ask(m_Trigger, asked.now, asked.sleepSeconds);
  const Answer wanted =
      PlainSchedule::Evaluate(m_Plain, asked.lastRun, asked.now, asked.sleepSeconds);
  std::string difference = DifferentReading() + DifferentStart(asked.now);
  if (Show(given) != Show(wanted)) {
    difference += "model: " + Show(given) + "\nplain: " + Show(wanted) + "\n";
  }
  return difference.empty() ? "" : difference + asked.AsRow(wanted);
}
