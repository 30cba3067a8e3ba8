#include "agent/handler/task/TaskBatch.h"

#include <gtest/gtest.h>

using BaseSDK::AString;

namespace NoxHandlerTest {

using namespace NoxHandler;

TEST(TaskBatch, ReadsEntriesInOrderWithTheirFlags) {
  const TaskBatch batch = TaskBatch::Parse("a:0:1:0;b:1:0:1;");
  ASSERT_EQ(batch.m_Entries.size(), 2u);
  EXPECT_EQ(batch.m_Entries[0], (TaskBatch::Entry{"a", false, true, false}));
  EXPECT_EQ(batch.m_Entries[1], (TaskBatch::Entry{"b", true, false, true}));
  EXPECT_TRUE(batch.m_Invalid.empty());
}

TEST(TaskBatch, DecodesTheTaskId) {
  const TaskBatch batch = TaskBatch::Parse("a%20b%3A%C3%A4:0:0:0;");
  ASSERT_EQ(batch.m_Entries.size(), 1u);
  EXPECT_EQ(batch.m_Entries[0].m_TaskId, AString("a b:\xC3\xA4"));
}

TEST(TaskBatch, IsEmptyForAnEmptyText) {
  const TaskBatch batch = TaskBatch::Parse("");
  EXPECT_TRUE(batch.m_Entries.empty());
  EXPECT_TRUE(batch.m_Invalid.empty());
}

TEST(TaskBatch, SetsEntriesAsideThatItCannotReadAndKeepsTheOthers) {
  for (const char* bad : {"a", "a:0:0", "a:0:0:0:0", ":0:0:0", "a:2:0:0", "a:0::0", "a:0:0:x",
                          "..:0:0:0", ".a:0:0:0", "a%2Fb:0:0:0", "..%2Fa:0:0:0", "a%00b:0:0:0"}) {
    SCOPED_TRACE(bad);
    const TaskBatch batch = TaskBatch::Parse(AString("x:0:0:0;") + bad + ";y:0:0:0;");
    ASSERT_EQ(batch.m_Entries.size(), 2u);
    EXPECT_EQ(batch.m_Entries[0].m_TaskId, AString("x"));
    EXPECT_EQ(batch.m_Entries[1].m_TaskId, AString("y"));
    EXPECT_EQ(batch.m_Invalid, std::vector<AString>{bad});
  }
}

TEST(TaskBatch, RefusesAnIdTooLongForAFileName) {
  const std::string id(241, 'a');
  EXPECT_EQ(TaskBatch::Parse((id + ":0:0:0;").c_str()).m_Invalid.size(), 1u);
  EXPECT_EQ(TaskBatch::Parse((id.substr(1) + ":0:0:0;").c_str()).m_Entries.size(), 1u);
}

}  // namespace NoxHandlerTest
