#include "tests/support/FakeHost.h"

#include <AgentSDK/APluginMgr.h>

#include <gtest/gtest.h>

namespace {

using AgentSDK::APluginMgr;
using BaseSDK::AString;

TEST(APluginMgr, ReadsTheHostsConfiguration) {
  TestSupport::FakeHost host;
  host.SetConfig("Configuration", "task_storage_path", "/var/tasks");

  const APluginMgr manager;
  EXPECT_EQ(manager.GetConfigString("Configuration", "task_storage_path", ""), "/var/tasks");
}

TEST(APluginMgr, GivesTheFallbackForAKeyThatIsNotThere) {
  TestSupport::FakeHost host;
  host.SetConfig("Configuration", "task_storage_path", "/var/tasks");

  const APluginMgr manager;
  EXPECT_EQ(manager.GetConfigString("Configuration", "other", "fallback"), "fallback");
  EXPECT_EQ(manager.GetConfigString("Other", "task_storage_path", "fallback"), "fallback");
}

TEST(APluginMgr, GivesTheFallbackWithoutAHost) {
  EXPECT_EQ(APluginMgr().GetConfigString("Configuration", "key", "fallback"), "fallback");
}

}  // namespace
