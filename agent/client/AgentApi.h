#pragma once

#include "agent/client/ExitCode.h"
#include "agent/client/HttpConnection.h"
#include "agent/client/TaskSummary.h"
#include "agent/library/Json.h"

#include <cstddef>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace NoxAgent {

/// The agent finds fault with one of the tasks that it is to add.
class TaskRefusal : public CommandError {
 public:
  TaskRefusal(const CommandError& error, std::size_t index) : CommandError(error), m_Index(index) {}

  /// Which of the tasks it is.
  std::size_t Index() const { return m_Index; }

 private:
  std::size_t m_Index;
};

/// The agent as noxctl sees it: plain calls, each of which sends a request to the control socket;
/// only AddTasks may send several. docs/http.md describes the requests.
///
/// All texts are UTF-8. Every call throws CommandError when the agent cannot be reached
/// (Unreachable) or answers with an error. That one has the agent's message; it is Usage when the
/// agent finds fault with what it was given (an ID, a document, a state), else Failed. An answer
/// that does not come from an agent throws JsonError.
///
/// Calls in a row share a connection. One thread at a time.
class AgentApi {
 public:
  explicit AgentApi(std::string socketPath) : m_SocketPath(std::move(socketPath)) {}

  struct NewTask {
    std::string m_Id;   ///< empty: the agent invents one
    std::string m_Xml;  ///< in ASCII
    /// What TaskXml gave before the task was edited: it is replaced only while it says that still.
    std::optional<std::string> m_Replaces = {};
  };
  /// What became of it.
  struct AddedTask {
    std::string m_Id;  ///< under which it is stored
    /// What is wrong with the task's job, a sentence each.
    std::vector<std::string> m_JobWarnings;
    /// When the agent could not add it as it is to be; nothing else is told then.
    std::optional<CommandError> m_Error;
  };
  using TakeAddedTask = std::function<void(std::size_t index, const AddedTask&)>;
  /// Adds the tasks, or replaces those of their IDs, with a request for as many as one has room
  /// for, and hands over what became of each, in their order. With `force` the agent takes also
  /// documents that never run. Throws TaskRefusal when the agent finds fault with one of them:
  /// nothing of its request was added and nothing behind it was sent.
  void AddTasks(const std::vector<NewTask>& tasks, bool force, const TakeAddedTask& take);
  std::vector<std::string> TaskIds();  ///< in alphabetical order
  /// The task's document; nothing when there is no such task, or when `id` cannot be a task's ID.
  std::optional<std::string> TaskXml(const std::string& id);
  /// Keys and values, both texts.
  using Attributes = std::map<std::string, std::string>;
  /// The scheduler's report on a task (t0, t1 and so on); nothing when it does not hold the task in
  /// memory, or when `id` cannot be a task's ID.
  std::optional<Attributes> TaskAttributes(const std::string& id);

  /// What a list tells of a task.
  struct ListedTask {
    std::string m_Id;
    TaskGlance m_Document;               ///< no older than what follows
    std::optional<TaskReport> m_Report;  ///< nothing when the scheduler does not hold it in memory
    std::optional<Attributes> m_Run;     ///< as of LatestRun
    long m_Returns = 0;                  ///< when the agent enables it again; 0: never
  };
  /// Hands over each task, in alphabetical order of the IDs, as the agent's answer comes in.
  void ForEachTask(const std::function<void(const ListedTask&)>& take);

  /// When the agent enables the task again, since the epoch; 0 when it does not, or does not tell.
  long ReturnOf(const std::string& id);

  /// The next three are false when there is no such task; EnableTask also when nothing changed.
  bool DeleteTask(const std::string& id);
  bool EnableTask(const std::string& id, bool enable);
  bool SetRunState(const std::string& id, const std::string& state);

  /// Disables the task until the moment (since the epoch), at which the agent enables it again.
  /// False when the scheduler does not hold it in memory.
  bool DisableTaskUntil(const std::string& id, long until);

  /// What the command handler tells of the task's latest run ("state", "reason" and so on: GetRun
  /// of INoxCommandHandler); nothing when it knows of none, or cannot be asked.
  std::optional<Attributes> LatestRun(const std::string& id);
  /// Hands the task to the command handler, as the scheduler does when it is due. What becomes of
  /// it, LatestRun tells, a moment later.
  void RunTask(const std::string& id);
  /// Has the task's run end that goes on or waits; LatestRun tells when it is over. False when none
  /// is under way, or when `id` cannot be a task's ID.
  bool StopRun(const std::string& id);
  /// Makes the text the task's job, or replaces the job that it has. Throws CommandError, Usage,
  /// with the command handler's words when it is no job or cannot be written.
  void PutJob(const std::string& id, const std::string& text);
  /// The text of the task's job as it stands; nothing when it has none, or when `id` cannot be a
  /// task's ID.
  std::optional<std::string> JobText(const std::string& id);
  /// False when the task has no job, or when `id` cannot be a task's ID.
  bool DeleteJob(const std::string& id);
  /// A part of what a task's runs have put out.
  struct OutputPart {
    std::string m_Text;  ///< empty when there is no more yet
    std::string m_Next;  ///< the position of the next part
  };
  /// The part from `position` on; an empty one, and one that is no longer kept, is the beginning of
  /// what is kept. Nothing when no run has put out anything, or when `id` cannot be a task's ID.
  std::optional<OutputPart> Output(const std::string& id, const std::string& position);
  /// Which files are not tasks: {"refused": [...], "strays": [...]}.
  Json Files();
  /// Adds a refused file as a task and returns its ID.
  std::string TakeBackFile(const std::string& name);
  /// Removes a file that is no task. `from` is "refused" or "tasks", the part of Files() that lists
  /// it.
  void RemoveFile(const std::string& name, const std::string& from);

  /// The agent's status (GET /v1/status); with the IDs of all tasks when asked.
  Json Status(bool withTasks = false);
  /// The names of files that are no tasks, each with the reason: those that were refused and those
  /// that lie among the task files. Empty also when the agent does not tell.
  std::vector<std::pair<std::string, std::string>> FilesThatAreNoTasks();
  /// Has the agent carry out a policy refresh. "notInEffect" in the answer lists what takes effect
  /// at its next start.
  Json Refresh();
  /// Has the agent tell its plug-ins of an event (NotifyObject), as administrators and tests ask it
  /// to.
  void Notify(long kind, long code, const std::string& text);

  /// Hands each notification to `next`, as the agent wrote it, until `next` returns false or the
  /// agent ends. `opened` is called once, as soon as no notification can be missed any more.
  void Follow(const std::function<void()>& opened, const std::function<bool(const Json&)>& next);

 private:
  /// The whole answer to an operation of the scheduler: "result" and "out".
  Json Call(const std::string& operation, const Json& arguments);
  HttpResponse PostAbout(const std::string& target, const std::string& taskId);
  HttpConnection& Connection();

  std::string m_SocketPath;
  std::unique_ptr<HttpConnection> m_Connection;  ///< of the last call, null before the first
};

/// The number that an attribute says; `absent` when it is not among them.
long AttributeNumber(const AgentApi::Attributes& attributes, const char* key, long absent);

}  // namespace NoxAgent
