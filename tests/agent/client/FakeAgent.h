#pragma once

#include "agent/library/Json.h"

#include <condition_variable>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace NoxAgentTest {

using NoxAgent::Json;

struct FakeRequest {
  std::string m_Method;
  std::string m_Target;
  Json m_Body;
};

struct FakeTask {
  std::string m_Xml;
  bool m_Loaded = true;
  std::map<std::string, std::string> m_Attributes;
  /// What the command handler tells of its latest run; empty: it knows of none.
  std::map<std::string, std::string> m_Run = {};
  /// What its runs have put out, in parts: an answer has one of them.
  std::vector<std::string> m_Output = {};
  /// When it comes back, since the epoch; 0: it does not.
  long m_Returns = 0;
};

/// An agent of a few lines: answers HTTP on a Unix socket from tasks in memory and records what it
/// was asked.
class FakeAgent {
 public:
  /// A step of the notification stream: first `m_Before` is done with the tasks, then the line is
  /// sent. The next step waits until the client has read documents or latest runs `m_Reads` times
  /// since; a list of all tasks counts for each of them.
  struct Step {
    std::function<void(FakeAgent&)> m_Before;
    std::string m_Line;
    unsigned m_Reads = 0;
  };

  explicit FakeAgent(const std::string& socketPath);
  ~FakeAgent();
  FakeAgent(const FakeAgent&) = delete;
  FakeAgent& operator=(const FakeAgent&) = delete;

  /// What follows is set before the client is started, or in a step.
  void SetTask(const std::string& id, FakeTask task);
  void RemoveTask(const std::string& id);
  void SetSteps(std::vector<Step> steps) { m_Steps = std::move(steps); }
  /// What the scheduler says of itself in the status.
  void SetReport(const std::string& report) {
    const std::lock_guard guard(m_Lock);
    m_Report = report;
  }
  /// More members of the status, such as "zone" and "nextReading".
  void SetStatus(const Json::Object& members) {
    const std::lock_guard guard(m_Lock);
    m_MoreStatus = members;
  }
  /// The answer to GET /v1/files; an empty object unless set.
  void SetFiles(const Json& files) {
    const std::lock_guard guard(m_Lock);
    m_Files = files;
  }
  /// Every request is answered with this instead.
  void AnswerAlways(unsigned status, const std::string& body);
  /// One more line, behind the tasks in the list of all.
  void SetLastLine(const std::string& line) {
    const std::lock_guard guard(m_Lock);
    m_LastLine = line;
  }
  /// A call of an operation of the scheduler for this task is answered with an empty object.
  void AnswerNothingFor(const std::string& id) {
    const std::lock_guard guard(m_Lock);
    m_Unanswered = id;
  }
  /// A request that adds this task is refused, as one that never runs.
  void RefuseToAdd(const std::string& id) {
    const std::lock_guard guard(m_Lock);
    m_Refused = id;
  }
  /// This task cannot be added, others of the same request can.
  void FailToAdd(const std::string& id) {
    const std::lock_guard guard(m_Lock);
    m_NotWritten = id;
  }
  /// The job of a task; nothing when it has none.
  std::optional<std::string> Job(const std::string& id) const;
  void SetJob(const std::string& id, const std::string& text);
  /// What somebody else does as soon as a job has been read; once.
  void SetAfterJobRead(std::function<void(FakeAgent&)> change) {
    const std::lock_guard guard(m_Lock);
    m_AfterJobRead = std::move(change);
  }
  /// What becomes of a task that is run by hand.
  void SetRunByHand(const std::map<std::string, std::string>& run) {
    const std::lock_guard guard(m_Lock);
    m_RunByHand = run;
  }
  /// So many questions after a run that is ended by hand find it going on still.
  void SetLooksUntilEnd(unsigned looks) {
    const std::lock_guard guard(m_Lock);
    m_LooksUntilEnd = looks;
  }
  /// What there is of a task once its run was ended by hand, instead of that run's end.
  void SetRunAfterStop(const std::map<std::string, std::string>& run) {
    const std::lock_guard guard(m_Lock);
    m_RunAfterStop = run;
  }
  /// Jobs are for others.
  void KeepJobs() {
    const std::lock_guard guard(m_Lock);
    m_KeepsJobs = true;
  }
  /// The document of a task, as it was added.
  std::string Document(const std::string& id) const;
  /// Sends these bytes for an answer and closes the connection.
  void AnswerRaw(const std::string& bytes);

  /// Answers so many requests for this target, and none after them.
  void EndAfter(const std::string& target, unsigned requests = 1) {
    const std::lock_guard guard(m_Lock);
    m_LastTarget = target;
    m_RequestsToLast = requests;
  }

  /// After so many answers a connection is closed; 1000 unless set.
  void SetRequestsPerConnection(unsigned count) { m_RequestsPerConnection = count; }

  std::vector<FakeRequest> Requests() const;
  /// How often a client has connected.
  std::size_t Connections() const;

 private:
  void Accept();
  void Serve(int connection);
  /// False when no other request can follow. `input` is what was received and not looked at yet.
  bool ServeRequest(int connection, bool isLast, std::string& input);
  bool HasEnded() const;
  std::string Answer(const FakeRequest& request);
  Json Status() const;
  static std::string TaskLine(const std::string& id, const FakeTask& task);
  std::string TaskLines() const;
  Json LatestRun(const std::string& id);
  Json StopRun(const std::string& id);
  Json Output(const Json& in) const;
  Json Operation(const std::string& name, const Json& in);
  std::string JobAnswer(const std::string& operation, const Json& in);
  void ChangeAfter(const FakeRequest& request);
  std::string DisableTasks(const Json& in);
  std::string AddTasks(const Json& in);
  Json AddTask(const Json& task);
  void Stream(int connection);

  int m_Listener = -1;
  std::thread m_Acceptor;
  std::vector<Step> m_Steps;
  std::optional<std::string> m_Raw;
  unsigned m_RequestsPerConnection = 1000;
  std::string m_Report;
  Json m_Files = Json::Object{};
  std::string m_LastTarget;
  unsigned m_RequestsToLast = 1;
  std::string m_LastLine;
  std::string m_Unanswered;
  std::string m_Refused;
  std::string m_NotWritten;
  Json::Object m_MoreStatus;

  mutable std::mutex m_Lock;
  std::condition_variable m_Read;
  bool m_Ending = false;
  bool m_HasEnded = false;  ///< it has answered what it was to answer
  unsigned m_Reads = 0;
  std::map<std::string, FakeTask> m_Tasks;
  std::map<std::string, std::string> m_Jobs;
  std::function<void(FakeAgent&)> m_AfterJobRead;
  bool m_KeepsJobs = false;
  std::map<std::string, std::string> m_RunByHand;
  std::map<std::string, unsigned> m_Stopped;  ///< tasks whose run is being ended, and for how long
  std::map<std::string, std::string> m_RunAfterStop;
  unsigned m_LooksUntilEnd = 0;
  std::vector<FakeRequest> m_Requests;
  unsigned m_FixedStatus = 0;
  std::string m_FixedBody;
  std::vector<int> m_Connections;
  std::vector<std::thread> m_Servers;
};

}  // namespace NoxAgentTest
