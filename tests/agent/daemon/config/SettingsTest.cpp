#include "agent/daemon/config/Settings.h"

#include "agent/daemon/AgentError.h"
#include "agent/daemon/config/BuiltInPlugins.h"
#include "agent/daemon/config/SettingChange.h"
#include "tests/support/TempDir.h"

#include <gtest/gtest.h>

#include <map>

using BaseSDK::ALogger;
using BaseSDK::AString;

namespace NoxAgent {
namespace {

class SettingsTest : public testing::Test {
 protected:
  SettingsTest() {
    m_Environment.m_Variable = [this](const char* name) { return m_Variables[name]; };
    m_Environment.m_ProgramDir = "/opt/nox/bin";
    m_Environment.m_WorkingDir = "/here";
  }

  Settings LoadText(const std::string& text) {
    m_Dir.Write("agent.ini", text);
    m_Options.m_ConfigFile = AString::FromUtf8(Path());
    return Settings::Load(m_Options, m_Environment);
  }
  std::string Path() const { return (m_Dir / "agent.ini").string(); }
  std::string ErrorOf(const std::string& text) {
    try {
      (void)LoadText("[Agent]\nstate_dir=/s\n" + text);
      return "(none)";
    } catch (const AgentError& error) {
      const std::string message = error.what();
      const std::string prefix = Path() + ":";
      EXPECT_EQ(message.compare(0, prefix.size(), prefix), 0) << message;
      return message.substr(prefix.size());
    }
  }

  TestSupport::TempDir m_Dir;
  std::map<std::string, AString> m_Variables;
  Environment m_Environment;
  Options m_Options;
};

TEST_F(SettingsTest, DefaultsOfRoot) {
  m_Environment.m_IsRoot = true;
  m_Variables["XDG_RUNTIME_DIR"] = "/run/user/0";
  const Settings settings = Settings::Load(m_Options, m_Environment);
  EXPECT_EQ(settings.m_StateDir, AString("/var/lib/nox"));
  EXPECT_EQ(settings.m_RuntimeDir, AString("/run/nox"));
  EXPECT_EQ(settings.SocketPath(), AString("/run/nox/control.sock"));
}

TEST_F(SettingsTest, DefaultsOfAUser) {
  const struct {
    const char* m_StateHome;
    const char* m_Home;
    const char* m_RuntimeHome;
    const char* m_StateDir;
    const char* m_RuntimeDir;
  } rows[] = {
      {"", "/home/a", "", "/home/a/.local/state/nox", "/home/a/.local/state/nox/run"},
      {"/x", "/home/a", "", "/x/nox", "/x/nox/run"},
      {"relative", "/home/a", "relative", "/home/a/.local/state/nox",
       "/home/a/.local/state/nox/run"},
      {"", "/home/a", "/run/user/7", "/home/a/.local/state/nox", "/run/user/7/nox"},
  };
  for (const auto& row : rows) {
    m_Variables = {{"XDG_STATE_HOME", row.m_StateHome},
                   {"HOME", row.m_Home},
                   {"XDG_RUNTIME_DIR", row.m_RuntimeHome}};
    const Settings settings = Settings::Load(m_Options, m_Environment);
    EXPECT_EQ(settings.m_StateDir, AString(row.m_StateDir)) << row.m_StateHome;
    EXPECT_EQ(settings.m_RuntimeDir, AString(row.m_RuntimeDir)) << row.m_RuntimeHome;
  }
}

TEST_F(SettingsTest, SaysWhatToDoWithoutAHome) {
  try {
    (void)Settings::Load(m_Options, m_Environment);
    FAIL();
  } catch (const AgentError& error) {
    EXPECT_STREQ(error.what(),
                 "no directory to keep tasks in: HOME is not set; say --state-dir DIR");
  }
}

TEST_F(SettingsTest, LoadsTheBuiltInPluginsWithoutConfiguration) {
  m_Environment.m_IsRoot = true;
  const Settings settings = Settings::Load(m_Options, m_Environment);
  ASSERT_EQ(settings.m_Plugins.size(), 2U);
  EXPECT_EQ(settings.m_Plugins[0].m_Name, AString("scheduler"));
  EXPECT_EQ(settings.m_Plugins[0].m_ClassId, AString("{5E0C8B0E-8A57-4D0B-9A7B-0B6E6F1D2A31}"));
  EXPECT_EQ(settings.m_Plugins[1].m_Name, AString("command"));
  EXPECT_EQ(settings.m_Plugins[1].m_ClassId, AString("{7C0A1D52-3B4E-4F6A-9A51-2D8E6C9B4F10}"));
  EXPECT_EQ(settings.m_Plugins[1].m_Path.Left(13), AString("/opt/nox/lib/"));
}

TEST_F(SettingsTest, CommandLineOverFileOverDefaults) {
  m_Environment.m_IsRoot = true;
  const std::string text = "[Agent]\nstate_dir=/file/state\nruntime_dir=run\n[Log]\nlevel=error\n";
  Settings settings = LoadText(text);
  EXPECT_EQ(settings.m_StateDir, AString("/file/state"));
  EXPECT_EQ(settings.m_RuntimeDir, AString::FromUtf8((m_Dir / "run").string()));
  EXPECT_EQ(settings.m_Log.m_Level, ALogger::Error);
  m_Options.m_StateDir = "mine";
  m_Options.m_RuntimeDir = "/r";
  m_Options.m_LogLevel = ALogger::Trace;
  settings = LoadText(text);
  EXPECT_EQ(settings.m_StateDir, AString("/here/mine"));
  EXPECT_EQ(settings.m_RuntimeDir, AString("/r"));
  EXPECT_EQ(settings.m_Log.m_Level, ALogger::Trace);
}

TEST_F(SettingsTest, ReadsEverySetting) {
  const Settings settings = LoadText(
      "[Agent]\nstate_dir=/s\nsocket_group=adm\ngroup_writes_jobs=yes\n"
      "[Log]\nlevel=warning\nfile=%installdir%/a.log\nfile_bytes=8192\nfiles=2\n"
      "[LogLevels]\nCorvane::Agent::TaskScheduler=trace\n"
      "[Plugin command]\n[Plugin mine]\npath=lib/mine.so\nconfig=/etc/mine.ini\n"
      "class_id={AAAAAAAA-0000-0000-0000-000000000001}\n");
  EXPECT_EQ(settings.m_SocketGroup, AString("adm"));
  EXPECT_TRUE(settings.m_GroupWritesJobs);
  EXPECT_EQ(settings.m_Log.m_Level, ALogger::Warning);
  EXPECT_EQ(settings.Resolve(settings.m_Log.m_File), AString("/s/a.log"));
  EXPECT_EQ(settings.m_Log.m_FileBytes, 8192);
  EXPECT_EQ(settings.m_Log.m_Files, 2);
  EXPECT_EQ(settings.m_Log.m_ChannelLevels.at("Corvane::Agent::TaskScheduler"), ALogger::Trace);
  ASSERT_EQ(settings.m_Plugins.size(), 2U);
  EXPECT_EQ(settings.m_Plugins[0].m_Name, AString("command"));
  EXPECT_EQ(settings.m_Plugins[1].m_Name, AString("mine"));
  EXPECT_EQ(settings.m_Plugins[1].m_Path, AString::FromUtf8((m_Dir / "lib/mine.so").string()));
  EXPECT_EQ(settings.m_Plugins[1].m_ConfigFile, AString("/etc/mine.ini"));
}

TEST_F(SettingsTest, PluginsInheritJobOutputWhenItIsSet) {
  for (const char* const value : {"yes", "no"}) {
    const Settings settings =
        LoadText(std::string("[Agent]\nstate_dir=/s\n[Log]\njob_output=") + value + "\n");
    EXPECT_EQ(settings.m_Log.m_JobOutput, std::string(value) == "yes");
    for (const PluginSettings& plugin : settings.m_Plugins) {
      EXPECT_EQ(plugin.m_Inherited.at("job_output"), AString(value));
    }
  }
  const Settings unset = LoadText("[Agent]\nstate_dir=/s\n");
  EXPECT_TRUE(unset.m_Plugins.at(1).m_Inherited.empty());
}

TEST_F(SettingsTest, PluginsInheritTheGroupThatRunsCanBePutBelow) {
  m_Environment.m_RunGroup = "/sys/fs/cgroup/x.service";
  const Settings settings = LoadText("[Agent]\nstate_dir=/s\n");
  for (const PluginSettings& plugin : settings.m_Plugins) {
    EXPECT_EQ(plugin.m_Inherited.at("cgroup_path"), m_Environment.m_RunGroup);
  }
}

TEST_F(SettingsTest, AChangeOfJobOutputWaitsForTheNextStart) {
  const Settings before = LoadText("[Agent]\nstate_dir=/s\n");
  const Settings after = LoadText("[Agent]\nstate_dir=/s\n[Log]\njob_output=no\n");
  EXPECT_EQ(FindRestartChanges(before, after), (SettingChanges{{"[Log] job_output", "", "no"}}));
  EXPECT_EQ(FindRestartChanges(after, before), (SettingChanges{{"[Log] job_output", "no", ""}}));
}

TEST_F(SettingsTest, JobsAreNotForTheGroupUnlessItIsSaid) {
  const Settings unset = LoadText("[Agent]\nstate_dir=/s\nsocket_group=adm\n");
  EXPECT_FALSE(unset.m_GroupWritesJobs);
  const Settings set = LoadText("[Agent]\nstate_dir=/s\nsocket_group=adm\ngroup_writes_jobs=yes\n");
  EXPECT_EQ(FindRestartChanges(unset, set),
            (SettingChanges{{"[Agent] group_writes_jobs", "no", "yes"}}));
}

TEST_F(SettingsTest, NamesLineAndKeyOfWhatIsWrong) {
  const struct {
    const char* m_Text;
    const char* m_Error;
  } rows[] = {
      {"sate_dir=/x",
       "3: unknown key \"sate_dir\"; there are state_dir, runtime_dir, socket_group, "
       "group_writes_jobs"},
      {"runtime_dir=", "3: the key \"runtime_dir\" has no value"},
      {"group_writes_jobs=maybe",
       "3: the key \"group_writes_jobs\" wants yes or no, not \"maybe\""},
      {"[Other]", "3: unknown section \"Other\"; there are Agent, Log, LogLevels and Plugin NAME"},
      {"[Log]\nlevel=loud",
       "4: the key \"level\" wants a level (error, warning, notice, information, debug or trace), "
       "not \"loud\""},
      {"[LogLevels]\na=b",
       "4: the key \"a\" wants a level (error, warning, notice, information, debug or trace), not "
       "\"b\""},
      {"[Log]\nfiles=many",
       "4: the key \"files\" wants a whole number from 0 to 1000, not \"many\""},
      {"[Log]\nfiles=99999999999",
       "4: the key \"files\" wants a whole number from 0 to 1000, not \"99999999999\""},
      {"[Log]\nfile_bytes=1",
       "4: the key \"file_bytes\" wants a whole number from 4096 to 2147483647, not \"1\""},
      {"[Log]\nfoo=1",
       "4: unknown key \"foo\"; there are level, file, file_bytes, files, job_output"},
      {"[Log]\njob_output=off", "4: the key \"job_output\" wants yes or no, not \"off\""},
      {"[Log]\njob_output=", "4: the key \"job_output\" has no value"},
      {"[Plugin a/b]\npath=x",
       "3: \"a/b\" is no name for a plug-in: up to 64 letters, digits, \"-\" and \"_\""},
      {"[Plugin x]", "3: the plug-in \"x\" lacks the key \"path\", its shared object"},
      {"[Plugin x]\nclass_id=1",
       "4: the key \"class_id\" wants an identifier in the form "
       "{7C0A1D52-3B4E-4F6A-9A51-2D8E6C9B4F10}, not \"1\""},
      {"[Plugin x]\npaht=1", "4: unknown key \"paht\"; there are path, config, class_id"},
      {"[Plugin x]\npath=x\nclass_id={AAAAAAAA-0000-0000-0000-000000000001}\n[Plugin y]\npath=y\n"
       "class_id={aaaaaaaa-0000-0000-0000-000000000001}",
       "6: the plug-ins \"x\" and \"y\" have the same \"class_id\""},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(ErrorOf(row.m_Text), row.m_Error) << row.m_Text;
  }
}

TEST_F(SettingsTest, ResolvesEveryInstalldir) {
  Settings settings;
  settings.m_StateDir = "/s/%installdir%";
  EXPECT_EQ(settings.Resolve("%installdir%/a:%installdir%"),
            AString("/s/%installdir%/a:/s/%installdir%"));
  EXPECT_EQ(settings.Resolve("plain"), AString("plain"));
  EXPECT_EQ(settings.Resolve(""), AString());
}

}  // namespace
}  // namespace NoxAgent
