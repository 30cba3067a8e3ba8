#include "agent/simulation/SimulationEvent.h"

namespace NoxAgent {

using nlohmann::json;

using Kind = SimulationEvent::Kind;

NLOHMANN_JSON_SERIALIZE_ENUM(SimulationEvent::Kind, {{Kind::Run, "run"},
                                                     {Kind::Finished, "finished"},
                                                     {Kind::StillRunning, "still running"},
                                                     {Kind::NoHandler, "no handler"},
                                                     {Kind::Deleted, "deleted"},
                                                     {Kind::Notification, "notification"},
                                                     {Kind::GateClosed, "gate closed"},
                                                     {Kind::GateOpened, "gate opened"},
                                                     {Kind::ClockSet, "clock set"}})

std::string RunFlagsText(const SimulationEvent& run) {
  std::string flags;
  const auto add = [&flags](bool set, const char* name) {
    if (set) flags += (flags.empty() ? "" : ", ") + std::string(name);
  };
  add(run.m_Late, "late");
  add(run.m_NeverRun, "never run");
  add(run.m_KillAtEnd, "kill at end");
  return flags;
}

json ToJson(const SimulationEvent& event) {
  json answer = {{"event", event.m_Kind}, {"seconds", event.m_Time}};
  if (!event.m_Task.empty())
    answer[event.m_Kind == Kind::NoHandler ? "handler" : "task"] = event.m_Task;
  if (event.m_Kind == Kind::Run) {
    answer["late"] = event.m_Late;
    answer["neverRun"] = event.m_NeverRun;
    answer["killAtEnd"] = event.m_KillAtEnd;
  }
  if (!event.m_State.empty()) answer["state"] = event.m_State;
  if (event.m_Kind == Kind::Notification) {
    answer["code"] = event.m_Code;
    answer["count"] = event.m_Count;
  }
  if (event.m_Kind == Kind::ClockSet) answer["by"] = event.m_Seconds;
  return answer;
}

SimulationEvent SimulationEventFrom(const json& line) {
  SimulationEvent event;
  line.at("event").get_to(event.m_Kind);
  line.at("seconds").get_to(event.m_Time);
  event.m_Task = line.value(event.m_Kind == Kind::NoHandler ? "handler" : "task", event.m_Task);
  event.m_Late = line.value("late", false);
  event.m_NeverRun = line.value("neverRun", false);
  event.m_KillAtEnd = line.value("killAtEnd", false);
  event.m_State = line.value("state", event.m_State);
  event.m_Code = line.value("code", event.m_Code);
  event.m_Count = line.value("count", event.m_Count);
  event.m_Seconds = line.value("by", event.m_Seconds);
  return event;
}

}  // namespace NoxAgent
