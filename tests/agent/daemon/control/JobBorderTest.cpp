#include "agent/daemon/control/JobBorder.h"

#include "tests/agent/daemon/TestAgent.h"
#include "tests/agent/daemon/control/RawClient.h"

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <functional>
#include <thread>

namespace NoxAgent {
namespace {

constexpr Caller Member{0, false};
constexpr Caller Owner{0, true};
constexpr const char* const JobOperations[] = {"PutJob", "GetJob", "DeleteJob"};

std::string TargetOf(const std::string& operation) {
  return "/v1/command/INoxCommandHandler/" + operation;
}

std::string BodyFor(const std::string& operation, const std::string& taskId) {
  Json body = {{"taskId", taskId}};
  if (operation == "PutJob") {
    body["text"] = "[Job]\ncommand = true\n";
  }
  return body.Dump();
}

class JobBorderTest : public testing::Test {
 protected:
  JobBorderTest() {
    m_Agent.AddScheduler().Add("command",
                               "job_path=%installdir%/jobs\noutput_path=%installdir%/output\n",
                               "CommandHandler");
    std::filesystem::create_directories(m_Agent.m_Dir / "state/jobs");
  }

  ApiResponse Ask(const std::string& operation, const Caller& caller,
                  const std::string& taskId = "a") {
    return m_Agent.Ask("POST", TargetOf(operation), BodyFor(operation, taskId), caller);
  }
  static std::string CodeOf(const std::string& body) {
    const Json answer = Json::Parse(body);
    return answer.Has("error") ? answer["error"]["code"].Text() : std::string();
  }

  TestAgent m_Agent;
};

// Threads of a process can have users of their own.
class JobsOfAMember : public JobBorderTest {
 protected:
  static constexpr unsigned Stranger = 54321;
  static constexpr gid_t Group = 54322;

  void SetUp() override {
    if (::geteuid() != 0) {
      GTEST_SKIP() << "only root can be somebody else";
    }
    // Others have to reach the socket.
    (void)::chmod(m_Agent.m_Dir.Path().c_str(), 0755);
  }

  void Serve(bool groupUsesJobs) {
    m_Agent.Serve(TestAgent::LongPatience, PeerCheck(Group, groupUsesJobs));
    ASSERT_EQ(::chmod(m_Agent.SocketPath().c_str(), 0666), 0);
  }

  static void As(unsigned user, gid_t group, const std::function<void()>& act) {
    std::thread([&] {
#ifdef __i386__
      constexpr long SetGroups = SYS_setgroups32;
      constexpr long SetGroup = SYS_setresgid32;
      constexpr long SetUser = SYS_setresuid32;
#else
      constexpr long SetGroups = SYS_setgroups;
      constexpr long SetGroup = SYS_setresgid;
      constexpr long SetUser = SYS_setresuid;
#endif
      ASSERT_EQ(::syscall(SetGroups, 0, nullptr), 0);
      ASSERT_EQ(::syscall(SetGroup, group, group, group), 0);
      ASSERT_EQ(::syscall(SetUser, user, user, user), 0);
      act();
    }).join();
  }

  std::string AskOverSocket(const std::string& operation) {
    return RawClient::Ask(m_Agent.SocketPath(), "POST", TargetOf(operation),
                          BodyFor(operation, "a"));
  }
};

TEST_F(JobBorderTest, KeepsJobsFromWhoMayNotUseThem) {
  m_Agent.Load();
  for (const char* const operation : JobOperations) {
    const ApiResponse answer = Ask(operation, Member);
    EXPECT_EQ(answer.m_Status, 403U) << operation << answer.m_Body;
    EXPECT_EQ(CodeOf(answer.m_Body), "not-allowed");
    EXPECT_NE(answer.m_Body.find("group_writes_jobs = yes"), std::string::npos) << answer.m_Body;
  }
  EXPECT_FALSE(std::filesystem::exists(m_Agent.m_Dir / "state/jobs/a.job"));
  for (const char* const operation : {"GetRun", "CheckJob", "GetOutput", "StopRun"}) {
    EXPECT_EQ(Ask(operation, Member).m_Status, 200U) << operation;
  }
}

TEST_F(JobBorderTest, OpensJobsToWhoMay) {
  m_Agent.Load();
  for (const char* const operation : JobOperations) {
    const ApiResponse answer = Ask(operation, Owner);
    EXPECT_EQ(answer.m_Status, 200U) << operation << answer.m_Body;
    EXPECT_EQ(Json::Parse(answer.m_Body)["result"], 1) << operation << answer.m_Body;
  }
}

TEST_F(JobBorderTest, RefusesTaskIdsThatAreNone) {
  m_Agent.Load();
  for (const char* const operation : {"PutJob", "GetJob", "DeleteJob", "GetOutput"}) {
    for (const std::string& taskId :
         {std::string(), std::string("../a"), std::string("a b"), std::string("a.vsk"),
          std::string(".a"), std::string(201, 'x')}) {
      const ApiResponse answer = Ask(operation, Owner, taskId);
      EXPECT_EQ(answer.m_Status, 422U) << operation << " " << taskId << answer.m_Body;
      EXPECT_EQ(CodeOf(answer.m_Body), "bad-task-id");
    }
  }
}

TEST_F(JobsOfAMember, AreClosedByDefault) {
  Serve(false);
  As(Stranger, Group, [&] {
    for (const char* const operation : JobOperations) {
      const std::string answer = AskOverSocket(operation);
      EXPECT_EQ(StatusOf(answer), 403U) << answer;
      EXPECT_EQ(CodeOf(BodyOf(answer)), "not-allowed") << answer;
    }
    EXPECT_EQ(StatusOf(AskOverSocket("CheckJob")), 200U);
  });
  EXPECT_FALSE(std::filesystem::exists(m_Agent.m_Dir / "state/jobs/a.job"));
}

TEST_F(JobsOfAMember, AreOpenWhenTheConfigurationSaysSo) {
  Serve(true);
  As(Stranger, Group, [&] {
    for (const char* const operation : JobOperations) {
      const std::string answer = AskOverSocket(operation);
      EXPECT_EQ(StatusOf(answer), 200U) << answer;
      EXPECT_EQ(Json::Parse(BodyOf(answer))["result"], 1) << answer;
    }
  });
  As(Stranger, Group + 1, [&] { EXPECT_EQ(StatusOf(AskOverSocket("CheckJob")), 403U); });
}

}  // namespace
}  // namespace NoxAgent
