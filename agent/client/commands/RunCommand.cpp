#include "agent/client/HandlerRun.h"
#include "agent/client/commands/Commands.h"

#include <BaseSDK/AEvent.h>

#include <memory>

using BaseSDK::AEvent;

namespace NoxAgent {

namespace {

constexpr unsigned long MillisecondsBetweenLooks = 100;

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
    m_Before = m_Agent.LatestRun(m_Options.m_Id);
    m_Agent.RunTask(m_Options.m_Id);
    while (!IsKnown()) {
      (void)m_Pause.Wait(MillisecondsBetweenLooks, BaseSDK::ClockSkewIgnore);
    }
    Tell();
  }

 private:
  // Whether the handler has taken the run up; with --wait, whether it is over.
  bool IsKnown() {
    const auto latest = m_Agent.LatestRun(m_Options.m_Id);
    m_Run = ReadHandlerRun(latest);
    if (!m_Run || latest == m_Before) {
      return false;
    }
    return IsSkipped() || !m_Options.m_Wait || (!m_Run->IsUnderWay() && !m_Run->m_Queued);
  }

  // A start that was left out before is not this one.
  bool IsSkipped() const {
    const auto before = ReadHandlerRun(m_Before);
    return m_Run->m_Skipped && (!before || before->m_Skipped != m_Run->m_Skipped);
  }

  void Tell() {
    const bool hasFailed = !m_Run->IsUnderWay() && m_Run->m_Result != "Ok";
    m_Context.m_ExitCode = IsSkipped() || hasFailed ? ExitCode::Failed : ExitCode::Ok;
    if (m_Context.m_Json) {
      return m_Context.PrintJson({{"id", m_Options.m_Id}, {"run", ToJson(m_Run)}});
    }
    m_Context.m_Out << m_Options.m_Id << ": " << Words() << '\n';
  }

  std::string Words() const {
    if (IsSkipped()) {
      return "left out: " + m_Run->m_SkipReason;
    }
    if (m_Run->m_Queued) {
      return "waits for the end of the run that goes on";
    }
    if (m_Run->m_Phase == HandlerRun::Phase::Waiting) {
      return "waits to be started: " + m_Run->m_Reason;
    }
    return m_Run->IsUnderWay() ? "started" : m_Run->m_Result + ", " + m_Run->m_Reason;
  }

  const RunOptions& m_Options;
  CommandContext& m_Context;
  AgentApi m_Agent;
  std::optional<AgentApi::Attributes> m_Before;
  std::optional<HandlerRun> m_Run;
  AEvent m_Pause{AEvent::AutoReset};  // nobody sets it
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
