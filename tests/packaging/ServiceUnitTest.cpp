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

std::string Read(const std::string& name, const std::string& directory = NOX_PACKAGING) {
  std::ifstream file(std::filesystem::path(directory) / name);
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

// What the page on operating the agent has the service manager enable.
std::string UnitToEnable() {
  const std::string command = "    systemctl enable --now ";
  for (const std::string& line : Lines(Read("operation.md", NOX_DOCS))) {
    if (line.starts_with(command)) {
      return line.substr(command.size());
    }
  }
  return {};
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

// The name alone is refused where such a link names the unit already.
TEST(ServiceUnit, IsEnabledAsThePageSaysAlsoWhereALinkNamesIt) {
  if (std::system("systemctl --version > /dev/null 2>&1") != 0) {
    GTEST_SKIP() << "there is no systemctl";
  }
  const TestSupport::TempDir root;
  const std::filesystem::path units = "usr/local/lib/systemd/system";
  const std::filesystem::path configured = root / "etc/systemd/system";
  std::filesystem::create_directories(root.Path() / units);
  std::filesystem::create_directories(configured);
  root.Write(units / "noxagentd.service", Unit());
  std::filesystem::create_symlink("/" / units / "noxagentd.service",
                                  configured / "noxagentd.service");
  const std::string command = "systemctl --root=" + root.Path().string() + " enable " +
                              UnitToEnable() + " > " + (root / "said").string() + " 2>&1";
  EXPECT_EQ(std::system(command.c_str()), 0) << root.Read("said");
  EXPECT_TRUE(std::filesystem::is_symlink(configured / "multi-user.target.wants/noxagentd.service"))
      << root.Read("said");
}
