#include "tests/scheduler/StressDocument.h"

#include "tests/support/TaskXml.h"

#include <gmock/gmock.h>

#include <cstdio>

namespace StressDocument {

namespace {

constexpr const char* RunStates[] = {"Failed", "Ok", "Paused"};

std::string TriggerOf(Kind kind) {
  switch (kind) {
    case Kind::AsSoonAsPossible:
      return R"(Type="-1")";
    case Kind::EverySecond:
      return R"(Type="1" Interval="1" IntervalUnit="Second" Duration="1440")";
    case Kind::Expired:
      return R"(Type="2")";
  }
  return {};
}

std::string DatesOf(Kind kind) {
  const std::string begin = "<BeginDate>2005/03/01 00:00:00</BeginDate>";
  return kind == Kind::Expired ? begin + "<EndDate>2005-03-02 00:00:00</EndDate>" : begin;
}

/// The label stands at the beginning and at the end, and fills what lies between.
std::string Schedule(Kind kind, int writer, int round) {
  const std::string label = "k" + std::to_string(static_cast<int>(kind)) + "w" +
                            std::to_string(writer) + "r" + std::to_string(round) + ";";
  std::string filling;
  while (filling.size() < 6000) {
    filling += label;
  }
  return "<Schedule><Trigger " + TriggerOf(kind) + " Description=\"" + filling + "\">" +
         DatesOf(kind) + "</Trigger><!--" + label + "--></Schedule>";
}

std::string Handler() {
  return std::string("<HandlerCLSID>") + TestSupport::TaskXml::HandlerId + "</HandlerCLSID>";
}

/// The schedule that the label in `schedule` stands for; empty without a label of any writer.
std::string ScheduleByLabel(const std::string& schedule) {
  const std::size_t at = schedule.find("Description=\"");
  int kind = -1, writer = -1, round = -1;
  if (at == std::string::npos ||
      std::sscanf(schedule.c_str() + at, "Description=\"k%dw%dr%d;", &kind, &writer, &round) != 3) {
    return {};
  }
  const bool known = kind >= 0 && kind <= static_cast<int>(Kind::Expired) && writer >= 0 &&
                     writer < Writers && round >= 0 && round < Rounds;
  return known ? Schedule(static_cast<Kind>(kind), writer, round) : "";
}

/// What may stand around the schedule: what a writer wrote, or what the scheduler makes of it.
bool IsKnownFrame(const std::string& before, const std::string& after) {
  if (before == "<Task>" + Handler() && after == "</Task>") {
    return true;
  }
  const auto isRewritten = testing::Matches(
      testing::MatchesRegex("\n\t(<TaskHistory>\n\t\t<RunTime>"
                            "[0-9]{4}-[0-9]{2}-[0-9]{2} [0-9]{2}:[0-9]{2}:[0-9]{2} "
                            "(Started|Failed|Ok|Paused)</RunTime>\n\t</TaskHistory>)?\n</Task>"));
  const bool begins = before == "<Task Enabled=\"0\">\n\t" + Handler() + "\n\t" ||
                      before == "<Task Enabled=\"1\">\n\t" + Handler() + "\n\t";
  return begins && isRewritten(after);
}

}  // namespace

std::string Text(Kind kind, int writer, int round) {
  return "<Task>" + Handler() + Schedule(kind, writer, round) + "</Task>";
}

std::string RunState(int round) {
  return RunStates[round % 3];
}

std::string Fault(const std::string& text) {
  const std::string endTag = "</Schedule>";
  const std::size_t begin = text.find("<Schedule>");
  const std::size_t end = text.find(endTag);
  if (begin == std::string::npos || end == std::string::npos) {
    return "no schedule: " + text;
  }
  const std::size_t behind = end + endTag.size();
  const std::string schedule = text.substr(begin, behind - begin);
  if (schedule != ScheduleByLabel(schedule)) {
    return "a schedule that nobody wrote: " + schedule;
  }
  const std::string before = text.substr(0, begin), after = text.substr(behind);
  return IsKnownFrame(before, after) ? "" : "not a known frame: " + before + "..." + after;
}

}  // namespace StressDocument
