#include "agent/daemon/config/PluginConfig.h"

#include "agent/daemon/AgentError.h"
#include "tests/support/TempDir.h"

#include <gtest/gtest.h>

using BaseSDK::AString;

namespace NoxAgent {
namespace {

class PluginConfigTest : public testing::Test {
 protected:
  AString Write(const std::string& text) {
    m_Dir.Write("p.ini", text);
    return AString::FromUtf8((m_Dir / "p.ini").string());
  }
  // The message without the directory.
  static std::string MessageOf(const AgentError& error) {
    const std::string message = error.what();
    return message.substr(message.find("p.ini"));
  }

  TestSupport::TempDir m_Dir;
};

TEST_F(PluginConfigTest, GivesTheKeysOfItsSection) {
  PluginConfig config(Write("[Configuration]\na=1\nb=\n"));
  EXPECT_EQ(config.Ask("Configuration", "a"), AString("1"));
  EXPECT_EQ(config.Ask("Configuration", "b"), AString());
  EXPECT_FALSE(config.Ask("Configuration", "c").has_value());
  EXPECT_FALSE(config.Ask("Other", "a").has_value());
  EXPECT_EQ(config.Peek("a"), AString("1"));
  EXPECT_EQ(config.Peek("c"), AString());
}

TEST_F(PluginConfigTest, RefusesAnotherSection) {
  try {
    PluginConfig config(Write("[Configuration]\n\n[More]\n"));
    FAIL();
  } catch (const AgentError& error) {
    EXPECT_EQ(MessageOf(error),
              "p.ini:3: unknown section \"More\"; a plug-in's file has the section "
              "\"Configuration\" alone");
  }
}

TEST_F(PluginConfigTest, AKeyThatNobodyAsksForIsUnknown) {
  PluginConfig config(Write("[Configuration]\ngood=1\nbad=2\n"));
  (void)config.Ask("Configuration", "good");
  (void)config.Peek("bad");
  try {
    config.RefuseUnasked();
    FAIL();
  } catch (const AgentError& error) {
    EXPECT_EQ(MessageOf(error), "p.ini:3: unknown key \"bad\": the plug-in reads no such setting");
  }
  (void)config.Ask("Configuration", "bad");
  config.RefuseUnasked();
}

TEST_F(PluginConfigTest, ReadsTheFileAgain) {
  PluginConfig config(Write("[Configuration]\na=1\n"));
  (void)config.Ask("Configuration", "a");
  (void)Write("[Configuration]\na=2\n");
  EXPECT_EQ(config.Ask("Configuration", "a"), AString("1"));
  config.Reload();
  EXPECT_EQ(config.Ask("Configuration", "a"), AString("2"));
}

TEST_F(PluginConfigTest, KeepsTheOldValuesWhenTheNewFileIsBad) {
  PluginConfig config(Write("[Configuration]\na=1\n"));
  (void)config.Ask("Configuration", "a");
  for (const char* const bad : {"[Configuration]\na=2\nb=3\n", "[Configuration]\na\n", "[X]\n"}) {
    (void)Write(bad);
    EXPECT_THROW(config.Reload(), AgentError) << bad;
    EXPECT_EQ(config.Ask("Configuration", "a"), AString("1")) << bad;
  }
}

TEST_F(PluginConfigTest, TellsTheLinesOfWhatWasAskedFor) {
  PluginConfig config(Write("[Configuration]\nb=1\n; a comment\na=2\nc=3\n"), {{"d", "4"}});
  EXPECT_EQ(config.LinesOfAsked(), AString());
  for (const char* const key : {"a", "b", "d", "e"}) {
    (void)config.Ask("Configuration", key);
  }
  EXPECT_EQ(config.LinesOfAsked(), AString("b in line 2, a in line 4"));
  EXPECT_EQ(PluginConfig(PluginConfig::Values{{"a", "1"}}).LinesOfAsked(), AString());
}

TEST_F(PluginConfigTest, InheritsWhatItsFileDoesNotSay) {
  PluginConfig config(Write("[Configuration]\na=1\n"), {{"a", "2"}, {"b", "3"}, {"c", "4"}});
  EXPECT_EQ(config.Ask("Configuration", "a"), AString("1"));
  EXPECT_EQ(config.Ask("Configuration", "b"), AString("3"));
  config.RefuseUnasked();  // "c" is no typing error: the file does not have it
  (void)Write("[Configuration]\na=1\nb=5\n");
  config.Reload();
  EXPECT_EQ(config.NotInForce(), (SettingChanges{{"b", "3", "5"}}));
}

TEST_F(PluginConfigTest, BuiltInValuesInheritToo) {
  PluginConfig config(PluginConfig::Values{{"a", "1"}}, {{"b", "3"}});
  config.RefuseUnasked();
  EXPECT_EQ(config.Ask("Configuration", "b"), AString("3"));
}

TEST_F(PluginConfigTest, BuiltInValuesNeedNoFile) {
  PluginConfig config(PluginConfig::Values{{"a", "1"}});
  config.RefuseUnasked();
  config.Reload();
  EXPECT_EQ(config.Ask("Configuration", "a"), AString("1"));
  EXPECT_EQ(config.FileName(), AString());
}

}  // namespace
}  // namespace NoxAgent
