#pragma once

#include "agent/client/TaskSummary.h"

#include <chrono>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace NoxAgent {

/// Something that happened to a task, as `noxctl watch` tells it.
struct RunEvent {
  enum class Kind { Started, Finished, Added, Deleted };

  Kind m_Kind;
  std::string m_Task;
  /// When it was seen; of a Started told in hindsight, the start as the document has it.
  std::chrono::system_clock::time_point m_Time;
  RunEntry m_Run;                                   ///< of Started and Finished
  std::optional<std::chrono::milliseconds> m_Took;  ///< of Finished, when the start can be read
};

/// Makes the story of the runs from the agent's notifications: which started, which finished, with
/// which state and after how long. The caller reads a task's document when a notification names it,
/// and hands it over.
class RunWatcher {
 public:
  using Clock = std::chrono::system_clock;

  /// Remembers a task's run from before, so that it is not told again.
  void Know(const std::string& task, const TaskGlance& document);

  /// A task's document was changed at `now`: returns what happened to its run, in order. A run may
  /// be over before anyone looks; then its start and its end are told together.
  std::vector<RunEvent> Changed(const std::string& task, const TaskGlance& document,
                                Clock::time_point now);
  /// The task was deleted.
  void Forget(const std::string& task) { m_Known.erase(task); }

 private:
  struct Known {
    RunEntry m_Run;
    std::optional<Clock::time_point> m_SeenToStart;
  };

  std::map<std::string, Known> m_Known;
};

}  // namespace NoxAgent
