#pragma once

#include "agent/daemon/returns/ReturnsFile.h"

#include <BaseSDK/AMutex.h>

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace NoxAgent {

/// Which disabled tasks come back by themselves, and when: in memory and, after Open, in a file
/// that outlives the agent. DisableRoute puts them here, TaskReturner enables them when they are
/// due, and CancelledReturns takes out those of which a client has said something else since.
///
/// Moments are seconds since the epoch. [any thread]
class TaskReturns {
 public:
  using Ids = std::vector<std::string>;

  /// `onPut` is called after each Put, so that whoever waits for the next return looks again.
  explicit TaskReturns(std::function<void()> onPut = [] {});
  TaskReturns(const TaskReturns&) = delete;
  TaskReturns& operator=(const TaskReturns&) = delete;

  /// Reads the file and keeps it up to date from now on. Call it once, before the first request.
  void Open(const std::string& path) NOX_EXCLUDES(m_Lock);

  /// When the task comes back; nothing when it does not.
  std::optional<long> Find(const std::string& taskId) const NOX_EXCLUDES(m_Lock);
  /// Those of which the moment has come.
  Ids Due(long now) const NOX_EXCLUDES(m_Lock);
  /// The earliest moment of all; nothing when there is none.
  std::optional<long> Next() const NOX_EXCLUDES(m_Lock);

  /// The tasks come back then, instead of when they did before. All of it is on the disk when this
  /// returns. Throws RequestError when there are too many or the file cannot be written; nothing
  /// has changed then.
  void Put(const Ids& taskIds, long moment) NOX_EXCLUDES(m_Lock);
  /// The tasks do not come back. When the file cannot be written, that is logged and holds until
  /// the agent ends; the next change writes it too.
  void Cancel(const Ids& taskIds) NOX_EXCLUDES(m_Lock);

  /// Whoever changes a task and its return together holds this lock from the first to the last, so
  /// that neither belongs to another change. It comes before every other lock of the agent.
  BaseSDK::AMutex& ChangeLock() { return m_ChangeLock; }

 private:
  int Write(const ReturnsFile::Moments& moments) const NOX_REQUIRES(m_Lock);

  const std::function<void()> m_OnPut;
  BaseSDK::AMutex m_ChangeLock;
  mutable BaseSDK::AMutex m_Lock;
  std::optional<ReturnsFile> m_File NOX_GUARDED_BY(m_Lock);
  ReturnsFile::Moments m_Moments NOX_GUARDED_BY(m_Lock);
};

}  // namespace NoxAgent
