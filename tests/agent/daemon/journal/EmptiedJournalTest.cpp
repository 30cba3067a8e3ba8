#include "agent/daemon/journal/Journal.h"
#include "tests/agent/daemon/journal/CrashDisk.h"
#include "tests/support/FailingFileSystem.h"

#include <gtest/gtest.h>

#include <cerrno>

namespace NoxAgent {
namespace {

constexpr const char* Place = "/state/journal";

// An emptied journal gives none of its old records back, wherever the power fails afterwards.
TEST(EmptiedJournalTest, StaysEmptyWhenThePowerFails) {
  constexpr unsigned Seeds = 60;
  for (unsigned seed = 0; seed < Seeds; ++seed) {
    SCOPED_TRACE(seed);
    CrashDisk disk;
    disk.MakeDirectory("/state");
    TestSupport::FailingFileSystem calls(disk);
    const JournalRecord old{"A.vsk", {}, {}, std::string(600, 'o')};
    {
      Journal journal(calls, Place);
      ASSERT_EQ(0, journal.Clear());
      ASSERT_EQ(0, journal.Append({&old, &old, &old}));
      ASSERT_EQ(0, journal.Clear());
      if (seed % 2 == 0) {
        const JournalRecord record{"A.vsk", {}, {}, std::string(600, 'n')};
        calls.FailAll(TestSupport::FailingFileSystem::SyncCall, EIO);
        ASSERT_EQ(EIO, journal.Append({&record}));
      }
    }
    std::mt19937_64 random(seed);
    disk.CutPower(CrashDisk::Loss::Any, random);
    std::vector<JournalRecord> records;
    Journal journal(disk, Place);
    ASSERT_EQ(0, journal.Read(records));
    for (const JournalRecord& record : records) {
      EXPECT_NE(old.m_Content, record.m_Content);
    }
  }
}

}  // namespace
}  // namespace NoxAgent
