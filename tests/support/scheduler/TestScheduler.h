#pragma once

#include "scheduler/TaskSchedulerObject.h"
#include "tests/support/FakeHandler.h"
#include "tests/support/FakeHost.h"
#include "tests/support/LogCapture.h"
#include "tests/support/TaskXml.h"
#include "tests/support/TempDir.h"

#include <BaseSDK/AString.h>
#include <VirtualTime/VirtualClock.h>
#include <VirtualTime/Zone.h>

#include <memory>
#include <string>
#include <vector>

namespace TestSupport {

/// The real scheduler on virtual time, with a host and a handler that remember, on a directory of
/// its own; the verbs that make a test of it a few lines:
///
///     TestScheduler scheduler("UTC0", "2005-03-01 07:00:00");
///     scheduler.Start();
///     scheduler.OpenGate();
///     scheduler.AddTask("backup", TaskXml().With(TriggerXml::Daily("2005/03/01 08:00:00")));
///     scheduler.RunUntil("2005-03-01 09:00:00");
///     EXPECT_EQ(scheduler.Batches(), (std::vector<std::string>{"backup:0:1:0;"}));
///
/// Belongs to one thread, the clock's controller. Every verb returns with the monitor parked.
class TestScheduler {
 public:
  /// `zone` as a rule; `now` is local, as "2005-03-01 08:00:00".
  TestScheduler(const char* zone, const std::string& now);
  TestScheduler(const TestScheduler&) = delete;
  TestScheduler& operator=(const TestScheduler&) = delete;
  /// Stops it first.
  ~TestScheduler();

  // Life

  /// Makes the object and initialises it; true when it runs. The gate is closed.
  bool Start();
  /// The forced unload. Takes a tenth of a second at least, by the clock.
  void Stop();
  bool IsStarted() const { return m_Object != nullptr; }
  TaskSchedulerObject_i& Object() { return *m_Object; }

  /// Any notification of the agent; the next two are the common ones.
  void Notify(long kind, long code = 0, const std::string& text = {});
  void OpenGate();
  void CloseGate();

  // Tasks. What the operations return, see INoxTaskScheduler.

  long AddTask(const std::string& id, const TaskXml& document);
  long AddTask(const std::string& id, const std::string& document);
  /// Returns the ID that was invented; empty when the task could not be added.
  std::string AddUnnamedTask(const TaskXml& document);
  long DeleteTask(const std::string& id);
  long EnableTask(const std::string& ids, bool enable);
  long SetRunState(const std::string& id, const std::string& state);
  std::string Report();
  /// One value of GetTaskAttributes; empty when the task or the attribute is missing.
  std::string Attribute(const std::string& id, const std::string& name);

  // Time

  static long Local(const std::string& time);
  static std::string Show(long time);
  std::string Now() const { return Show(Clock().Now()); }
  void RunUntil(const std::string& time);
  void RunFor(long seconds);
  static VirtualTime::VirtualClock& Clock() { return VirtualTime::VirtualClock::Instance(); }

  // What there is to see

  FakeHost& Host() { return m_Host; }
  FakeHandler& Handler() { return m_Handler; }
  LogCapture& Log() { return m_Log; }
  const TempDir& Directory() const { return m_Directory; }
  /// The batch texts handed to the handler, each once also when both operations were called.
  std::vector<std::string> Batches() const;
  /// The same with the local time before each: "2005-03-01 08:00:00 backup:0:1:0;".
  std::vector<std::string> TimedBatches() const;
  bool HasFile(const std::string& id) const;
  std::string FileText(const std::string& id) const;
  /// The task files' IDs, sorted.
  std::vector<std::string> Files() const;

 private:
  VirtualTime::Zone m_Zone;
  TempDir m_Directory;
  LogCapture m_Log;
  FakeHost m_Host;
  FakeHandler m_Handler;
  std::unique_ptr<TaskSchedulerObject_i> m_Object;
};

}  // namespace TestSupport
