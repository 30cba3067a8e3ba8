#include "agent/daemon/journal/JournalFollower.h"

#include "tests/agent/daemon/journal/JournalFixture.h"

#include <gmock/gmock.h>

#include <thread>

using testing::AllOf;
using testing::Contains;
using testing::IsEmpty;
using testing::SizeIs;

namespace NoxAgent {
namespace {

class JournalFollowerTest : public JournalFixture {
 protected:
  JournalFollowerTest() { m_Files.Begin(); }
};

TEST_F(JournalFollowerTest, PutsManyFilesInTheirPlace) {
  constexpr int Many = 17;
  ReplaceMany(Many);
  m_Files.MakeSafe();
  EXPECT_EQ(CountNew(Many), 0) << "more than whoever makes them safe puts in their place";
  const JournalFollower follower(m_Files);
  m_Observer.Await(Many);
  EXPECT_EQ(CountNew(Many), Many);
}

TEST_F(JournalFollowerTest, MakesSafeWhatNobodyElseDoes) {
  const JournalFollower follower(m_Files);
  ReplaceMany(1);
  m_Observer.Await(1);
  EXPECT_EQ(CountNew(1), 1);
  EXPECT_GT(m_Files.Count().m_JournalBytes, 0U);
}

TEST_F(JournalFollowerTest, LeavesFailuresToTheThreadThatWrote) {
  constexpr int Many = 17;
  ReplaceMany(Many);
  m_Files.MakeSafe();
  m_Disk.FailAll(TestSupport::FailingFileSystem::RenameCall, EACCES);
  const JournalFollower follower(m_Files);
  while (m_Files.Waiting().CountSafe() != 0) {
    std::this_thread::yield();
  }
  EXPECT_THAT(m_Observer.Told(), IsEmpty());
  m_Files.MakeSafe();
  EXPECT_THAT(m_Observer.Told(), AllOf(SizeIs(Many), Contains("T0.vsk failed: 13")));
}

TEST_F(JournalFollowerTest, EndsWhenThereIsNothingToDo) {
  { const JournalFollower follower(m_Files); }
  EXPECT_THAT(m_Observer.Told(), IsEmpty());
}

}  // namespace
}  // namespace NoxAgent
