#include "agent/Protocol.h"
#include "agent/client/ChosenZone.h"
#include "agent/client/LocalTime.h"
#include "agent/client/RunCalendar.h"
#include "agent/client/Simulator.h"
#include "agent/client/TaskSource.h"
#include "agent/client/TextTable.h"
#include "agent/client/TimeArgument.h"
#include "agent/client/commands/Commands.h"
#include "agent/simulation/SimulationEvent.h"

#include <memory>
#include <set>

namespace NoxAgent {

using Kind = SimulationEvent::Kind;
using Events = std::vector<SimulationEvent>;

namespace {

struct SimulateOptions {
  std::vector<std::string> m_Files;
  std::string m_From, m_To, m_Zone;
  std::vector<std::string> m_GateClosed, m_ClockSteps, m_FailAt;
  std::optional<long> m_RunSeconds;
  bool m_Calendar = false;
};

void ReadDocuments(const SimulateOptions& options, const CommandContext& context,
                   SimulationRequest& request) {
  std::set<std::string> ids;
  for (const std::string& file : options.m_Files) {
    request.m_Documents.push_back(ReadTaskFile(file, context));
    if (!ids.insert(request.m_Documents.back().m_Id).second) {
      throw CommandError(ExitCode::Usage, file + ": there is a task " +
                                              request.m_Documents.back().m_Id +
                                              " already; give the files different names");
    }
  }
}

SimulationRequest RequestFor(const SimulateOptions& options, const CommandContext& context) {
  SimulationRequest request;
  ReadDocuments(options, context, request);
  request.m_From = ReadTime("--from", options.m_From);
  request.m_To = ReadTime("--to", options.m_To);
  if (request.m_To < request.m_From) {
    throw CommandError(ExitCode::Usage, "--to lies before --from; exchange them");
  }
  for (const auto& text : options.m_GateClosed) {
    request.m_GateClosed.push_back(ReadSpan("--gate-closed", text));
  }
  for (const auto& text : options.m_ClockSteps) {
    request.m_ClockSteps.push_back(ReadClockStep("--clock-step", text));
  }
  for (const auto& text : options.m_FailAt) {
    request.m_FailAt.push_back(ReadTime("--fail-at", text));
  }
  request.m_RunSeconds = options.m_RunSeconds;
  return request;
}

std::string NotificationText(const SimulationEvent& event) {
  const char* const what = event.m_Code == TaskDeleted ? " (task deleted)"
                           : event.m_Code == TaskAdded ? " (task added)"
                                                       : " (task or next run changed)";
  const std::string times =
      event.m_Count == 1 ? "" : ", " + std::to_string(event.m_Count) + " times";
  return std::to_string(event.m_Code) + what + times;
}

// What stands in the last two columns.
std::pair<std::string, std::string> Describe(const SimulationEvent& event) {
  switch (event.m_Kind) {
    case Kind::Run:
      return {"run", RunFlagsText(event)};
    case Kind::Finished:
      return {"finished", event.m_State};
    case Kind::StillRunning:
      return {"not run", "its previous run goes on"};
    case Kind::NoHandler:
      return {"not run", "there is no handler of this class"};
    case Kind::Deleted:
      return {"deleted", ""};
    case Kind::Notification:
      return {"notification", NotificationText(event)};
    case Kind::GateClosed:
      return {"gate closed", ""};
    case Kind::GateOpened:
      return {"gate opened", ""};
    case Kind::ClockSet:
      return {"clock set", "by " + std::to_string(event.m_Seconds) + " s"};
  }
  return {};
}

void PrintList(const Events& events, std::ostream& out) {
  if (events.empty()) {
    out << "nothing happens in that time; noxctl explain tells why\n";
    return;
  }
  TextTable table({"TIME", "TASK", "EVENT", "DETAILS"});
  for (const SimulationEvent& event : events) {
    const auto [what, details] = Describe(event);
    table.AddRow(
        {LocalTimeText(event.m_Time), event.m_Task.empty() ? "-" : event.m_Task, what, details});
  }
  table.Print(out);
}

void PrintJson(const Events& events, const CommandContext& context) {
  Json list = Json::List{};
  for (const SimulationEvent& event : events) {
    Json item = ToJson(event);
    item["time"] = LocalTimeText(event.m_Time);
    list.Append(std::move(item));
  }
  context.PrintJson(list);
}

void PrintCalendar(const SimulationRequest& request, const Events& events, std::ostream& out) {
  RunCalendar calendar(request.m_From, request.m_To);
  unsigned runs = 0;
  for (const SimulationEvent& event : events) {
    if (event.m_Kind != Kind::Run) {
      continue;
    }
    calendar.Add(event.m_Time);
    ++runs;
  }
  calendar.Print(out);
  out << runs << (runs == 1 ? " run\n" : " runs\n");
}

void Simulate(const SimulateOptions& options, const CommandContext& context) {
  if (options.m_Calendar && context.m_Json) {
    throw CommandError(ExitCode::Usage, "--calendar is drawn for people; leave it or --json out");
  }
  const ChosenZone zone(options.m_Zone);
  const SimulationRequest request = RequestFor(options, context);
  Events events;
  for (const Json& line : AskSimulator(request)) {
    events.push_back(SimulationEventFrom(line));
  }
  if (context.m_Json) {
    return PrintJson(events, context);
  }
  if (options.m_Calendar) {
    return PrintCalendar(request, events, context.m_Out);
  }
  PrintList(events, context.m_Out);
}

void DeclareOptions(CommandLine& command, SimulateOptions& options) {
  command.Argument("FILE", options.m_Files, "task documents, - for standard input").Required();
  command.Option("--from", options.m_From, "the first moment").Required().Takes("TIME");
  command.Option("--to", options.m_To, "the last moment").Required().Takes("TIME");
  command.Option("--zone", options.m_Zone, "time zone: a name or a rule").Takes("ZONE");
  command
      .Option("--gate-closed", options.m_GateClosed,
              "when the agent lets no task run; may be given several times")
      .Takes("TIME..TIME");
  command
      .Option("--clock-step", options.m_ClockSteps,
              "when the clock is set, and how far; may be given several times")
      .Takes("TIME=+SECONDS");
  command.Option("--run-time", options.m_RunSeconds, "how long each run takes")
      .Takes("SECONDS")
      .Between(0L, 2147483647L);
  command
      .Option("--fail-at", options.m_FailAt,
              "the first run from then on fails; may be given several times")
      .Takes("TIME");
  command.Flag("--calendar", options.m_Calendar, "draw months with the runs of each day");
}

}  // namespace

void AddSimulateCommand(CommandLine& line, CommandContext& context) {
  CommandLine& command = line.Command(
      "simulate", "Run the scheduler with these tasks over a span of time; needs no agent");
  const auto options = std::make_shared<SimulateOptions>();
  DeclareOptions(command, *options);
  command.OnUse([options, &context] { Simulate(*options, context); });
}

}  // namespace NoxAgent
