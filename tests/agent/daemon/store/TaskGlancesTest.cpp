#include "agent/daemon/store/TaskGlances.h"

#include <gtest/gtest.h>

namespace NoxAgent {
namespace {

constexpr long Now = 1781510400;

FileIdentity FileOf(std::uint64_t number, long modified) {
  FileIdentity identity;
  identity.m_Number = number;
  identity.m_Modified = modified * NanosecondsPerSecond;
  return identity;
}

const FileIdentity OldFile = FileOf(7, Now - 60);

TEST(TaskGlances, TellOfAFileOnlyInTheConditionInWhichItWasRead) {
  TaskGlances glances;
  EXPECT_FALSE(glances.Find("a", OldFile).has_value());
  glances.Keep("a", OldFile, {false, "2026-06-15 08:00:00 Ok"}, Now);
  ASSERT_TRUE(glances.Find("a", OldFile).has_value());
  EXPECT_FALSE(glances.Find("a", OldFile)->m_Enabled);
  EXPECT_EQ(glances.Find("a", OldFile)->m_RunTime, "2026-06-15 08:00:00 Ok");
  EXPECT_FALSE(glances.Find("b", OldFile).has_value());
  EXPECT_FALSE(glances.Find("a", FileOf(8, Now - 60)).has_value());
  EXPECT_FALSE(glances.Find("a", FileOf(7, Now - 59)).has_value());
}

TEST(TaskGlances, KeepNothingOfAFileThatMayChangeWithoutATrace) {
  TaskGlances glances;
  for (const long age : {-1, 0, 1, 2}) {
    glances.Keep("a", FileOf(7, Now - age), {}, Now);
    EXPECT_FALSE(glances.Find("a", FileOf(7, Now - age)).has_value()) << age;
  }
  glances.Keep("a", FileOf(7, Now - 3), {}, Now);
  EXPECT_TRUE(glances.Find("a", FileOf(7, Now - 3)).has_value());
}

TEST(TaskGlances, ForgetTasksThatAreGone) {
  TaskGlances glances;
  for (const char* const id : {"a", "b", "c"}) {
    glances.Keep(id, OldFile, {}, Now);
  }
  glances.ForgetAllBut({"b", "d"});
  EXPECT_FALSE(glances.Find("a", OldFile).has_value());
  EXPECT_TRUE(glances.Find("b", OldFile).has_value());
  EXPECT_FALSE(glances.Find("c", OldFile).has_value());
}

}  // namespace
}  // namespace NoxAgent
