#include "agent/Protocol.h"
#include "agent/client/ChosenZone.h"
#include "agent/client/HandlerRun.h"
#include "agent/client/LocalTime.h"
#include "agent/client/RunWatcher.h"
#include "agent/client/TaskSummary.h"
#include "agent/client/commands/Commands.h"

#include <algorithm>
#include <iomanip>
#include <memory>

namespace NoxAgent {

namespace {

struct WatchOptions {
  std::vector<std::string> m_Ids;  // empty: all tasks
  unsigned m_Runs = 0;             // finished runs to wait for; 0: without end
};

long SecondsOf(const RunEvent& event) {
  return static_cast<long>(RunWatcher::Clock::to_time_t(event.m_Time));
}

std::string WordFor(const RunEvent& event) {
  switch (event.m_Kind) {
    case RunEvent::Kind::Added:
      return "added";
    case RunEvent::Kind::Deleted:
      return "deleted";
    default:
      return event.m_Run.m_State;
  }
}

std::string DetailFor(const RunEvent& event, const std::string& reason) {
  if (event.m_Kind != RunEvent::Kind::Finished) {
    return {};
  }
  const std::string started = "  started " + event.m_Run.m_Start;
  return (event.m_Took ? started + ", took " + DurationText(*event.m_Took) : started) +
         (reason.empty() ? "" : ": " + reason);
}

void PrintLine(const RunEvent& event, const std::string& reason, std::ostream& out) {
  constexpr int UsualIdWidth = 20;
  constexpr int UsualStateWidth = 8;
  out << LocalTimeText(SecondsOf(event)) << "  " << std::left << std::setw(UsualIdWidth)
      << event.m_Task << "  ";
  const std::string detail = DetailFor(event, reason);
  out << std::setw(detail.empty() ? 0 : UsualStateWidth) << WordFor(event) << detail << std::endl;
}

void PrintJsonLine(const RunEvent& event, const std::string& reason, std::ostream& out) {
  static constexpr const char* Names[] = {"started", "finished", "added", "deleted"};
  Json line = {{"time", LocalTimeText(SecondsOf(event))},
               {"seconds", SecondsOf(event)},
               {"task", event.m_Task},
               {"event", Names[static_cast<int>(event.m_Kind)]}};
  if (!event.m_Run.m_Start.empty()) {
    line["start"] = event.m_Run.m_Start;
    line["startSeconds"] = event.m_Run.m_Seconds == -1 ? Json() : Json(event.m_Run.m_Seconds);
    line["state"] = event.m_Run.m_State;
  }
  if (event.m_Kind == RunEvent::Kind::Finished) {
    line["endSeconds"] = SecondsOf(event);
    line["reason"] = reason.empty() ? Json() : Json(reason);
  }
  if (event.m_Took) {
    line["milliseconds"] = event.m_Took->count();
  }
  out << line.Dump() << std::endl;
}

class Watch {
 public:
  Watch(const WatchOptions& options, const CommandContext& context)
      : m_Options(options), m_Context(context), m_Agent(context.Agent()) {}

  // Returns when enough runs have finished.
  void Run() {
    // The documents hold local times of the agent's.
    const ChosenZone zone = ChosenZone::AsNamed(m_Agent.Status().Text("zone", ""));
    m_Context.Agent().Follow([this] { KnowTasks(); }, [this](const Json& n) { return Next(n); });
    if (!IsEnough()) {
      throw CommandError(ExitCode::Unreachable,
                         "the agent has ended; start noxagentd to watch again");
    }
  }

 private:
  // After the stream is open, so that no run is missed between the two.
  void KnowTasks() {
    m_Agent.ForEachTask(
        [this](const AgentApi::ListedTask& task) { m_Watcher.Know(task.m_Id, task.m_Document); });
  }

  bool Next(const Json& notification) {
    const Json* const code = notification.Find("code");
    const Json* const id = notification.Find("id");
    if (code != nullptr && code->IsWhole() && id != nullptr && id->IsText() &&
        IsWatched(id->Text())) {
      Tell(code->Long(), id->Text());
    }
    return !IsEnough();
  }

  bool IsWatched(const std::string& id) const {
    const auto& ids = m_Options.m_Ids;
    return ids.empty() || std::find(ids.begin(), ids.end(), id) != ids.end();
  }

  bool IsEnough() const { return m_Options.m_Runs != 0 && m_Finished >= m_Options.m_Runs; }

  void Tell(long code, const std::string& id) {
    const auto now = RunWatcher::Clock::now();
    if (code == TaskAdded) {
      Print({RunEvent::Kind::Added, id, now, {}, {}});
    }
    if (code == TaskDeleted) {
      m_Watcher.Forget(id);
      Print({RunEvent::Kind::Deleted, id, now, {}, {}});
    }
    if (code != TaskChanged) {
      return;
    }
    const auto xml = m_Agent.TaskXml(id);
    if (!xml) {
      return;
    }
    const TaskGlance document = GlanceAt(BaseSDK::AString::FromUtf8(*xml));
    for (const RunEvent& event : m_Watcher.Changed(id, document, now)) {
      Print(event);
    }
  }

  void Print(RunEvent event) {
    std::string reason;
    if (event.m_Kind == RunEvent::Kind::Finished) {
      ++m_Finished;
      reason = TakeOutcome(event);
    }
    if (m_Context.m_Json) {
      PrintJsonLine(event, reason, m_Context.m_Out);
    } else {
      PrintLine(event, reason, m_Context.m_Out);
    }
  }

  // Gives the event the state that the run ended in, and says why it did not end well, as far as
  // the command handler knows.
  std::string TakeOutcome(RunEvent& event) {
    const auto run = ReadHandlerRun(m_Agent.LatestRun(event.m_Task));
    event.m_Run.m_State = TrueState(event.m_Run, run);
    return run && event.m_Run.m_State != "Ok" ? run->ReasonAgainst(event.m_Run.m_State) : "";
  }

  const WatchOptions& m_Options;
  const CommandContext& m_Context;
  AgentApi m_Agent;  // for what is asked meanwhile; another connection follows
  RunWatcher m_Watcher;
  unsigned m_Finished = 0;
};

}  // namespace

void AddWatchCommand(CommandLine& line, CommandContext& context) {
  CommandLine& command =
      line.Command("watch", "Show each run as it happens, until Ctrl-C; --json: one a line");
  const auto options = std::make_shared<WatchOptions>();
  command.Argument("ID", options->m_Ids, "task IDs (default: all tasks)");
  command.Option("--runs", options->m_Runs, "end after so many finished runs").Takes("N");
  command.OnUse([options, &context] { Watch(*options, context).Run(); });
}

}  // namespace NoxAgent
