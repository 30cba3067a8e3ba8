#include "agent/daemon/process/ServiceManager.h"

#include "tests/support/TempDir.h"

#include <gtest/gtest.h>

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstring>
#include <map>

using BaseSDK::AString;

namespace NoxAgent {
namespace {

// The service manager's end.
class ServiceManagerTest : public testing::Test {
 protected:
  ServiceManagerTest() {
    m_Environment.m_Variable = [this](const char* name) { return m_Variables[name]; };
  }
  ~ServiceManagerTest() override { (void)::close(m_Fd); }

  void Listen(const std::string& name) {
    m_Fd = ::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, name.data(), name.size());
    if (name[0] == '@') {
      address.sun_path[0] = '\0';
    }
    const auto size = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + name.size());
    ASSERT_EQ(::bind(m_Fd, reinterpret_cast<const sockaddr*>(&address), size), 0);
    m_Variables["NOTIFY_SOCKET"] = AString::FromUtf8(name);
  }
  // Empty when nothing has come.
  std::string Receive() const {
    char buffer[1024];
    const ssize_t count = ::recv(m_Fd, buffer, sizeof(buffer), MSG_DONTWAIT);
    return count < 0 ? std::string() : std::string(buffer, static_cast<std::size_t>(count));
  }

  TestSupport::TempDir m_Dir;
  std::map<std::string, AString> m_Variables;
  Environment m_Environment;
  int m_Fd = -1;
};

TEST_F(ServiceManagerTest, TellsWhatTheAgentIsDoing) {
  Listen((m_Dir / "notify").string());
  const ServiceManager manager(m_Environment);
  manager.Ready();
  EXPECT_EQ(Receive(), "READY=1\nSTATUS=Serving the control socket\n");
  manager.Reloading();
  const std::string reloading = Receive();
  EXPECT_EQ(reloading.find("RELOADING=1\nMONOTONIC_USEC="), 0U) << reloading;
  manager.KeepAlive();
  EXPECT_EQ(Receive(), "WATCHDOG=1\n");
  manager.Stopping();
  EXPECT_EQ(Receive(), "STOPPING=1\nSTATUS=Unloading plug-ins\n");
}

// The agent's thread would stand still with it, and the agent would not even end.
TEST_F(ServiceManagerTest, KeepsAliveWithoutWaitingForOneThatDoesNotRead) {
  Listen((m_Dir / "notify").string());
  const ServiceManager manager(m_Environment);
  for (int number = 0; number < 10000; ++number) {
    manager.KeepAlive();
  }
  EXPECT_EQ(Receive(), "WATCHDOG=1\n");
}

TEST_F(ServiceManagerTest, KnowsTheAbstractNameSpace) {
  Listen("@nox-test-" + std::to_string(::getpid()));
  const ServiceManager manager(m_Environment);
  manager.Ready();
  EXPECT_EQ(Receive(), "READY=1\nSTATUS=Serving the control socket\n");
}

TEST_F(ServiceManagerTest, SaysNothingWhenNobodyAsks) {
  for (const char* const address : {"", "relative", "@"}) {
    m_Variables["NOTIFY_SOCKET"] = address;
    const ServiceManager manager(m_Environment);
    manager.Ready();
  }
  m_Variables["NOTIFY_SOCKET"] = AString::FromUtf8((m_Dir / "gone").string());
  const ServiceManager manager(m_Environment);
  manager.Ready();
}

TEST_F(ServiceManagerTest, KeepsAliveTwiceInTheTimeThatIsAllowed) {
  const AString mine = AString::FromUtf8(std::to_string(::getpid()));
  const struct {
    AString m_Microseconds;
    AString m_Process;
    std::optional<unsigned long> m_Interval;
  } rows[] = {
      {"30000000", "", 15000},
      {"30000000", mine, 15000},
      {"30000000", "1", std::nullopt},
      {"", "", std::nullopt},
      {"0", "", std::nullopt},
      {"-5", "", std::nullopt},
      {"1", "", 1},
      {"soon", "", std::nullopt},
  };
  for (const auto& row : rows) {
    m_Variables["WATCHDOG_USEC"] = row.m_Microseconds;
    m_Variables["WATCHDOG_PID"] = row.m_Process;
    EXPECT_EQ(ServiceManager(m_Environment).KeepAliveInterval(), row.m_Interval)
        << row.m_Microseconds.ToUtf8() << " " << row.m_Process.ToUtf8();
  }
}

}  // namespace
}  // namespace NoxAgent
