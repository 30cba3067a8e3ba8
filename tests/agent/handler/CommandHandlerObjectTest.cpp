// The plug-in as the agent meets it: through its shared object.
#include "agent/handler/CommandHandlerObject.h"

#include "tests/agent/handler/run/SupervisorFixture.h"
#include "tests/support/ThreadCount.h"

#include <AgentInterfacesV3/AMsgIn.h>
#include <AgentInterfacesV3/AMsgQueue.h>
#include <AgentInterfacesV3/AMsgReply.h>
#include <AgentInterfacesV3/CIClient.h>
#include <AgentInterfacesV3/INoxCommandHandler.h>
#include <AgentInterfacesV3/INoxScheduledTaskHandler.h>
#include <AgentInterfacesV3/InterfaceIds.h>
#include <AgentInterfacesV3/MakeProxy.h>

#include <gtest/gtest.h>

#include <dlfcn.h>
#include <sys/resource.h>

#include <algorithm>
#include <filesystem>
#include <string>

using BaseSDK::AGuid;
using BaseSDK::AString;
using namespace Corvane::AgentInterfacesV3;

namespace NoxHandlerTest {

using namespace NoxHandler;

namespace {

constexpr int Queue = 7;

std::size_t CountEntries(const char* directory) {
  const std::filesystem::directory_iterator entries(directory);
  return static_cast<std::size_t>(std::distance(begin(entries), end(entries)));
}

class CommandHandlerObject : public SupervisorFixture {
 protected:
  using InitializeFunction = int (*)(int);
  using UninitializeFunction = int (*)(bool);
  using AttributeFunction = int (*)(const char*, AString&);

  CommandHandlerObject() {
    m_Scheduler.SetConfig("job_path", (m_Directory / "jobs").string());
    m_Scheduler.SetConfig("output_path", (m_Directory / "output").string());
  }

  ~CommandHandlerObject() override { Unload(); }

  void Load() {
    m_Library = dlopen(NOX_COMMAND_HANDLER, RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(m_Library, nullptr) << dlerror();
    m_Queue = std::make_unique<AMsgQueue>(Queue);
  }
  int Initialize() { return Find<InitializeFunction>("PluginInitialize")(Queue); }
  int Uninitialize(bool forced) { return Find<UninitializeFunction>("PluginUninitialize")(forced); }
  INoxInterfaceFactory* Factory() {
    AString text;
    EXPECT_EQ(Find<AttributeFunction>("PluginGetAttributeV3")("InterfaceFactory", text), 1);
    return reinterpret_cast<INoxInterfaceFactory*>(std::stoul(text.ToUtf8(), nullptr, 16));
  }
  void Unload() {
    if (m_Library != nullptr) {
      m_Queue->Close();
      EXPECT_EQ(Uninitialize(true), 1);
      m_Queue.reset();
      EXPECT_EQ(dlclose(m_Library), 0);
      m_Library = nullptr;
    }
  }
  long RunTasks(const char* operation, const char* batch) {
    AMsgReply reply;
    AMsgIn request("INoxScheduledTaskHandler", operation, reply);
    request.Set("batch", AString(batch));
    EXPECT_EQ(m_Queue->Send(request), 1);
    return reply.Result();
  }

  template <class Function>
  Function Find(const char* name) {
    return reinterpret_cast<Function>(dlsym(m_Library, name));
  }

  void* m_Library = nullptr;
  std::unique_ptr<AMsgQueue> m_Queue;
};

}  // namespace

TEST_F(CommandHandlerObject, DeclinesABatchAndRunsIt) {
  AddJob("a", "echo $NOX_LATE > $STARTED");
  AddJob("b", "exit 1");
  Load();
  ASSERT_EQ(Initialize(), 1);
  EXPECT_EQ(RunTasks("RunTasksEx", "a:1:0:0;"), TASK_HANDLER_DECLINED);
  EXPECT_EQ(m_Scheduler.WaitForStates(1), std::vector<std::string>{"a Ok"});
  EXPECT_EQ(Started(), "1");
  EXPECT_EQ(RunTasks("RunTasks", "b:0:1:0;"), TASK_HANDLER_DECLINED);
  EXPECT_EQ(m_Scheduler.WaitForStates(2).back(), "b Failed");
}

TEST_F(CommandHandlerObject, LeavesOutWhatItCannotReadOfABatch) {
  AddJob("a", "exit 0");
  Load();
  ASSERT_EQ(Initialize(), 1);
  EXPECT_EQ(RunTasks("RunTasksEx", "..%2Fx:0:0:0;a:0:0:0;"), TASK_HANDLER_DECLINED);
  EXPECT_EQ(m_Scheduler.WaitForStates(1), std::vector<std::string>{"a Ok"});
  EXPECT_EQ(LogCount("Cannot read the entry \"..%2Fx:0:0:0\" of a batch"), 1u);
}

TEST_F(CommandHandlerObject, ReportsWhatRuns) {
  AddJob("a", "echo $$ > $STARTED; read line < $GATE");
  Load();
  ASSERT_EQ(Initialize(), 1);
  void* object = nullptr;
  ASSERT_EQ(MakeProxy(Queue, INoxScheduledTaskHandler::GetIID(), object), 1);
  const CIClient<INoxScheduledTaskHandler> handler(static_cast<INoxScheduledTaskHandler*>(object));
  AString report;
  EXPECT_EQ(handler->ObjectDebugInfo(report), 1);
  EXPECT_EQ(report, AString("Command handler: 0 running, 0 waiting\n"));
  (void)handler->RunTasksEx("a:0:1:0;");
  const std::string pid = Started();
  ASSERT_TRUE(WaitUntil([&] {
    return handler->ObjectDebugInfo(report) == 1 && report.Find("1 running") != AString::npos;
  }));
  EXPECT_EQ(
      report,
      AString(
          ("Command handler: 1 running, 0 waiting\n  task 'a', process " + pid + "\n").c_str()));
  EXPECT_EQ(handler->NotifyObject(0, 0, ""), 0);
  OpenGate();
  (void)m_Scheduler.WaitForStates(1);
}

TEST_F(CommandHandlerObject, TellsOfRuns) {
  AddJob("a", "exit 3");
  Load();
  ASSERT_EQ(Initialize(), 1);
  CIClient<INoxCommandHandler> handler;
  ASSERT_EQ(MakeProxy(Queue, INoxCommandHandler::GetIID(), handler.Slot()), 1);
  AStringMap run;
  EXPECT_EQ(handler->GetRun("a", run), -1);
  EXPECT_TRUE(run.empty());
  (void)RunTasks("RunTasksEx", "a:0:1:0;");
  EXPECT_EQ(m_Scheduler.WaitForStates(1), std::vector<std::string>{"a Failed"});
  EXPECT_EQ(handler->GetRun("a", run), 1);
  EXPECT_EQ(run["state"], AString("ended"));
  EXPECT_EQ(run["result"], AString("Failed"));
  EXPECT_EQ(run["reason"].Find("exit status 3 after "), 0u);
}

TEST_F(CommandHandlerObject, EndsRuns) {
  AddGatedJob("a");
  Load();
  ASSERT_EQ(Initialize(), 1);
  CIClient<INoxCommandHandler> handler;
  ASSERT_EQ(MakeProxy(Queue, INoxCommandHandler::GetIID(), handler.Slot()), 1);
  EXPECT_EQ(handler->StopRun("a"), -1);
  (void)RunTasks("RunTasksEx", "a:0:1:0;");
  (void)Started();
  ASSERT_TRUE(WaitUntil([&] {
    AStringMap run;
    return handler->GetRun("a", run) == 1 && run["state"] == AString("running");
  }));
  EXPECT_EQ(handler->StopRun("a"), 1);
  EXPECT_EQ(m_Scheduler.WaitForStates(1), std::vector<std::string>{"a Failed"});
  EXPECT_EQ(handler->StopRun("a"), -1);
}

TEST_F(CommandHandlerObject, SaysWhetherAJobCanBeRun) {
  AddJob("good", "exit 0");
  AddJob("stranger", "exit 0", "user = nosuchuser");
  AddJob("bad", "exit 0", "overlap = maybe");
  Load();
  ASSERT_EQ(Initialize(), 1);
  CIClient<INoxCommandHandler> handler;
  ASSERT_EQ(MakeProxy(Queue, INoxCommandHandler::GetIID(), handler.Slot()), 1);
  AString problem("of before");
  EXPECT_EQ(handler->CheckJob("good", problem), 1);
  EXPECT_EQ(problem, AString());
  const std::string jobs = (m_Directory / "jobs").string();
  const struct {
    const char* m_TaskId;
    std::string m_Problem;
  } rows[] = {
      {"none", "there is no job file " + jobs + "/none.job"},
      {"stranger", jobs + "/stranger.job:4: user: there is no user \"nosuchuser\""},
      {"bad", jobs + "/bad.job:4: overlap: is to be skip, queue, kill or allow"},
      {"../x", "no job file can bear the ID \"../x\""},
      {"", "no job file can bear the ID \"\""},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(handler->CheckJob(row.m_TaskId, problem), -1);
    EXPECT_EQ(problem.ToUtf8(), row.m_Problem);
  }
}

TEST_F(CommandHandlerObject, TakesJobsAndRunsThem) {
  m_Scheduler.AddStoredTask("a");
  Load();
  ASSERT_EQ(Initialize(), 1);
  CIClient<INoxCommandHandler> handler;
  ASSERT_EQ(MakeProxy(Queue, INoxCommandHandler::GetIID(), handler.Slot()), 1);
  AString problem("of before");
  AString text;
  EXPECT_EQ(handler->GetJob("a", text, problem), -1);
  EXPECT_EQ(problem, AString("the task \"a\" has no job"));
  EXPECT_EQ(handler->PutJob("a", "[Job]\ncommand = false\n", problem), 1);
  EXPECT_EQ(problem, AString());
  EXPECT_EQ(handler->GetJob("a", text, problem), 1);
  EXPECT_EQ(text, AString("[Job]\ncommand = false\n"));
  (void)RunTasks("RunTasksEx", "a:0:1:0;");
  EXPECT_EQ(m_Scheduler.WaitForStates(1), std::vector<std::string>{"a Failed"});
  EXPECT_EQ(handler->PutJob("a", "[Job]\ncommand = true\n", problem), 1);
  (void)RunTasks("RunTasksEx", "a:0:1:0;");
  EXPECT_EQ(m_Scheduler.WaitForStates(2).back(), "a Ok");
  EXPECT_EQ(handler->DeleteJob("a", problem), 1);
  EXPECT_EQ(handler->DeleteJob("a", problem), -1);
  EXPECT_EQ(problem, AString("the task \"a\" has no job"));
}

TEST_F(CommandHandlerObject, GivesTheOutputOfATaskInParts) {
  AddJob("a", "echo one");
  Load();
  ASSERT_EQ(Initialize(), 1);
  CIClient<INoxCommandHandler> handler;
  ASSERT_EQ(MakeProxy(Queue, INoxCommandHandler::GetIID(), handler.Slot()), 1);
  AString text("of before");
  AString next;
  EXPECT_EQ(handler->GetOutput("a", "", text, next), -1);
  EXPECT_EQ(text, AString());
  EXPECT_EQ(handler->GetOutput("../a", "", text, next), -1);
  (void)RunTasks("RunTasksEx", "a:0:1:0;");
  ASSERT_EQ(m_Scheduler.WaitForStates(1), std::vector<std::string>{"a Ok"});
  EXPECT_EQ(handler->GetOutput("a", "", text, next), 1);
  EXPECT_EQ(text.Find("one\n-- "), 0u);
  EXPECT_EQ(next.ToUtf8(), std::to_string(text.Length()));
  EXPECT_EQ(handler->GetOutput("a", next, text, next), 1);
  EXPECT_EQ(text, AString());
  for (const char* const beginning : {"0", "nonsense", "99999999999999999999999", "-1"}) {
    EXPECT_EQ(handler->GetOutput("a", beginning, text, next), 1);
    EXPECT_EQ(text.Find("one\n-- "), 0u) << beginning;
  }
}

TEST_F(CommandHandlerObject, SaysWhyAJobIsOutOfReach) {
  Load();
  ASSERT_EQ(Initialize(), 1);
  CIClient<INoxCommandHandler> handler;
  ASSERT_EQ(MakeProxy(Queue, INoxCommandHandler::GetIID(), handler.Slot()), 1);
  AString problem;
  AString text;
  EXPECT_EQ(handler->PutJob("a", "[Job]\n", problem), -1);
  const std::string file = (m_Directory / "jobs" / "a.job").string();
  EXPECT_EQ(problem.ToUtf8(), file + ": the section \"Job\" has no \"command\"");
  EXPECT_EQ(handler->PutJob("../a", "[Job]\ncommand = true\n", problem), -1);
  EXPECT_EQ(problem, AString("no job file can bear the ID \"../a\""));
  EXPECT_EQ(handler->GetJob("../a", text, problem), -2);
  EXPECT_EQ(problem, AString("no job file can bear the ID \"../a\""));
  EXPECT_EQ(handler->DeleteJob("../a", problem), -2);
  EXPECT_EQ(problem, AString("no job file can bear the ID \"../a\""));
}

TEST_F(CommandHandlerObject, ServesItsThreeInterfaces) {
  Load();
  ASSERT_EQ(Initialize(), 1);
  INoxInterfaceFactory* const factory = Factory();
  EXPECT_EQ(factory->GetVersion(), 3);
  void* object = nullptr;
  for (const AGuid& id : {IID_INoxScheduledTaskHandler, IID_INoxCommandHandler, IID_INoxObject}) {
    EXPECT_EQ(factory->QueryInterface(id, object), 0);
    EXPECT_NE(object, nullptr);
    EXPECT_EQ(factory->QueryInterface(id.Value(), object), 0);
    EXPECT_NE(object, nullptr);
  }
  EXPECT_EQ(factory->QueryInterface(IID_INoxTaskScheduler, object), -1);
  EXPECT_EQ(object, nullptr);
  AString value("left");
  EXPECT_EQ(Find<AttributeFunction>("PluginGetAttributeV3")("interfacefactory", value), -1);
  EXPECT_EQ(value, AString("left"));
}

TEST_F(CommandHandlerObject, RefusesAnUnforcedUnloadWhileSomethingRuns) {
  AddJob("a", "echo $$ > $STARTED; read line < $GATE");
  Load();
  ASSERT_EQ(Initialize(), 1);
  (void)RunTasks("RunTasksEx", "a:0:1:0;");
  const std::string pid = Started();
  EXPECT_EQ(Uninitialize(false), -1);
  EXPECT_TRUE(IsAlive(pid));
  Unload();
  EXPECT_FALSE(IsAlive(pid));
  EXPECT_EQ(m_Scheduler.States(), std::vector<std::string>{"a Failed"});
}

TEST_F(CommandHandlerObject, ConsentsToAnUnforcedUnloadWhenNothingRuns) {
  Load();
  ASSERT_EQ(Initialize(), 1);
  EXPECT_EQ(Uninitialize(false), 1);
}

TEST_F(CommandHandlerObject, LeavesNothingBehindAndCanBeLoadedAgain) {
  AddJob("a", "exit 0");
  const std::size_t threads = TestSupport::CountThreads();
  const std::size_t descriptors = CountEntries("/proc/self/fd");
  for (std::size_t round = 1; round <= 3; ++round) {
    Load();
    ASSERT_EQ(Initialize(), 1);
    (void)RunTasks("RunTasksEx", "a:0:1:0;");
    ASSERT_EQ(m_Scheduler.WaitForStates(round).size(), round);
    Unload();
    EXPECT_EQ(TestSupport::CountThreads(), threads);
    EXPECT_EQ(CountEntries("/proc/self/fd"), descriptors);
    EXPECT_EQ(dlopen(NOX_COMMAND_HANDLER, RTLD_NOW | RTLD_NOLOAD), nullptr);
  }
}

TEST_F(CommandHandlerObject, MakesItsDirectories) {
  m_Scheduler.SetConfig("job_path", (m_Directory / "var/jobs").string());
  m_Scheduler.SetConfig("output_path", (m_Directory / "var/output").string());
  Load();
  ASSERT_EQ(Initialize(), 1);
  EXPECT_TRUE(m_Directory.Has("var/jobs"));
  EXPECT_TRUE(m_Directory.Has("var/output/.running"));
}

TEST_F(CommandHandlerObject, SaysWhatIsWrongWithItsConfiguration) {
  const struct {
    const char* m_Key;
    const char* m_Value;
    const char* m_Message;
  } rows[] = {
      {"job_path", "", "job_path: the configuration does not say which directory"},
      {"output_path", "var/output", "output_path: \"var/output\" is not an absolute path"},
      {"record_path", "/proc/x", "record_path: cannot make the directory /proc/x: "},
      {"cgroup_path", "system.slice", "cgroup_path: \"system.slice\" is not an absolute path"},
      {"cgroup_path", "/proc/x", "cgroup_path: there is no directory /proc/x"},
      {"kill_grace_seconds", "5s", "kill_grace_seconds: \"5s\" is not a number from 0 to 3600"},
      {"kill_grace_seconds", "-1", "kill_grace_seconds: \"-1\" is not a number from 0 to 3600"},
      {"kill_grace_seconds", "3601", "kill_grace_seconds: \"3601\" is not a number from 0 to 3600"},
      {"job_output", "off", "job_output: \"off\" is neither yes nor no"},
      {"max_runs", "0", "max_runs: \"0\" is not a number from 1 to 100000"},
      {"scheduler_class_id", "x", "scheduler_class_id: \"x\" is not a class identifier"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.m_Message);
    const std::string before = m_Scheduler.GetConfigString("Configuration", row.m_Key, "").ToUtf8();
    m_Scheduler.SetConfig(row.m_Key, row.m_Value);
    Load();
    EXPECT_EQ(Initialize(), -1);
    EXPECT_EQ(LogCount(std::string("The command handler cannot start: ") + row.m_Message), 1u);
    Unload();
    if (before.empty()) {
      m_Scheduler.ForgetConfig(row.m_Key);
    } else {
      m_Scheduler.SetConfig(row.m_Key, before);
    }
  }
}

TEST_F(CommandHandlerObject, RefusesMoreRunsThanDescriptorsCarry) {
  rlimit before{};
  ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &before), 0);
  rlimit few = before;
  few.rlim_cur = 500;
  ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &few), 0);
  m_Scheduler.SetConfig("max_runs", "76");
  Load();
  EXPECT_EQ(Initialize(), -1);
  EXPECT_EQ(LogCount("The command handler cannot start: max_runs: 76 runs do not fit into 500 file "
                     "descriptors: a run takes 4, and the agent needs some itself; 75 at most"),
            1u);
  Unload();
  m_Scheduler.SetConfig("max_runs", "75");
  Load();
  EXPECT_EQ(Initialize(), 1);
  Unload();
  m_Scheduler.ForgetConfig("max_runs");
  Load();
  EXPECT_EQ(Initialize(), 1) << "the default adapts itself";
  (void)setrlimit(RLIMIT_NOFILE, &before);
}

}  // namespace NoxHandlerTest
