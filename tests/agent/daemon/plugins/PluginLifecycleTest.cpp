#include "agent/daemon/plugins/PluginLifecycle.h"

#include "agent/daemon/AgentError.h"
#include "tests/agent/daemon/TestAgent.h"
#include "tests/support/FakeHandler.h"
#include "tests/support/ForwardingFileSystem.h"
#include "tests/support/LogCapture.h"

#include <BaseSDK/AEvent.h>
#include <BaseSDK/AThreadRest.h>

#include <gtest/gtest.h>

#include <sys/stat.h>

#include <cerrno>
#include <condition_variable>
#include <mutex>
#include <string_view>
#include <thread>

namespace NoxAgent {
namespace {

// In force while it lives. Whoever opens the file "held.vsk" stays in that call until Release.
class HoldingFileSystem : public TestSupport::ForwardingFileSystem {
 public:
  HoldingFileSystem() : ForwardingFileSystem(BaseSDK::AFileSystem::Current()) {
    (void)Replace(this);
  }
  ~HoldingFileSystem() override { (void)Replace(nullptr); }

  int Open(const char* path, int flags, unsigned mode, int& fd) override {
    if (std::string_view(path).ends_with("/held.vsk")) {
      (void)m_Entered.Set();
      std::unique_lock<std::mutex> lock(m_Lock);
      m_Changed.wait(lock, [this] { return m_Released; });
    }
    return ForwardingFileSystem::Open(path, flags, mode, fd);
  }
  bool AwaitEntry() {
    return m_Entered.Wait(60000, BaseSDK::ClockSkewIgnore) == BaseSDK::AEvent::WasSet;
  }
  void Release() {
    {
      std::lock_guard<std::mutex> lock(m_Lock);
      m_Released = true;
    }
    m_Changed.notify_all();
  }

 private:
  BaseSDK::AEvent m_Entered{BaseSDK::AEvent::ManualReset};
  // Not an event: waiting for one would be rest, and this stands for work.
  std::mutex m_Lock;
  std::condition_variable m_Changed;
  bool m_Released = false;
};

// In force while it lives: no directory can be read.
class BlindFileSystem : public TestSupport::ForwardingFileSystem {
 public:
  BlindFileSystem() : ForwardingFileSystem(BaseSDK::AFileSystem::Current()) { (void)Replace(this); }
  ~BlindFileSystem() override { (void)Replace(nullptr); }

  int OpenDirectory(const char* /*path*/, unsigned long& /*handle*/) override { return EACCES; }
};

constexpr const char* TaskConfig =
    "task_storage_path=%installdir%/tasks\ntask_file_extension=.vsk\n";

std::string ErrorOfLoad(TestAgent& agent) {
  try {
    agent.Load();
    return "(none)";
  } catch (const AgentError& error) {
    return error.what();
  }
}

TEST(PluginLifecycle, TellsTheOthersWhoIsComingAndAllWhenTheStartIsOver) {
  TestAgent agent;
  agent.Add("one").Add("two").Add("three").Load();
  EXPECT_EQ(agent.Report("one"),
            "path (none)\nextension (none)\n"
            "kind 4 code 0 text two\n"
            "kind 4 code 0 text three\n"
            "kind 5 code 0 text two\n"
            "kind 5 code 0 text three\n"
            "AgentStart\n"
            "kind 0 code 0 text \n");
  EXPECT_EQ(agent.Report("three"),
            "path (none)\nextension (none)\nAgentStart\nkind 0 code 0 text \n");
}

TEST(PluginLifecycle, UnloadsInReverseOrderAndTellsWhoIsLeft) {
  TestSupport::LogCapture log;
  TestAgent agent;
  agent.Add("one").Add("two").Load();
  (void)agent.Call("FindFirstTask", Json::Object{});
  EXPECT_TRUE(agent.m_Lifecycle.UnloadAll());
  EXPECT_TRUE(agent.m_Plugins.All().empty());
  const auto messages = log.Messages(BaseSDK::ALogger::Information);
  ASSERT_GE(messages.size(), 2U);
  EXPECT_EQ(messages[messages.size() - 2], "Unloaded the plug-in two");
  EXPECT_EQ(messages[messages.size() - 1], "Unloaded the plug-in one");
}

// A scheduler counts who is coming and going and runs tasks when nobody is: its own going, which
// never finishes for it, keeps it from running tasks whose handlers have gone.
TEST(PluginLifecycle, APluginIsToldOfEveryGoingItsOwnToo) {
  TestSupport::LogCapture log;
  TestAgent agent;
  agent.Add("scheduler", TaskConfig, "NoxTaskScheduler").Add("two").Load();
  EXPECT_TRUE(agent.m_Lifecycle.UnloadAll());
  EXPECT_TRUE(log.Has(BaseSDK::ALogger::Trace, "Started plugin two unregistration"));
  EXPECT_TRUE(log.Has(BaseSDK::ALogger::Trace, "Started plugin scheduler unregistration"));
  EXPECT_TRUE(log.Has(BaseSDK::ALogger::Trace, "Finished plugin two unregistration"));
  EXPECT_TRUE(log.Has(BaseSDK::ALogger::Information,
                      "Number of Install/Uninstall tasks: 1. Task processing remains disabled"));
}

TEST(PluginLifecycle, GivesUpOnAHandlerThatDoesNotComeBack) {
  TestSupport::FakeHandler handler;
  TestAgent agent(TestAgent::ShortDrainMilliseconds);
  agent.Add("one").Load();
  HandlerCalls::Handler* const open = agent.m_HandlerCalls.Track(&handler);
  TestSupport::LogCapture log;
  EXPECT_FALSE(agent.m_Lifecycle.UnloadAll());
  EXPECT_EQ(log.CountContaining("A task handler has not come back within 100 ms"), 1U);
  (void)open->Release();
}

TEST(PluginLifecycle, GivesUpOnARequestThatDoesNotComeBack) {
  TestAgent agent(TestAgent::ShortDrainMilliseconds);
  agent.Add("one").Load();
  const auto plugin = agent.m_Plugins.Find("one");
  agent.Hold();
  TestSupport::LogCapture log;
  EXPECT_FALSE(agent.m_Lifecycle.UnloadAll());
  EXPECT_EQ(log.CountContaining("A request to the plug-in one has not come back within 100 ms"),
            1U);
  EXPECT_TRUE(plugin->Serves("INoxTaskScheduler")) << "it is still loaded";
  agent.Release();
}

// The scheduler waits three seconds for its thread and is gone then, whatever the thread does.
TEST(PluginLifecycle, LeavesASchedulerWhoseThreadIsAtWork) {
  HoldingFileSystem files;
  TestAgent agent(TestAgent::ShortDrainMilliseconds);
  agent.Add("scheduler", TaskConfig, "NoxTaskScheduler");
  std::filesystem::create_directories(agent.m_Dir / "state/tasks");
  agent.m_Dir.Write("state/tasks/held.vsk", "<Task/>");
  agent.Load();
  ASSERT_TRUE(files.AwaitEntry());
  TestSupport::LogCapture log;
  EXPECT_FALSE(agent.m_Lifecycle.UnloadAll());
  EXPECT_EQ(log.CountContaining("A thread of a plug-in has not come to rest within 100 ms"), 1U);
  EXPECT_EQ(log.CountContaining("TaskSchedulerObject_i::Uninitialize()"), 0U);
  EXPECT_EQ(agent.m_Plugins.All().size(), 1U) << "its thread may yet open a handler";
  files.Release();
  PluginLifecycle patient(agent.m_Plugins, agent.m_Notifications, agent.m_Host,
                          agent.m_HandlerCalls, agent.m_Handles, agent.m_Store, 60000);
  EXPECT_TRUE(patient.UnloadAll());
  EXPECT_EQ(log.CountContaining("Failed to stop the thread"), 0U);
}

TEST(PluginLifecycle, LeavesASchedulerWhoseThreadIsAtWorkAlsoWhenItsConfigurationIsBad) {
  HoldingFileSystem files;
  TestAgent agent(TestAgent::ShortDrainMilliseconds);
  agent.Add("scheduler", std::string(TaskConfig) + "typo=1\n", "NoxTaskScheduler");
  std::filesystem::create_directories(agent.m_Dir / "state/tasks");
  agent.m_Dir.Write("state/tasks/held.vsk", "<Task/>");
  TestSupport::LogCapture log;
  EXPECT_NE(ErrorOfLoad(agent).find("unknown key \"typo\""), std::string::npos);
  ASSERT_TRUE(files.AwaitEntry());
  EXPECT_EQ(log.CountContaining("TaskSchedulerObject_i::Uninitialize()"), 0U);
  EXPECT_FALSE(agent.m_Lifecycle.UnloadAll()) << "the process is to end as it stands";
  files.Release();
  EXPECT_TRUE(BaseSDK::AThreadRest::WaitForAll(60000));
}

TEST(PluginLifecycle, MakesTheTaskDirectoryAndClearsWhatACrashLeft) {
  TestAgent agent;
  agent.Add("one", "task_storage_path=%installdir%/var/tasks\ntask_file_extension=.vsk\n");
  std::filesystem::create_directories(agent.m_Dir / "state/var/tasks");
  agent.m_Dir.Write("state/var/tasks/.backup.a1B2c3", "half");
  agent.m_Dir.Write("state/var/tasks/backup.vsk", "whole");
  agent.Load();
  EXPECT_FALSE(agent.m_Dir.Has("state/var/tasks/.backup.a1B2c3"));
  EXPECT_TRUE(agent.m_Dir.Has("state/var/tasks/backup.vsk"));
  EXPECT_NE(agent.Report().find("path " + (agent.m_Dir / "state/var/tasks").string() + "\n"),
            std::string::npos)
      << agent.Report();
}

TEST(PluginLifecycle, DoesNotStartWithATaskDirectoryThatCannotBeRead) {
  const BlindFileSystem files;
  TestAgent agent;
  agent.Add("one", TaskConfig);
  EXPECT_EQ(ErrorOfLoad(agent), "cannot read the task directory " +
                                    (agent.m_Dir / "state/tasks").string() +
                                    ": Permission denied; no task would run");
}

TEST(PluginLifecycle, ADamagedTaskFileIsPutAwayBeforeTheSchedulerReadsIt) {
  TestSupport::LogCapture log;
  TestAgent agent;
  agent.Add("scheduler", TaskConfig, "NoxTaskScheduler");
  std::filesystem::create_directories(agent.m_Dir / "state/tasks");
  agent.m_Dir.Write("state/tasks/cut.vsk", "<Task><Sched");
  agent.Load();
  while (log.CountContaining("The task file cut.vsk:1:") == 0) {
    std::this_thread::yield();
  }
  EXPECT_TRUE(agent.m_Lifecycle.UnloadAll());
  EXPECT_EQ(agent.m_Dir.Read("state/var/refused/cut.vsk"), "<Task><Sched");
  EXPECT_EQ(log.CountContaining("has ended and is deleted"), 0U);
}

TEST(PluginLifecycle, SaysWhyAPluginDoesNotLoad) {
  {
    TestAgent agent;
    agent.Add("bad", "", "Missing");
    EXPECT_EQ(ErrorOfLoad(agent),
              "the plug-in bad: cannot load it: " + TestAgent::PluginPath("Missing") +
                  ": cannot open shared object file: No such file or directory");
  }
  {
    TestAgent agent;
    agent.Add("bad", "", "Missing");
    agent.m_Settings.m_Plugins[0].m_Path = "libanl.so.1";  // of the C library, and not in use
    EXPECT_EQ(ErrorOfLoad(agent),
              "the plug-in bad: libanl.so.1 is no plug-in: it lacks the function PluginMain");
  }
  {
    TestAgent agent;
    agent.Add("bad", "fail=1\n");
    EXPECT_EQ(ErrorOfLoad(agent),
              "the plug-in bad: it did not start (PluginInitialize: -1); see the log, and check "
              "the section \"Configuration\" of " +
                  agent.ConfigPath("bad") + " (fail in line 2, hold in line 3)");
  }
  {
    TestAgent agent;
    agent.Add("bad", "fail=0\ntypo=1\n");
    EXPECT_EQ(ErrorOfLoad(agent),
              "the plug-in bad: " + agent.ConfigPath("bad") +
                  ":3: unknown key \"typo\": the plug-in reads no such setting");
  }
}

// The service manager starts a failed agent again, but not one that has to be configured anew.
TEST(PluginLifecycle, AnUnknownKeyOfAPluginIsAnErrorOfTheConfiguration) {
  TestAgent agent;
  agent.Add("bad", "typo=1\n");
  try {
    agent.Load();
    FAIL() << "loads";
  } catch (const AgentError& error) {
    EXPECT_EQ(error.ExitStatus(), 2) << error.what();
  }
}

TEST(PluginLifecycle, OneSharedObjectIsOnePlugin) {
  TestAgent agent;
  agent.Add("one").Add("two");
  agent.m_Settings.m_Plugins[1].m_Path = agent.m_Settings.m_Plugins[0].m_Path;
  EXPECT_EQ(ErrorOfLoad(agent), "the plug-in two: " + (agent.m_Dir / "one.so").string() +
                                    " is loaded already: it cannot be two plug-ins at once");
  EXPECT_EQ(agent.Call("RefreshTaskList", Json::Object{})["result"], 1) << "the first one lives";
}

TEST(PluginLifecycle, AStartThatFailsGoesBackAllTheWay) {
  TestAgent agent;
  agent.Add("one").Add("bad", "fail=1\n");
  EXPECT_NE(ErrorOfLoad(agent), "(none)");
  EXPECT_EQ(agent.m_Plugins.All().size(), 1U);
  EXPECT_TRUE(agent.m_Lifecycle.UnloadAll());
}

TEST(PluginLifecycle, LoadsAgainInTheSameProcess) {
  for (int round = 0; round < 3; ++round) {
    TestAgent agent;
    agent.Add("one").Load();
    EXPECT_EQ(agent.Call("AddTask", {{"taskId", "a"}, {"taskXml", "b"}})["error"]["code"],
              "bad-document");
    EXPECT_TRUE(agent.m_Lifecycle.UnloadAll()) << round;
  }
}

TEST(PluginLifecycle, ARefreshReadsTheConfigurationInBetween) {
  TestAgent agent;
  agent.Add("one", "task_file_extension=.old\n").Load();
  agent.m_Dir.Write("one.ini", "[Configuration]\ntask_file_extension=.new\n");
  bool read = false;
  agent.m_Lifecycle.Refresh([&] { read = true; });
  EXPECT_TRUE(read);
  const std::string report = agent.Report();
  EXPECT_NE(report.find("kind 1 code 0 text \nAgentRefresh\nkind 2 code 0 text \n"),
            std::string::npos)
      << report;
  (void)agent.Call("SetRunState", {{"taskId", "task_file_extension"}, {"runState", "Ok"}});
  EXPECT_NE(agent.Report().find("setting: .new\n"), std::string::npos) << agent.Report();
}

TEST(PluginLifecycle, ARefreshFinishesAlsoWithABadConfiguration) {
  TestAgent agent;
  agent.Add("one", "task_file_extension=.old\n").Load();
  agent.m_Dir.Write("one.ini", "[Configuration]\ntask_file_extension\n");
  const ApiResponse answer = agent.Ask("POST", "/v1/refresh");
  EXPECT_EQ(answer.m_Status, 422U);
  EXPECT_NE(answer.m_Body.find("one.ini:2: neither"), std::string::npos) << answer.m_Body;
  EXPECT_NE(agent.Report().find("kind 2 code 0 text \n"), std::string::npos);
  (void)agent.Call("SetRunState", {{"taskId", "task_file_extension"}, {"runState", "Ok"}});
  EXPECT_NE(agent.Report().find("setting: .old\n"), std::string::npos) << agent.Report();
}

}  // namespace
}  // namespace NoxAgent
