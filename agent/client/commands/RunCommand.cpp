#include "agent/client/Await.h"
#include "agent/client/HandlerRun.h"
#include "agent/client/commands/Commands.h"

#include <memory>

namespace NoxAgent {

namespace {

struct RunOptions {
  std::string m_Id;
  bool m_Wait = false;
};

// A run by hand, from the request to what became of it.
class HandRun {
 public:
  HandRun(const RunOptions& options, CommandContext& context)
      : m_Options(options), m_Context(context), m_Agent(context.Agent()) {}

  void Run() {
    if (!m_Agent.TaskXml(m_Options.m_Id)) {
      throw CommandError(ExitCode::Failed,
                         "there is no task " + m_Options.m_Id + "; noxctl list shows the tasks");
    }
    m_Before = Latest();
    m_Agent.RunTask(m_Options.m_Id);
    Await([&] { return IsKnown(); });
    Tell();
  }

 private:
  // None when no run is known.
  HandlerRun Latest() {
    HandlerRun none;
    none.m_Phase = HandlerRun::Phase::None;
    return ReadHandlerRun(m_Agent.LatestRun(m_Options.m_Id)).value_or(none);
  }

  // Whether the handler has taken the run up; with --wait, whether it is over.
  bool IsKnown() {
    m_Run = Latest();
    if (IsSkipped()) {
      return true;
    }
    return m_Options.m_Wait ? IsNew() && !m_Run.IsUnderWay() : IsNew() || IsBeside() || IsQueued();
  }

  // Whether it is a later run than those before, and so the one that was asked for.
  bool IsNew() const { return m_Run.m_Number > m_Before.m_Runs; }
  // Whether that one was beside this earlier run, which goes on.
  bool IsBeside() const { return m_Run.m_Runs > m_Before.m_Runs && m_Run.IsUnderWay(); }
  bool IsQueued() const { return !IsNew() && m_Run.m_Queued && !m_Before.m_Queued; }
  // A start that was left out before, or during the run that was asked for, is not this one.
  bool IsSkipped() const { return !IsNew() && m_Run.m_Skips > m_Before.m_Skips; }

  void Tell() {
    const bool hasFailed = !m_Run.IsUnderWay() && m_Run.m_Result != "Ok";
    m_Context.m_ExitCode = IsSkipped() || hasFailed ? ExitCode::Failed : ExitCode::Ok;
    if (m_Context.m_Json) {
      return m_Context.PrintJson({{"id", m_Options.m_Id}, {"run", ToJson(m_Run)}});
    }
    m_Context.m_Out << m_Options.m_Id << ": " << Words() << '\n';
  }

  std::string Words() const {
    if (IsSkipped()) {
      return "left out: " + m_Run.m_SkipReason;
    }
    if (IsQueued()) {
      return "waits for the end of the run that goes on";
    }
    if (m_Run.m_Phase == HandlerRun::Phase::Waiting) {
      return "waits to be started: " + m_Run.m_Reason;
    }
    return m_Run.IsUnderWay() ? "started" : m_Run.m_Result + ", " + m_Run.m_Reason;
  }

  const RunOptions& m_Options;
  CommandContext& m_Context;
  AgentApi m_Agent;
  HandlerRun m_Before;
  HandlerRun m_Run;
};

}  // namespace

void AddRunCommand(CommandLine& line, CommandContext& context) {
  CommandLine& command =
      line.Command("run", "Run a task's job now, beside its schedule, which stays as it is");
  command.Explain("Exit status 1 also when the run has failed or was left out.");
  const auto options = std::make_shared<RunOptions>();
  command.Argument("ID", options->m_Id, "task ID").Required();
  command.Flag("--wait", options->m_Wait, "wait for the end of the run");
  command.OnUse([options, &context] { HandRun(*options, context).Run(); });
}

}  // namespace NoxAgent
