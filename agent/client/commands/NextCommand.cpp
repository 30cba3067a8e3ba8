#include "agent/client/LocalTime.h"
#include "agent/client/RuleWords.h"
#include "agent/client/Simulator.h"
#include "agent/client/TaskSource.h"
#include "agent/client/TaskSummary.h"
#include "agent/client/TextTable.h"
#include "agent/client/TimeArgument.h"
#include "agent/client/ZoneInForce.h"
#include "agent/client/commands/Commands.h"
#include "agent/document/TaskGlance.h"
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

// The answer to a request, and what belongs to it.
struct Forecast {
  long m_Now = 0;
  long m_From = 0;  // the moment from which on runs are told
  long m_To = 0;
  unsigned m_Count = 0;
  std::vector<SimulationEvent> m_Runs;
  long m_SearchedUntil = 0;
  std::vector<std::string> m_Notes;
  std::string m_Never;          // why no further run comes, when that is certain
  std::optional<long> m_Retry;  // the reading from which on an unfinished run counts for none
  bool m_KnowsReading = false;  // the agent tells when that is

  bool IsRetry(const SimulationEvent& run) const {
    return run.m_NeverRun && m_Retry && run.m_Time == *m_Retry;
  }
};

SimulationRequest RequestFor(const NextOptions& options, const TaskSource& source, long now) {
  SimulationRequest request;
  request.m_Command = SimulationRequest::Command::Next;
  request.m_Documents.push_back(source.m_Document);
  const long from = options.m_From.empty() ? now : ReadTime("--from", options.m_From);
  request.m_From = from;
  if (source.m_Live && source.m_Live->Return()) {
    BeginAtReturn(*source.m_Live, from, request);
  } else if (source.m_Live) {
    BeginAsAgent(*source.m_Live, from, request);
  }
  const long begin = std::max(from, request.m_From);
  request.m_To = begin > LastMoment - SearchSeconds ? LastMoment : begin + SearchSeconds;
  request.m_Count = options.m_Count;
  return request;
}

void Ask(const SimulationRequest& request, Forecast& forecast) {
  for (const Json& line : AskSimulator(request)) {
    if (const Json* const until = line.Find("searchedUntil")) {
      forecast.m_SearchedUntil = until->Long();
    } else {
      forecast.m_Runs.push_back(SimulationEventFrom(line));
    }
  }
}

bool IsUnfinished(const std::optional<RunEntry>& run) {
  return run && !run->m_State.empty() && run->m_State != "Ok";
}

// A run that the scheduler forgets when it reads the task's document next.
std::string UnfinishedNote(const LiveTask& live, const RunEntry& run) {
  const std::string reading = "when the scheduler reads its task files next, " + live.ReadingText();
  if (live.IsRunning()) {
    return "It is taken to end with \"Ok\". If it has not by then, the task counts as never run " +
           reading + ".";
  }
  return "Its last run, begun at " + run.m_Start + ", has the state \"" + run.m_State +
         "\", not \"Ok\": " + reading + ", the task counts as never run, and is due then.";
}

void AddNotes(const TaskSource& source, Forecast& forecast) {
  if (!source.m_Live) {
    return;
  }
  const LiveTask& live = *source.m_Live;
  if (!live.m_Memory) {
    forecast.m_Notes.push_back("The scheduler has not read the task's file yet; it does " +
                               live.ReadingText() + ".");
  }
  if (live.Return()) {
    forecast.m_Notes.push_back(live.DisabledText());
  }
  if (live.m_Gate == LiveTask::Gate::Closed) {
    forecast.m_Notes.emplace_back("The gate is closed: until it opens the agent lets no task run.");
  }
  if (live.m_Run) {
    for (const std::string& sentence : live.m_Run->Sentences()) {
      forecast.m_Notes.push_back(sentence);
    }
  }
  const auto run = ReadRunEntry(source.m_Document.m_Xml);
  if (live.m_Memory && live.m_Memory->m_LastRun != -1 && IsUnfinished(run)) {
    forecast.m_Notes.push_back(UnfinishedNote(live, *run));
  }
}

// Whether the document, or what the scheduler has of it, is of a task that is enabled or will be.
bool IsEnabled(const TaskSource& source) {
  if (source.m_Live && source.m_Live->Return()) {
    return true;
  }
  return source.m_Live && source.m_Live->m_Memory
             ? source.m_Live->m_Memory->m_Enabled
             : GlanceAt(BaseSDK::AString::FromUtf8(source.m_Document.m_Xml)).m_Enabled;
}

std::string WhyNoMore(const TaskSource& source, const Forecast& forecast) {
  if (!IsEnabled(source)) {
    return "the task is disabled";
  }
  const long last = forecast.m_Runs.empty() ? forecast.m_From : forecast.m_Runs.back().m_Time + 1;
  return WhyNever(ReadTriggers(source.m_Document.m_Xml), last);
}

std::string DistanceText(long seconds) {
  if (seconds == 0) {
    return "now";
  }
  const std::string length = DurationText(std::chrono::seconds(std::abs(seconds)));
  return seconds > 0 ? "in " + length : length + " ago";
}

void PrintTable(const Forecast& forecast, std::ostream& out) {
  TextTable table({"NEXT RUN", "FROM NOW", "DETAILS"});
  for (const SimulationEvent& run : forecast.m_Runs) {
    const std::string retry = !forecast.IsRetry(run)    ? ""
                              : forecast.m_KnowsReading ? "retry, "
                                                        : "retry (at the latest), ";
    table.AddRow({LocalTimeText(run.m_Time), DistanceText(run.m_Time - forecast.m_Now),
                  retry + RunFlagsText(run)});
  }
  table.Print(out);
}

std::string NoneText(const Forecast& forecast) {
  const std::string after = forecast.m_Runs.empty() ? "" : " after that";
  if (!forecast.m_Never.empty()) {
    return (after.empty() ? "never" : "none" + after) + ": " + forecast.m_Never;
  }
  const long years = (forecast.m_To - forecast.m_From + YearSeconds / 2) / YearSeconds;
  const std::string none = "none" + after;
  const std::string span = years < 2 ? " until " + LocalTimeText(forecast.m_To)
                                     : " within " + std::to_string(years) + " years";
  return none + span + "; noxctl explain tells why";
}

void Print(const Forecast& forecast, std::ostream& out) {
  for (const std::string& note : forecast.m_Notes) {
    out << note << '\n';
  }
  if (!forecast.m_Runs.empty()) {
    PrintTable(forecast, out);
  }
  if (forecast.m_Runs.size() < forecast.m_Count) {
    out << NoneText(forecast) << '\n';
  }
}

Json ToJson(const Forecast& forecast, const TaskSource& source) {
  Json list = Json::List{};
  for (const SimulationEvent& run : forecast.m_Runs) {
    list.Append({{"seconds", run.m_Time},
                 {"time", LocalTimeText(run.m_Time)},
                 {"fromNow", run.m_Time - forecast.m_Now},
                 {"late", run.m_Late},
                 {"neverRun", run.m_NeverRun},
                 {"retry", forecast.IsRetry(run)},
                 {"killAtEnd", run.m_KillAtEnd}});
  }
  return {{"runs", list},
          {"searchedUntil", forecast.m_SearchedUntil},
          {"never", forecast.m_Never.empty() ? Json() : Json(forecast.m_Never)},
          {"notes", forecast.m_Notes},
          {"returns", ReturnJson(source.m_Live)},
          {"latestRun", ToJson(source.m_Live ? source.m_Live->m_Run : std::nullopt)}};
}

void Next(const NextOptions& options, const CommandContext& context) {
  const TaskSource source = FindTask(options.m_Task, context);
  const ZoneInForce zone(options.m_Zone, source.m_Live);
  Forecast forecast;
  forecast.m_Now = source.m_Live ? source.m_Live->m_AskedAt : std::time(nullptr);
  const SimulationRequest request = RequestFor(options, source, forecast.m_Now);
  forecast.m_From = request.m_Moment.value_or(request.m_From);
  forecast.m_To = request.m_To;
  forecast.m_Count = request.m_Count;
  if (request.m_Documents[0].m_Memory) {
    forecast.m_KnowsReading = request.m_Reading.has_value();
    forecast.m_Retry = request.m_Reading.value_or(request.m_From + SimulationRequest::CycleSeconds);
  }
  Ask(request, forecast);
  if (!zone.Note().empty()) {
    forecast.m_Notes.push_back(zone.Note());
  }
  AddNotes(source, forecast);
  if (forecast.m_Runs.size() < forecast.m_Count) {
    forecast.m_Never = WhyNoMore(source, forecast);
  }
  if (context.m_Json) {
    return context.PrintJson(ToJson(forecast, source));
  }
  Print(forecast, context.m_Out);
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
