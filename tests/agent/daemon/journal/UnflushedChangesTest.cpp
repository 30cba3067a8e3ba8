#include "agent/daemon/journal/UnflushedChanges.h"

#include "tests/support/FailingFileSystem.h"
#include "tests/support/MemoryFileSystem.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <latch>

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;
using TestSupport::FailingFileSystem;

namespace NoxAgent {
namespace {

class UnflushedChangesTest : public testing::Test {
 protected:
  UnflushedChangesTest() { m_Memory.MakeDirectory("/tasks"); }

  static std::string PathOf(int number) { return "/tasks/T" + std::to_string(number) + ".vsk"; }
  void Write(int number) {
    m_Memory.WriteFile(PathOf(number), "<Task/>");
    m_Changes.AddContent(PathOf(number), std::this_thread::get_id());
  }
  unsigned Flush() {
    m_Disk.Reset();
    return FlushAsPlanned();
  }
  // With the errors that the test has planned.
  unsigned FlushAsPlanned() { return m_Changes.Flush(m_Disk, "/tasks", m_Failed); }
  // What was flushed: "T1.vsk", "tasks" for the directory, "all" for the disk.
  std::vector<std::string> Flushed() const {
    std::vector<std::string> flushed;
    std::string opened;
    for (const std::string& call : m_Disk.History()) {
      if (call.starts_with("open ")) {
        opened = call.substr(5);
      } else if (call.starts_with("sync")) {
        flushed.push_back(call == "sync all" ? "all" : opened);
      }
    }
    return flushed;
  }

  TestSupport::MemoryFileSystem m_Memory;
  FailingFileSystem m_Disk{m_Memory};
  FailedChanges m_Failed;
  UnflushedChanges m_Changes;
};

TEST_F(UnflushedChangesTest, FlushNothingWhenThereAreNone) {
  EXPECT_EQ(Flush(), 0U);
  EXPECT_EQ(m_Disk.Count(), 0U);
}

TEST_F(UnflushedChangesTest, FlushANewFileAndThenItsName) {
  Write(1);
  EXPECT_EQ(Flush(), 2U);
  EXPECT_THAT(Flushed(), ElementsAre("T1.vsk", "tasks"));
  EXPECT_EQ(m_Memory.OpenHandles(), 0U);
}

TEST_F(UnflushedChangesTest, FlushTheDirectoryAloneForNames) {
  m_Changes.AddName(PathOf(1), std::this_thread::get_id());
  m_Changes.AddRemoval(PathOf(2), std::this_thread::get_id());
  EXPECT_EQ(Flush(), 1U);
  EXPECT_THAT(Flushed(), ElementsAre("tasks"));
}

TEST_F(UnflushedChangesTest, FlushARenamedFileUnderItsNewName) {
  Write(1);
  ASSERT_EQ(m_Memory.Rename(PathOf(1).c_str(), PathOf(2).c_str(), false), 0);
  m_Changes.AddRename(PathOf(1), PathOf(2), std::this_thread::get_id());
  EXPECT_EQ(Flush(), 2U);
  EXPECT_THAT(Flushed(), ElementsAre("T2.vsk", "tasks"));
}

TEST_F(UnflushedChangesTest, FlushNoContentOfAFileThatWasDeleted) {
  Write(1);
  m_Memory.RemoveFile(PathOf(1));
  m_Changes.AddRemoval(PathOf(1), std::this_thread::get_id());
  EXPECT_EQ(Flush(), 1U);
  EXPECT_THAT(Flushed(), ElementsAre("tasks"));
  EXPECT_THAT(m_Failed.TakeOwn(), IsEmpty());
}

TEST_F(UnflushedChangesTest, FlushEightOneByOneAndMoreWithTheWholeDisk) {
  for (int i = 0; i < 8; ++i) {
    Write(i);
  }
  EXPECT_EQ(Flush(), 9U);
  EXPECT_EQ(Flushed().back(), "tasks");
  for (int i = 0; i < 9; ++i) {
    Write(i);
  }
  EXPECT_EQ(Flush(), 1U);
  EXPECT_THAT(Flushed(), ElementsAre("all"));
}

TEST_F(UnflushedChangesTest, FlushTheWholeDiskForWhatCouldNotBeNoted) {
  m_Changes.AddUnnamed();
  EXPECT_EQ(Flush(), 1U);
  EXPECT_THAT(Flushed(), ElementsAre("all"));
}

TEST_F(UnflushedChangesTest, AreForgottenAfterwards) {
  Write(1);
  m_Changes.AddUnnamed();
  (void)Flush();
  EXPECT_EQ(Flush(), 0U);
}

TEST_F(UnflushedChangesTest, FlushOneByOneWhenTheWholeDiskCannotBe) {
  for (int i = 0; i < 9; ++i) {
    Write(i);
  }
  constexpr unsigned SyncAll = 2;  // behind the opening of the directory
  m_Disk.Reset();
  m_Disk.FailAt(SyncAll, EIO);
  EXPECT_EQ(FlushAsPlanned(), 11U);
  EXPECT_EQ(Flushed().size(), 11U);
  EXPECT_THAT(m_Failed.TakeOwn(), IsEmpty());
}

TEST_F(UnflushedChangesTest, NoteAFileThatCannotBeFlushed) {
  Write(1);
  Write(2);
  constexpr unsigned SyncOfFirst = 2;
  m_Disk.Reset();
  m_Disk.FailAt(SyncOfFirst, EIO);
  EXPECT_EQ(FlushAsPlanned(), 3U);
  EXPECT_THAT(m_Failed.TakeOwn(), ElementsAre(Pair(PathOf(1), EIO)));
}

TEST_F(UnflushedChangesTest, TellOfAFailureOnceAndTryUntilItIsOver) {
  Write(1);
  constexpr unsigned SyncOfFirst = 2;
  for (int attempt = 0; attempt < 2; ++attempt) {
    m_Disk.Reset();
    m_Disk.FailAt(SyncOfFirst, EIO);
    EXPECT_EQ(FlushAsPlanned(), 2U);
    EXPECT_EQ(m_Failed.TakeOwn().size(), attempt == 0 ? 1U : 0U) << attempt;
  }
  EXPECT_EQ(Flush(), 2U);
  EXPECT_THAT(Flushed(), ElementsAre("T1.vsk", "tasks"));
  EXPECT_EQ(Flush(), 0U);
}

TEST_F(UnflushedChangesTest, NoteEachOfThemWhenTheDirectoryCannotBeFlushed) {
  Write(1);
  m_Changes.AddRemoval(PathOf(2), std::this_thread::get_id());
  constexpr unsigned SyncOfDirectory = 5;
  m_Disk.Reset();
  m_Disk.FailAt(SyncOfDirectory, EIO);
  (void)FlushAsPlanned();
  EXPECT_THAT(m_Failed.TakeOwn(), ElementsAre(Pair(PathOf(1), EIO), Pair(PathOf(2), EIO)));
}

TEST_F(UnflushedChangesTest, TellAFailureToTheThreadThatMadeTheChange) {
  std::latch isWritten(1);
  std::latch isFlushed(1);
  std::thread writer([&] {
    Write(1);
    isWritten.count_down();
    isFlushed.wait();
    EXPECT_THAT(m_Failed.TakeOwn(), ElementsAre(Pair(PathOf(1), EIO)));
  });
  isWritten.wait();
  m_Disk.FailAll(FailingFileSystem::SyncCall, EIO);
  (void)FlushAsPlanned();
  EXPECT_THAT(m_Failed.TakeOwn(), IsEmpty());
  isFlushed.count_down();
  writer.join();
}

TEST_F(UnflushedChangesTest, MissNoFileThatSomebodyHasRemovedMeanwhile) {
  Write(1);
  m_Memory.RemoveFile(PathOf(1));
  (void)Flush();
  EXPECT_THAT(Flushed(), ElementsAre("tasks"));
  EXPECT_THAT(m_Failed.TakeOwn(), IsEmpty());
}

}  // namespace
}  // namespace NoxAgent
