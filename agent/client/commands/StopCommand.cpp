#include "agent/client/Await.h"
#include "agent/client/HandlerRun.h"
#include "agent/client/commands/Commands.h"
#include "agent/client/commands/EachId.h"

#include <map>
#include <memory>

namespace NoxAgent {

namespace {

// The runs of tasks that are ended by hand, all at once, and each until it is over.
class StoppedRuns {
 public:
  explicit StoppedRuns(AgentApi agent) : m_Agent(std::move(agent)) {}

  /// Nothing is waited for.
  void Ask(const std::string& id) {
    const auto latest = ReadHandlerRun(m_Agent.LatestRun(id));
    if (m_Agent.StopRun(id)) {
      m_Runs.emplace(id, latest ? latest->m_Runs : 0);
    }
  }

  /// Fails when there was none to end.
  void AwaitEnd(const std::string& id) {
    const auto asked = m_Runs.find(id);
    if (asked == m_Runs.end()) {
      throw CommandError(ExitCode::Failed, "no run of the task " + id + " is under way");
    }
    Await([&] { return IsOver(id, asked->second); });
  }

 private:
  // Whether none of so many first ones goes on: another one may have begun since.
  bool IsOver(const std::string& id, long runs) {
    const auto run = ReadHandlerRun(m_Agent.LatestRun(id));
    return !run || !run->IsUnderWay() || run->m_Number > runs;
  }

  AgentApi m_Agent;
  std::map<std::string, long> m_Runs;  ///< how many there were when they were to end, by task
};

}  // namespace

void AddStopCommand(CommandLine& line, CommandContext& context) {
  CommandLine& command = line.Command("stop", "End the runs of tasks that go on or wait");
  const auto ids = std::make_shared<std::vector<std::string>>();
  command.Argument("ID", *ids, "task IDs").Required();
  command.OnUse([ids, &context] {
    StoppedRuns runs(context.Agent());
    for (const std::string& id : *ids) {
      runs.Ask(id);
    }
    ForEachId(
        *ids, [&](const std::string& id) { runs.AwaitEnd(id); },
        [&](const std::vector<std::string>& done) { PrintDone(done, "stopped", context); },
        context);
  });
}

}  // namespace NoxAgent
