#include "agent/client/ChosenZone.h"
#include "agent/client/LocalTime.h"
#include "agent/client/Simulator.h"
#include "agent/client/TaskSource.h"
#include "agent/client/TextTable.h"
#include "agent/client/TimeArgument.h"
#include "agent/client/commands/Commands.h"
#include "agent/simulation/SimulationEvent.h"

#include <chrono>
#include <ctime>
#include <memory>

namespace NoxAgent {

namespace {

constexpr long LastMoment = 2147483647;
constexpr long SearchSeconds = 630720000;  // as far as the scheduler itself looks ahead: 7300 days
constexpr long YearSeconds = 31556952;
constexpr unsigned UsualCount = 5;
constexpr unsigned MaxCount = 100000;

struct NextOptions {
  std::string m_Task, m_From, m_Zone;
  unsigned m_Count = UsualCount;
};

SimulationRequest RequestFor(const NextOptions& options, long now, const CommandContext& context) {
  SimulationRequest request;
  request.m_Command = SimulationRequest::Command::Next;
  request.m_Documents.push_back(FindTask(options.m_Task, context).m_Document);
  request.m_From = options.m_From.empty() ? now : ReadTime("--from", options.m_From);
  request.m_To =
      request.m_From > LastMoment - SearchSeconds ? LastMoment : request.m_From + SearchSeconds;
  request.m_Count = options.m_Count;
  return request;
}

std::string DistanceText(long seconds) {
  if (seconds == 0) {
    return "now";
  }
  const std::string length = DurationText(std::chrono::seconds(std::abs(seconds)));
  return seconds > 0 ? "in " + length : length + " ago";
}

void PrintTable(const std::vector<SimulationEvent>& runs, long now, std::ostream& out) {
  TextTable table({"NEXT RUN", "FROM NOW", "DETAILS"});
  for (const SimulationEvent& run : runs) {
    table.AddRow({LocalTimeText(run.m_Time), DistanceText(run.m_Time - now), RunFlagsText(run)});
  }
  table.Print(out);
}

std::string NoneText(const SimulationRequest& request, bool hasRuns) {
  const std::string none = hasRuns ? "none after that " : "none ";
  const long years = (request.m_To - request.m_From + YearSeconds / 2) / YearSeconds;
  if (years < 2) {
    return none + "until " + LocalTimeText(request.m_To);
  }
  return none + "within " + std::to_string(years) + " years";
}

Json ToJson(const std::vector<SimulationEvent>& runs, long now, long searchedUntil) {
  Json list = Json::List{};
  for (const SimulationEvent& run : runs) {
    list.Append({{"seconds", run.m_Time},
                 {"time", LocalTimeText(run.m_Time)},
                 {"fromNow", run.m_Time - now},
                 {"late", run.m_Late},
                 {"neverRun", run.m_NeverRun},
                 {"killAtEnd", run.m_KillAtEnd}});
  }
  return {{"runs", list}, {"searchedUntil", searchedUntil}};
}

void Next(const NextOptions& options, const CommandContext& context) {
  const ChosenZone zone(options.m_Zone);
  const long now = std::time(nullptr);
  const SimulationRequest request = RequestFor(options, now, context);
  std::vector<SimulationEvent> runs;
  long searchedUntil = 0;
  for (const Json& line : AskSimulator(request)) {
    if (const Json* const until = line.Find("searchedUntil")) {
      searchedUntil = until->Long();
    } else {
      runs.push_back(SimulationEventFrom(line));
    }
  }
  if (context.m_Json) {
    return context.PrintJson(ToJson(runs, now, searchedUntil));
  }
  if (!runs.empty()) {
    PrintTable(runs, now, context.m_Out);
  }
  if (runs.size() < request.m_Count) {
    context.m_Out << NoneText(request, !runs.empty()) << "; noxctl explain tells why\n";
  }
}

}  // namespace

void AddNextCommand(CommandLine& line, CommandContext& context) {
  CommandLine& command = line.Command(
      "next", "Tell the coming runs of a task, repetitions included; a file needs no agent");
  const auto options = std::make_shared<NextOptions>();
  command.Argument("TASK", options->m_Task, "task document, - for standard input, or task ID")
      .Required();
  command.Option("-n,--count", options->m_Count, "how many runs (default: 5)")
      .Takes("N")
      .Between(1U, MaxCount);
  command.Option("--from", options->m_From, "from when on (default: now)").Takes("TIME");
  command.Option("--zone", options->m_Zone, "time zone: a name or a rule").Takes("ZONE");
  command.OnUse([options, &context] { Next(*options, context); });
}

}  // namespace NoxAgent
