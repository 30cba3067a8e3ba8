#include "agent/client/commands/Commands.h"

#include <BaseSDK/AEvent.h>

#include <memory>

using BaseSDK::AEvent;

namespace NoxAgent {

namespace {

constexpr unsigned long MillisecondsBetweenLooks = 1000;

struct LogOptions {
  std::string m_Id;
  bool m_Follow = false;
};

// The output of a task's runs, part by part.
class OutputLog {
 public:
  OutputLog(const LogOptions& options, const CommandContext& context)
      : m_Options(options), m_Context(context), m_Agent(context.Agent()) {}

  void Run() {
    if (!PrintNew()) {
      RefuseWithoutTask();
    }
    if (!m_Options.m_Follow) {
      PrintWhole();
      return;
    }
    // Whoever reads this may have gone.
    while (m_Context.m_Out.flush()) {
      (void)m_Pause.Wait(MillisecondsBetweenLooks, BaseSDK::ClockSkewIgnore);
      (void)PrintNew();
    }
  }

 private:
  // All that there is by now. False when no run has put out anything.
  bool PrintNew() {
    for (;;) {
      const auto part = m_Agent.Output(m_Options.m_Id, m_Position);
      if (!part) {
        return false;
      }
      m_Position = part->m_Next;
      if (part->m_Text.empty()) {
        return true;
      }
      Print(part->m_Text);
    }
  }

  void Print(const std::string& text) {
    if (!m_Context.m_Json) {
      m_Context.m_Out << text;
    } else if (m_Options.m_Follow) {
      m_Context.m_Out << JsonOf(text).Dump() << '\n';
    } else {
      m_Whole += text;
    }
  }

  void PrintWhole() const {
    if (m_Context.m_Json) {
      m_Context.PrintJson(JsonOf(m_Whole));
    }
  }

  Json JsonOf(const std::string& text) const { return {{"id", m_Options.m_Id}, {"output", text}}; }

  // The first output of a task can be waited for; that of a mistyped one never comes.
  void RefuseWithoutTask() {
    const std::string& id = m_Options.m_Id;
    if (!m_Agent.TaskXml(id)) {
      throw CommandError(ExitCode::Failed,
                         "there is no task " + id + "; noxctl list shows the tasks");
    }
    if (!m_Options.m_Follow) {
      throw CommandError(ExitCode::Failed, "no run of the task " + id + " has put out anything");
    }
  }

  const LogOptions& m_Options;
  const CommandContext& m_Context;
  AgentApi m_Agent;
  std::string m_Position;
  std::string m_Whole;
  AEvent m_Pause{AEvent::AutoReset};  // nobody sets it
};

}  // namespace

void AddLogCommand(CommandLine& line, CommandContext& context) {
  CommandLine& command =
      line.Command("log", "Print what a task's runs have put out, as far as it is kept");
  const auto options = std::make_shared<LogOptions>();
  command.Argument("ID", options->m_Id, "task ID").Required();
  command.Flag("-f,--follow", options->m_Follow,
               "go on with what comes, until Ctrl-C; --json: one object for each part");
  command.OnUse([options, &context] { OutputLog(*options, context).Run(); });
}

}  // namespace NoxAgent
