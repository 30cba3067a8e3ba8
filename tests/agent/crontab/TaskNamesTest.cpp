#include "agent/crontab/TaskNames.h"

#include "agent/crontab/CommandName.h"
#include "agent/crontab/ShellCommands.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>
#include <vector>

namespace NoxAgentTest {

using NoxAgent::ListShellCommands;
using NoxAgent::NameOfCommand;
using NoxAgent::TaskNames;
using ::testing::ElementsAre;

TEST(ShellCommands, AreListedAsTheirWords) {
  EXPECT_THAT(
      ListShellCommands("cd / && ls -l \"$a b\" | wc"),
      ElementsAre(ElementsAre("cd", "/"), ElementsAre("ls", "-l", "$a b"), ElementsAre("wc")));
  EXPECT_THAT(ListShellCommands("a 'b  c'd \"\" e\\ f"),
              ElementsAre(ElementsAre("a", "b  cd", "", "e f")));
  EXPECT_THAT(ListShellCommands("a >/dev/null 2>&1 b 2>> c <d; e &"),
              ElementsAre(ElementsAre("a", "b"), ElementsAre("e")));
  EXPECT_THAT(ListShellCommands("[ $(date +%d -d \"$(x)\") -le 7 ] && `which a` b"),
              ElementsAre(ElementsAre("[", "$", "-le", "7", "]"), ElementsAre("", "b")));
  EXPECT_THAT(ListShellCommands(" ;; ()"), ElementsAre());
}

TEST(CommandName, IsThatOfTheProgramOrScript) {
  const struct {
    const char* m_Command;
    const char* m_Name;
  } rows[] = {
      {"/usr/local/bin/backup --full", "backup"},
      {"backup", "backup"},
      {"~/bin/sync.sh", "sync.sh"},
      {"\"/opt/my tools/run it\" -x", "run it"},
      {"cd / && run-parts --report /etc/cron.hourly", "cron.hourly"},
      {"test -x /usr/sbin/anacron || ( cd / && run-parts --report /etc/cron.daily )", "cron.daily"},
      {"test -x /usr/sbin/anacron || { cd / && run-parts --report /etc/cron.daily; }",
       "cron.daily"},
      {"[ -x /usr/bin/foo ] && /usr/bin/foo bar", "foo"},
      {"[ -x /usr/bin/foo ] && if [ ! -d /run/x ]; then /usr/bin/foo; fi", "foo"},
      {"if [ -x /a ] && [ $(date +%d) -le 7 ]; then /usr/share/mdadm/checkarray --all; fi",
       "checkarray"},
      {"command -v debian-sa1 > /dev/null && debian-sa1 1 1", "debian-sa1"},
      {"test -x /usr/bin/certbot -a \\! -d /run/systemd/system && perl -e 'sleep "
       "int(rand(43200))' && certbot -q renew",
       "certbot"},
      {"test -e /run/systemd/system || SERVICE_MODE=1 /usr/lib/e2fsprogs/e2scrub_all_cron",
       "e2scrub_all_cron"},
      {"A=1 B=2 /opt/x", "x"},
      {"cd /srv && ./backup.sh | gzip > /var/x.gz", "backup.sh"},
      {"nice -n 10 ionice -c3 /usr/bin/updatedb", "updatedb"},
      {"nice -10 updatedb", "updatedb"},
      {"sudo -u www-data php -f /var/www/cron.php", "cron.php"},
      {"su - www-data -c 'cd /srv && ./run'", "run"},
      {"flock -n /tmp/lock /opt/job", "job"},
      {"flock -n /tmp/lock -c '/opt/job x'", "job"},
      {"timeout -k 5 300 /opt/job", "job"},
      {"env -u A B=1 /opt/job", "job"},
      {"/bin/sh /opt/a.sh", "a.sh"},
      {"bash -lc '/opt/b c'", "b"},
      {"python3 -m backup.run --x", "backup.run"},
      {"python3 -c 'import x'", "python3"},
      {"php artisan schedule:run >> /dev/null 2>&1", "artisan"},
      {"for f in /a/*; do gzip $f; done", "gzip"},
      {". /etc/profile; run", "run"},
      {"echo hello", "echo"},
      {"sleep 10; echo hello", "sleep"},
      {"python3", "python3"},
      {"", ""},
      {"A=1", ""},
      {"/", ""},
      {"> /tmp/x", ""},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(row.m_Name, NameOfCommand(row.m_Command)) << row.m_Command;
  }
}

TEST(CommandName, OfManyRunnersInARowIsFound) {
  std::string command;
  for (int i = 0; i < 100000; ++i) {
    command += "exec ";
  }
  EXPECT_EQ("job", NameOfCommand(command + "job"));
}

TEST(CommandName, OfRandomBytesIsFoundOrNot) {
  const std::string alphabet = "'\"\\`$()<>;&|={}[] \tsh -c exec/2a";
  std::mt19937 random(7);
  for (int round = 0; round < 5000; ++round) {
    std::string command;
    for (int i = 0; i < 40; ++i) {
      command += alphabet[random() % alphabet.size()];
    }
    (void)NameOfCommand(command);
  }
}

TEST(TaskNames, AreUnique) {
  TaskNames names({"report"});
  EXPECT_EQ("backup", names.NameFor("/usr/local/bin/backup --full"));
  EXPECT_EQ("backup-2", names.NameFor("/usr/local/bin/backup --home"));
  EXPECT_EQ("backup-3", names.NameFor("backup"));
  EXPECT_EQ("report-2", names.NameFor("report"));
}

TEST(TaskNames, AreGoodIds) {
  TaskNames names;
  EXPECT_EQ("run-it", names.NameFor("'/opt/run it'"));
  EXPECT_EQ("a-b~c_d.e", names.NameFor("/opt/a@b~c_d.e"));
  EXPECT_EQ("hidden", names.NameFor("~/.hidden"));
  EXPECT_EQ("x-vsk-vskz", names.NameFor("/opt/x.vsk.vskz"));
  EXPECT_EQ("CMD", names.NameFor("$CMD"));
  EXPECT_EQ("task", names.NameFor("\xc3\xa4"));
  EXPECT_EQ("task-2", names.NameFor(""));
  const std::string longName(300, 'a');
  EXPECT_EQ(std::string(200, 'a'), names.NameFor(longName));
  EXPECT_EQ(std::string(198, 'a') + "-2", names.NameFor(longName));
}

}  // namespace NoxAgentTest
