#pragma once

#include "tests/support/FailingFileSystem.h"
#include "tests/support/MemoryFileSystem.h"
#include "tests/support/scheduler/TestScheduler.h"

#include <functional>
#include <map>
#include <ostream>
#include <string>
#include <vector>

namespace Faults {

/// A scheduler that runs with open gate at 2005-03-01 08:00:00 on files in memory, which fail on
/// demand. Every rig is the same as every other, up to the names of files, so that what a fault
/// changes can be told by comparison.
class Rig {
 public:
  /// Name to content of the task files; what is not one is not in it.
  using Snapshot = std::map<std::string, std::string>;

  Rig();
  Rig(const Rig&) = delete;
  Rig& operator=(const Rig&) = delete;
  ~Rig();

  TestSupport::TestScheduler& Scheduler() { return m_Scheduler; }
  TestSupport::FailingFileSystem& Files() { return m_Failing; }

  Snapshot Look() const;
  void WriteFile(const std::string& name, const std::string& content);
  /// Names in the directory that are no task files.
  std::vector<std::string> Others() const;
  std::size_t OpenHandles() const { return m_Memory.OpenHandles(); }

  /// The process is gone, or ends; the next one starts on the same disk at `localTime`, all well,
  /// gate closed.
  void Restart(const std::string& localTime);

 private:
  TestSupport::MemoryFileSystem m_Memory;
  TestSupport::FailingFileSystem m_Failing{m_Memory};
  BaseSDK::AFileSystem* const m_Before;
  TestSupport::TestScheduler m_Scheduler;
};

/// Something done to the store, from a known state.
struct Operation {
  friend std::ostream& operator<<(std::ostream& out, const Operation& operation) {
    return out << operation.m_Name;
  }

  const char* m_Name;
  std::function<void(Rig&)> m_Prepare;
  /// Its result: 1 for success.
  std::function<long(Rig&)> m_Act;
  /// Whether success is a promise that the change is on the disk.
  bool m_SuccessMeansStored;
  /// Whether a file is written in its place, so that a death within leaves the beginning of it.
  bool m_MayBeCut;
};

const std::vector<Operation>& Operations();

}  // namespace Faults
