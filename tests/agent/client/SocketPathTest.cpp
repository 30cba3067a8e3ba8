#include "agent/client/SocketPath.h"

#include "agent/client/SocketDenial.h"
#include "tests/agent/client/ClientFixture.h"
#include "tests/support/TempDir.h"

#include <gtest/gtest.h>

#include <grp.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <optional>

namespace NoxAgentTest {

using NoxAgent::SocketPath;

namespace {

class Variable {
 public:
  Variable(const char* name, const std::optional<std::string>& value) : m_Name(name) {
    if (const char* const before = std::getenv(name)) {
      m_Before = before;
    }
    Set(value);
  }
  ~Variable() { Set(m_Before); }
  Variable(const Variable&) = delete;
  Variable& operator=(const Variable&) = delete;

 private:
  void Set(const std::optional<std::string>& value) const {
    (void)(value ? ::setenv(m_Name, value->c_str(), 1) : ::unsetenv(m_Name));
  }

  const char* const m_Name;
  std::optional<std::string> m_Before;
};

/// Somebody who is not root, while it lives.
class NotRoot {
 public:
  NotRoot() : m_WasRoot(::geteuid() == 0) {
    if (m_WasRoot) {
      EXPECT_EQ(0, ::seteuid(65534));
    }
  }
  ~NotRoot() {
    if (m_WasRoot) {
      EXPECT_EQ(0, ::seteuid(0));
    }
  }
  NotRoot(const NotRoot&) = delete;
  NotRoot& operator=(const NotRoot&) = delete;

 private:
  const bool m_WasRoot;
};

class SearchForTheSocket : public testing::Test {
 protected:
  SearchForTheSocket() { ::chmod(m_Dir.Path().c_str(), 0755); }

  std::string PathIn(const char* directory) const {
    return (m_Dir / directory / "control.sock").string();
  }

  void MakeSocketIn(const char* directory) const {
    std::filesystem::create_directories(m_Dir / directory);
    m_Dir.Write(std::string(directory) + "/control.sock", "");
  }

  std::string Found() const { return SocketPath("", "", (m_Dir / "system").string()); }

  TestSupport::TempDir m_Dir;
  Variable m_Named{"NOX_RUNTIME_DIR", std::nullopt};
  Variable m_Runtime{"XDG_RUNTIME_DIR", m_Dir.Path().string()};
};

}  // namespace

TEST_F(SearchForTheSocket, TakesWhatIsNamedInTheOrderOfItsRank) {
  const Variable named("NOX_RUNTIME_DIR", "/d");
  EXPECT_EQ("/a/b.sock", SocketPath("/a/b.sock", "/c"));
  EXPECT_EQ("/c/control.sock", SocketPath("", "/c"));
  EXPECT_EQ("/d/control.sock", SocketPath("", ""));
}

TEST_F(SearchForTheSocket, AnEmptyVariableNamesNothing) {
  const Variable named("NOX_RUNTIME_DIR", "");
  const NotRoot notRoot;
  EXPECT_EQ(PathIn("nox"), Found());
}

TEST_F(SearchForTheSocket, TakesTheSystemsAgentWhenTheUserHasNone) {
  MakeSocketIn("system");
  const NotRoot notRoot;
  EXPECT_EQ(PathIn("system"), Found());
}

TEST_F(SearchForTheSocket, TakesTheUsersOwnAgentBeforeTheSystems) {
  MakeSocketIn("system");
  MakeSocketIn("nox");
  const NotRoot notRoot;
  EXPECT_EQ(PathIn("nox"), Found());
}

TEST_F(SearchForTheSocket, NamesTheUsersOwnWhenThereIsNone) {
  const NotRoot notRoot;
  EXPECT_EQ(PathIn("nox"), Found());
}

TEST_F(SearchForTheSocket, TakesTheSystemsThatMayNotBeLookedAt) {
  MakeSocketIn("system");
  ASSERT_EQ(0, ::chmod((m_Dir / "system").c_str(), 0));
  {
    const NotRoot notRoot;
    EXPECT_EQ(PathIn("system"), Found());
  }
  ASSERT_EQ(0, ::chmod((m_Dir / "system").c_str(), 0755));
}

TEST_F(SearchForTheSocket, RootMeansTheSystems) {
  MakeSocketIn("nox");
  EXPECT_EQ(PathIn(::geteuid() == 0 ? "system" : "nox"), Found());
}

TEST_F(Client, ASocketThatMayNotBeOpenedNamesItsGroup) {
  const std::string socket = (m_Dir / "s").string();
  const gid_t group = ::getegid() == 0 ? 65534 : ::getegid();
  ASSERT_EQ(0, ::chown(socket.c_str(), static_cast<uid_t>(-1), group));
  ASSERT_EQ(0, ::chmod(socket.c_str(), 0));
  ASSERT_EQ(0, ::chmod(m_Dir.Path().c_str(), 0755));
  const struct group* const entry = ::getgrgid(group);
  const std::string name = entry == nullptr ? std::to_string(group) : entry->gr_name;
  const NotRoot notRoot;
  EXPECT_EQ(3, Run({"list"}));
  ExpectError("Permission denied; the socket is for the group " + name +
              "; join it with \"sudo usermod -aG " + name + " ");
  EXPECT_EQ(std::string::npos, Err().find("see that noxagentd runs")) << Err();
}

TEST(SocketDenial, OfRootsOwnGroupTellsHowToOpenTheSocketToOthers) {
  EXPECT_EQ(0U, NoxAgent::SocketDenialHint("/").find("the socket is for root; use sudo, or name"));
}

}  // namespace NoxAgentTest
