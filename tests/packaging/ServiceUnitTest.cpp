// What the service manager is told about the agent.
#include "tests/support/TempDir.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>
#include <string>

using testing::IsSupersetOf;

namespace {

std::string Read(const std::string& name) {
  std::ifstream file(std::filesystem::path(NOX_PACKAGING) / name);
  std::ostringstream text;
  text << file.rdbuf();
  return text.str();
}

std::set<std::string> Lines(const std::string& text) {
  std::set<std::string> lines;
  std::istringstream rest(text);
  for (std::string line; std::getline(rest, line);) {
    lines.insert(line);
  }
  return lines;
}

std::set<std::string> WordsOf(const std::string& text, const std::string& key) {
  std::set<std::string> words;
  for (const std::string& line : Lines(text)) {
    if (line.starts_with(key + "=")) {
      std::istringstream values(line.substr(key.size() + 1));
      for (std::string word; values >> word;) {
        words.insert(word);
      }
    }
  }
  return words;
}

// The unit as it is installed, of a program that every machine has.
std::string Unit() {
  const std::string placeholder = "@NOX_PROGRAM@";
  std::string unit = Read("noxagentd.service.in");
  return unit.replace(unit.find(placeholder), placeholder.size(), "/bin/true");
}

}  // namespace

TEST(ServiceUnit, LetsNoJobThatIsOutOfMemoryOrForksWithoutEndStopTheAgent) {
  EXPECT_THAT(Lines(Unit()), IsSupersetOf({"OOMPolicy=continue", "TasksMax=8192"}));
}

TEST(ServiceUnit, LetsTheAgentLimitRunsAndTouchNoOtherService) {
  EXPECT_THAT(Lines(Unit()), IsSupersetOf({"Delegate=memory", "ProtectControlGroups=yes",
                                           "ReadWritePaths=-/sys/fs/cgroup/system.slice/%n"}));
}

TEST(ServiceUnit, LetsTheAgentEndItsRunsItself) {
  EXPECT_THAT(Lines(Unit()), IsSupersetOf({"Type=notify", "KillMode=mixed", "TimeoutStopSec=60"}));
}

TEST(ServiceUnit, StartsWhenUsersAndFileSystemsAreThere) {
  EXPECT_THAT(WordsOf(Unit(), "After"),
              IsSupersetOf({"local-fs.target", "remote-fs.target", "nss-user-lookup.target",
                            "time-sync.target"}));
}

TEST(ServiceUnit, LetsJobsGainPrivilegesByItsExampleAlone) {
  EXPECT_THAT(Lines(Unit()), IsSupersetOf({"NoNewPrivileges=yes"}));
  const auto lines = Lines(Read("privileged-jobs.conf"));
  EXPECT_THAT(lines, IsSupersetOf({"[Service]", "NoNewPrivileges=no"}));
}

TEST(ServiceUnit, IsWhatTheServiceManagerUnderstands) {
  const TestSupport::TempDir directory;
  std::filesystem::create_directory(directory / "noxagentd.service.d");
  directory.Write("noxagentd.service", Unit());
  directory.Write("noxagentd.service.d/jobs.conf", Read("privileged-jobs.conf"));
  const std::string command = "systemd-analyze --man=no verify " +
                              (directory / "noxagentd.service").string() + " > " +
                              (directory / "said").string() + " 2>&1";
  (void)!std::system(command.c_str());
  // Where that program is missing nothing is said of the unit.
  EXPECT_EQ(directory.Read("said").find("noxagentd.service"), std::string::npos)
      << directory.Read("said");
}
