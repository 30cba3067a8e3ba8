#include "agent/handler/task/TaskBatch.h"

#include <gtest/gtest.h>

using BaseSDK::AString;

TEST(TaskBatch, ReadsEntriesInOrderWithTheirFlags) {
  const CTaskBatch batch = CTaskBatch::Parse("a:0:1:0;b:1:0:1;");
  ASSERT_EQ(batch.m_Entries.size(), 2u);
  EXPECT_EQ(batch.m_Entries[0], (CTaskBatch::CEntry{"a", false, true, false}));
  EXPECT_EQ(batch.m_Entries[1], (CTaskBatch::CEntry{"b", true, false, true}));
  EXPECT_TRUE(batch.m_Invalid.empty());
}

TEST(TaskBatch, DecodesTheTaskId) {
  const CTaskBatch batch = CTaskBatch::Parse("a%20b%3A%C3%A4:0:0:0;");
  ASSERT_EQ(batch.m_Entries.size(), 1u);
  EXPECT_EQ(batch.m_Entries[0].m_TaskId, AString("a b:\xC3\xA4"));
}

TEST(TaskBatch, IsEmptyForAnEmptyText) {
  const CTaskBatch batch = CTaskBatch::Parse("");
  EXPECT_TRUE(batch.m_Entries.empty());
  EXPECT_TRUE(batch.m_Invalid.empty());
}

TEST(TaskBatch, SetsEntriesAsideThatItCannotReadAndKeepsTheOthers) {
  for (const char* bad : {"a", "a:0:0", "a:0:0:0:0", ":0:0:0", "a:2:0:0", "a:0::0", "a:0:0:x",
                          "..:0:0:0", ".a:0:0:0", "a%2Fb:0:0:0", "..%2Fa:0:0:0", "a%00b:0:0:0"}) {
    SCOPED_TRACE(bad);
    const CTaskBatch batch = CTaskBatch::Parse(AString("x:0:0:0;") + bad + ";y:0:0:0;");
    ASSERT_EQ(batch.m_Entries.size(), 2u);
    EXPECT_EQ(batch.m_Entries[0].m_TaskId, AString("x"));
    EXPECT_EQ(batch.m_Entries[1].m_TaskId, AString("y"));
    EXPECT_EQ(batch.m_Invalid, std::vector<AString>{bad});
  }
}

TEST(TaskBatch, RefusesAnIdTooLongForAFileName) {
  const std::string id(241, 'a');
  EXPECT_EQ(CTaskBatch::Parse((id + ":0:0:0;").c_str()).m_Invalid.size(), 1u);
  EXPECT_EQ(CTaskBatch::Parse((id.substr(1) + ":0:0:0;").c_str()).m_Entries.size(), 1u);
}
