#pragma once

#include "agent/client/TaskSummary.h"

#include <chrono>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace NoxAgent {

struct RunEvent {
  enum class Kind { Started, Finished, Added, Deleted };

  Kind m_Kind;
  std::string m_Task;
  /// When it was seen; of a Started told in hindsight, the start as the document has it.
  std::chrono::system_clock::time_point m_Time;
  RunEntry m_Run;                                   ///< of Started and Finished
  std::optional<std::chrono::milliseconds> m_Took;  ///< of Finished, when the start can be read
};

/// Turns the agent's notifications into the story of the runs: started, finished, how and how long.
class RunWatcher {
 public:
  using Clock = std::chrono::system_clock;

  /// Remembers a task's run from before, so that it is not told again.
  void Know(const std::string& task, const std::string& taskXml);

  /// A task's document was changed: what happened to its run, in order. A run may be over before
  /// anyone looked: its start and its end are then told together.
  std::vector<RunEvent> Changed(const std::string& task, const std::string& taskXml,
                                Clock::time_point now);
  void Forget(const std::string& task) { m_Known.erase(task); }

 private:
  struct Known {
    RunEntry m_Run;
    std::optional<Clock::time_point> m_SeenToStart;
  };

  std::map<std::string, Known> m_Known;
};

}  // namespace NoxAgent
