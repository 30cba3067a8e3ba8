#include "agent/daemon/journal/WaitingFiles.h"

#include "tests/support/MemoryFileSystem.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <thread>

using testing::ElementsAre;
using testing::IsEmpty;

namespace NoxAgent {
namespace {

class WaitingFilesTest : public testing::Test {
 protected:
  WaitingFilesTest() { m_Memory.MakeDirectory("/tasks"); }

  void Add(const std::string& name) {
    WaitingFiles::Files file;
    file.emplace_back(m_Memory, "/tasks/" + name);
    file.back().m_Record.m_Name = name;
    ASSERT_EQ(file.back().m_Replacement.Prepare("<Task/>", BaseSDK::AFileReplacement::Flushed::No),
              0);
    m_Waiting.Add(file);
    EXPECT_TRUE(file.empty());
  }
  void MakeAllSafe() {
    WaitingFiles::Files files = m_Waiting.TakeUnsafe();
    m_Waiting.AddSafe(files);
    EXPECT_TRUE(files.empty());
  }
  static std::vector<std::string> NamesOf(const WaitingFiles::Files& files) {
    std::vector<std::string> names;
    for (const WaitingFile& file : files) {
      names.push_back(file.m_Record.m_Name);
    }
    return names;
  }

  TestSupport::MemoryFileSystem m_Memory;
  WaitingFiles m_Waiting;
};

TEST_F(WaitingFilesTest, WaitUntilTheyAreRemoved) {
  EXPECT_FALSE(m_Waiting.Has("T1.vsk"));
  Add("T1.vsk");
  EXPECT_TRUE(m_Waiting.Has("T1.vsk"));
  WaitingFiles::Files unsafeOnes = m_Waiting.TakeUnsafe();
  EXPECT_TRUE(m_Waiting.Has("T1.vsk")) << "while it is being made safe";
  m_Waiting.AddSafe(unsafeOnes);
  EXPECT_TRUE(m_Waiting.Has("T1.vsk"));
  const WaitingFiles::Files safeOnes = m_Waiting.TakeSafe();
  EXPECT_TRUE(m_Waiting.Has("T1.vsk")) << "while it is being put in its place";
  m_Waiting.RemoveSafe(safeOnes);
  EXPECT_FALSE(m_Waiting.Has("T1.vsk"));
}

TEST_F(WaitingFilesTest, WaitForAsLongAsThereIsAnotherOfTheName) {
  Add("T1.vsk");
  Add("T1.vsk");
  WaitingFiles::Files second = m_Waiting.TakeUnsafe();
  WaitingFiles::Files first;
  first.splice(first.end(), second, second.begin());
  m_Waiting.Remove(first);
  EXPECT_TRUE(m_Waiting.Has("T1.vsk"));
  m_Waiting.Remove(second);
  EXPECT_FALSE(m_Waiting.Has("T1.vsk"));
}

TEST_F(WaitingFilesTest, KeepTheOrderInWhichTheyWereWritten) {
  Add("T2.vsk");
  Add("T1.vsk");
  WaitingFiles::Files first = m_Waiting.TakeUnsafe();
  EXPECT_THAT(NamesOf(first), ElementsAre("T2.vsk", "T1.vsk"));
  EXPECT_THAT(m_Waiting.TakeUnsafe(), IsEmpty());
  m_Waiting.AddSafe(first);
  Add("T3.vsk");
  MakeAllSafe();
  EXPECT_THAT(NamesOf(m_Waiting.TakeSafe()), ElementsAre("T2.vsk", "T1.vsk", "T3.vsk"));
  EXPECT_THAT(m_Waiting.TakeSafe(), IsEmpty());
}

TEST_F(WaitingFilesTest, CountAllThatWait) {
  EXPECT_EQ(m_Waiting.Count(), 0U);
  Add("T1.vsk");
  Add("T1.vsk");
  EXPECT_EQ(m_Waiting.Count(), 2U);
  MakeAllSafe();
  const WaitingFiles::Files files = m_Waiting.TakeSafe();
  EXPECT_EQ(m_Waiting.Count(), 2U);
  m_Waiting.RemoveSafe(files);
  EXPECT_EQ(m_Waiting.Count(), 0U);
}

TEST_F(WaitingFilesTest, CountThoseThatAreSafe) {
  Add("T1.vsk");
  Add("T2.vsk");
  EXPECT_EQ(m_Waiting.CountSafe(), 0U);
  MakeAllSafe();
  EXPECT_EQ(m_Waiting.CountSafe(), 2U);
  const WaitingFiles::Files files = m_Waiting.TakeSafe();
  EXPECT_EQ(m_Waiting.CountSafe(), 2U) << "while they are being put in their place";
  m_Waiting.RemoveSafe(files);
  EXPECT_EQ(m_Waiting.CountSafe(), 0U);
}

TEST_F(WaitingFilesTest, LeaveNothingBehindWhenTheyAreGivenUp) {
  Add("T1.vsk");
  m_Waiting.Remove(m_Waiting.TakeUnsafe());
  EXPECT_THAT(m_Memory.Names("/tasks"), IsEmpty());
}

TEST_F(WaitingFilesTest, AreAwaitedUntilOneIsSafe) {
  std::thread other([&] {
    Add("T1.vsk");
    MakeAllSafe();
  });
  EXPECT_TRUE(m_Waiting.Await());
  other.join();
  EXPECT_TRUE(m_Waiting.Await()) << "as long as it is there";
}

TEST_F(WaitingFilesTest, AreAwaitedNoLongerThanAMomentWhenNobodyMakesThemSafe) {
  Add("T1.vsk");
  EXPECT_TRUE(m_Waiting.Await());
}

TEST_F(WaitingFilesTest, AnyOtherChangeEndsTheWaitingToo) {
  m_Waiting.NoteOther();
  EXPECT_TRUE(m_Waiting.Await());
  EXPECT_TRUE(m_Waiting.Await()) << "until a flush begins";
}

TEST_F(WaitingFilesTest, StopAwaitingEndsTheWaitingForGood) {
  m_Waiting.NoteOther();
  m_Waiting.BeginFlush();
  std::thread other([&] { m_Waiting.StopAwaiting(); });
  EXPECT_FALSE(m_Waiting.Await()) << "nothing else is there to end it";
  other.join();
  Add("T1.vsk");
  EXPECT_FALSE(m_Waiting.Await());
}

}  // namespace
}  // namespace NoxAgent
