// Crontabs of the forms that packages bring along on a Debian machine: what becomes of each line.
#include "agent/crontab/CronRules.h"
#include "agent/crontab/CrontabFile.h"
#include "agent/crontab/CrontabJob.h"
#include "agent/crontab/TaskNames.h"
#include "agent/handler/job/Job.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace NoxAgentTest {

using namespace NoxAgent;
using ::testing::ElementsAre;

namespace {

constexpr long BerlinCuts = 1 << 2 | 1 << 3;

// "backup as root, 3 rules, /bin/sh -c": the name, the user, how many rules where the clocks
// change, and what the handler will run.
std::string BecomesTask(const CrontabTask& task, TaskNames& names) {
  const auto rules = MakeCronRules(task.m_Expression, BerlinCuts);
  const auto text = MakeCrontabJob(task);
  if (std::holds_alternative<CronRefusal>(rules) || std::holds_alternative<CronRefusal>(text)) {
    return "refused: " + task.m_Command;
  }
  const auto job =
      NoxHandler::Job::Parse("x.job", BaseSDK::AString::FromUtf8(std::get<std::string>(text)));
  const std::string option = job.m_Arguments.empty() ? "" : " " + job.m_Arguments[0];
  return names.NameFor(task.m_Command) + " as " + job.m_User + ", " +
         std::to_string(std::get<std::vector<StartRule>>(rules).size()) + " rules, " +
         job.m_Command + option;
}

// What becomes of each line that is no comment.
std::vector<std::string> Becomes(const std::string& crontab) {
  TaskNames names;
  std::vector<std::string> results;
  for (const CrontabEntry& entry : ReadCrontab(crontab, {true, "", "Europe/Berlin"})) {
    if (const auto* const setting = std::get_if<CrontabSetting>(&entry.m_Content)) {
      results.push_back(setting->m_Name + "=" + setting->m_Value);
    } else if (const auto* const task = std::get_if<CrontabTask>(&entry.m_Content)) {
      results.push_back(BecomesTask(*task, names));
    } else if (const auto* const refusal = std::get_if<CronRefusal>(&entry.m_Content)) {
      results.push_back("refused: " + refusal->m_Reason);
    }
  }
  return results;
}

}  // namespace

TEST(DebianCrontabs, OfTheSystemAreTakenOver) {
  EXPECT_THAT(Becomes(R"(# /etc/crontab: system-wide crontab
SHELL=/bin/sh
# You can also override PATH, but by default, newer versions inherit it from the environment
#PATH=/usr/local/sbin:/usr/local/bin:/sbin:/bin:/usr/sbin:/usr/bin

# Example of job definition:
# .---------------- minute (0 - 59)
# |  .------------- hour (0 - 23)
# *  *  *  *  * user-name command to be executed
17 *	* * *	root	cd / && run-parts --report /etc/cron.hourly
25 6	* * *	root	test -x /usr/sbin/anacron || { cd / && run-parts --report /etc/cron.daily; }
47 6	* * 7	root	test -x /usr/sbin/anacron || { cd / && run-parts --report /etc/cron.weekly; }
52 6	1 * *	root	test -x /usr/sbin/anacron || { cd / && run-parts --report /etc/cron.monthly; }
#
)"),
              ElementsAre("SHELL=/bin/sh", "cron.hourly as root, 3 rules, /bin/sh -c",
                          "cron.daily as root, 1 rules, /bin/sh -c",
                          "cron.weekly as root, 1 rules, /bin/sh -c",
                          "cron.monthly as root, 1 rules, /bin/sh -c"));
}

TEST(DebianCrontabs, OfPackagesAreTakenOver) {
  const struct {
    const char* m_Crontab;
    const char* m_Task;
  } rows[] = {
      {"30 7-23 * * *   root	[ -x /etc/init.d/anacron ] && if [ ! -d /run/systemd/system ]; "
       "then /usr/sbin/invoke-rc.d anacron start >/dev/null; fi\n",
       "invoke-rc.d as root, 1 rules, /bin/sh -c"},
      {"30 3 * * 0 root test -e /run/systemd/system || SERVICE_MODE=1 "
       "/usr/lib/x86_64-linux-gnu/e2fsprogs/e2scrub_all_cron\n",
       "e2scrub_all_cron as root, 1 rules, /bin/sh -c"},
      {"10 3 * * * root test -e /run/systemd/system || SERVICE_MODE=1 /sbin/e2scrub_all -A -r\n",
       "e2scrub_all as root, 1 rules, /bin/sh -c"},
      {"09,39 *     * * *     root   [ -x /usr/lib/php/sessionclean ] && if [ ! -d "
       "/run/systemd/system ]; then /usr/lib/php/sessionclean; fi\n",
       "sessionclean as root, 3 rules, /bin/sh -c"},
      {"0 */12 * * * root test -x /usr/bin/certbot -a \\! -d /run/systemd/system && perl -e "
       "'sleep int(rand(43200))' && certbot -q renew --no-random-sleep-on-renew\n",
       "certbot as root, 2 rules, /bin/sh -c"},
      {"5-55/10 * * * * root command -v debian-sa1 > /dev/null && debian-sa1 1 1\n",
       "debian-sa1 as root, 3 rules, /bin/sh -c"},
      {"59 23 * * * root command -v debian-sa1 > /dev/null && debian-sa1 60 2\n",
       "debian-sa1 as root, 1 rules, /bin/sh -c"},
      {"57 0 * * 0 root if [ -x /usr/share/mdadm/checkarray ] && [ $(date +\\%d) -le 7 ]; then "
       "/usr/share/mdadm/checkarray --cron --all --idle --quiet; fi\n",
       "checkarray as root, 1 rules, /bin/sh -c"},
      {"24 0 8-14 * * root if [ $(date +\\%w) -eq 0 ] && [ -x /usr/lib/zfs-linux/scrub ]; then "
       "/usr/lib/zfs-linux/scrub; fi\n",
       "scrub as root, 1 rules, /bin/sh -c"},
      {"*/5 *     * * *     munin if [ -x /usr/bin/munin-cron ]; then /usr/bin/munin-cron; fi\n",
       "munin-cron as munin, 3 rules, /bin/sh -c"},
      {"@daily logcheck if [ -x /usr/sbin/logcheck ]; then nice -n10 /usr/sbin/logcheck; fi\n",
       "logcheck as logcheck, 1 rules, /bin/sh -c"},
      {"25 6 * * * root /usr/sbin/logrotate /etc/logrotate.conf\n",
       "logrotate as root, 1 rules, /usr/sbin/logrotate /etc/logrotate.conf"},
  };
  for (const auto& row : rows) {
    EXPECT_THAT(Becomes(row.m_Crontab), ElementsAre(row.m_Task)) << row.m_Crontab;
  }
}

TEST(DebianCrontabs, KeepTheirSettingsAndTellWhatIsRefused) {
  EXPECT_THAT(
      Becomes(R"(SHELL=/bin/sh
PATH=/usr/local/sbin:/usr/local/bin:/sbin:/bin:/usr/sbin:/usr/bin
MAILTO="root"

@reboot logcheck    if [ -x /usr/sbin/logcheck ]; then nice -n10 /usr/sbin/logcheck -R; fi
2 * * * *       logcheck    if [ -x /usr/sbin/logcheck ]; then nice -n10 /usr/sbin/logcheck; fi
0 3 */2 * 1 root /usr/local/bin/odd
)"),
      ElementsAre("SHELL=/bin/sh",
                  "PATH=/usr/local/sbin:/usr/local/bin:/sbin:/bin:/usr/sbin:/usr/bin",
                  "MAILTO=root",
                  "refused: @reboot is no time: a task has no start for when the machine "
                  "comes up",
                  "logcheck as logcheck, 3 rules, /bin/sh -c", "refused: /usr/local/bin/odd"));
  EXPECT_THAT(Becomes("PATH=/usr/sbin\nSLEEPTIME = 30\n13 22 * * * root test -x "
                      "/etc/cron.daily/popularity-contest && /etc/cron.daily/popularity-contest "
                      "--crond\n"),
              ElementsAre("PATH=/usr/sbin", "SLEEPTIME=30",
                          "popularity-contest as root, 1 rules, /bin/sh -c"));
}

}  // namespace NoxAgentTest
