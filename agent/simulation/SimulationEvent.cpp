#include "agent/simulation/SimulationEvent.h"

#include <algorithm>
#include <iterator>

namespace NoxAgent {

using Kind = SimulationEvent::Kind;

namespace {

/// In the order of the kinds.
constexpr const char* KindNames[] = {"run",         "finished",    "still running",
                                     "no handler",  "deleted",     "notification",
                                     "gate closed", "gate opened", "clock set"};

const char* NameOf(Kind kind) {
  return KindNames[static_cast<std::size_t>(kind)];
}

Kind KindOf(const std::string& name) {
  const auto found = std::find(std::begin(KindNames), std::end(KindNames), name);
  if (found == std::end(KindNames)) {
    throw JsonError("there is no event \"" + name + '"');
  }
  return static_cast<Kind>(found - std::begin(KindNames));
}

}  // namespace

std::string RunFlagsText(const SimulationEvent& run) {
  std::string flags;
  const auto add = [&flags](bool set, const char* name) {
    if (set) {
      flags += (flags.empty() ? "" : ", ") + std::string(name);
    }
  };
  add(run.m_Late, "late");
  add(run.m_NeverRun, "never run");
  add(run.m_KillAtEnd, "kill at end");
  return flags;
}

Json ToJson(const SimulationEvent& event) {
  Json answer = {{"event", NameOf(event.m_Kind)}, {"seconds", event.m_Time}};
  if (!event.m_Task.empty()) {
    answer[event.m_Kind == Kind::NoHandler ? "handler" : "task"] = event.m_Task;
  }
  if (event.m_Kind == Kind::Run) {
    answer["late"] = event.m_Late;
    answer["neverRun"] = event.m_NeverRun;
    answer["killAtEnd"] = event.m_KillAtEnd;
  }
  if (!event.m_State.empty()) {
    answer["state"] = event.m_State;
  }
  if (event.m_Kind == Kind::Notification) {
    answer["code"] = event.m_Code;
    answer["count"] = event.m_Count;
  }
  if (event.m_Kind == Kind::ClockSet) {
    answer["by"] = event.m_Seconds;
  }
  return answer;
}

SimulationEvent SimulationEventFrom(const Json& line) {
  SimulationEvent event;
  event.m_Kind = KindOf(line.At("event").Text());
  event.m_Time = line.At("seconds").Long();
  event.m_Task = line.Text(event.m_Kind == Kind::NoHandler ? "handler" : "task", "");
  event.m_Late = line.Bool("late", false);
  event.m_NeverRun = line.Bool("neverRun", false);
  event.m_KillAtEnd = line.Bool("killAtEnd", false);
  event.m_State = line.Text("state", "");
  event.m_Code = line.Long("code", event.m_Code);
  event.m_Count = static_cast<unsigned>(line.Long("count", 1));
  event.m_Seconds = line.Long("by", 0);
  return event;
}

}  // namespace NoxAgent
