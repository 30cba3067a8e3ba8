#include "tests/agent/daemon/journal/JournalUser.h"

#include <gtest/gtest.h>

#include <cerrno>

namespace NoxAgent {
namespace {

using TestSupport::FailingFileSystem;

constexpr const char* Task = "T.vsk";
constexpr unsigned CutsOfAnyLoss = 20;

// Single promises; JournalUser compares.
class JournalUserTest : public testing::Test {
 protected:
  static void Start(JournalUser& user) {
    user.Prepare();
    user.Begin();
    user.Calm();
  }

  /// Does `acts` with a new user whose directory is empty, cuts the power, and starts again.
  template <class Acts>
  static void CutPowerAfter(Acts acts) {
    for (const CrashDisk::Loss loss : {CrashDisk::Loss::All, CrashDisk::Loss::None}) {
      CutPowerAfter(acts, loss, 1);
    }
    for (unsigned seed = 0; seed < CutsOfAnyLoss; ++seed) {
      CutPowerAfter(acts, seed % 4 == 0 ? CrashDisk::Loss::Latest : CrashDisk::Loss::Any, seed);
    }
  }

  template <class Acts>
  static void CutPowerAfter(Acts acts, CrashDisk::Loss loss, unsigned seed) {
    JournalUser user;
    std::mt19937_64 random(seed);
    Start(user);
    acts(user, random);
    user.Die(loss, random);
    Start(user);
    EXPECT_EQ("", user.Problem());
  }

  static void AddTask(JournalUser& user) {
    user.Add(Task, std::string(2000, 'a'));
    user.MakeSafe();
  }

  /// A replacement was made safe, and only the journal has it. The next life has yet to begin.
  static void PrepareAfterALostReplacement(JournalUser& user) {
    std::mt19937_64 random(1);
    Start(user);
    AddTask(user);
    ReplaceTask(user, 'b');
    user.MakeSafe();
    user.Die(CrashDisk::Loss::All, random);
    user.Prepare();
  }

  static void ReplaceTask(JournalUser& user, char letter, std::size_t size = 2000) {
    user.Replace(Task, std::string(size, letter));
  }
};

TEST_F(JournalUserTest, KeepsWhatWaitsWhenTheJournalIsEmptied) {
  CutPowerAfter([](JournalUser& user, std::mt19937_64&) {
    AddTask(user);
    constexpr std::size_t MoreThanHalf = Journal::Size * 2 / 3;
    ReplaceTask(user, 'b', MoreThanHalf);
    ReplaceTask(user, 'c', MoreThanHalf);
    user.MakeSafe();
  });
}

TEST_F(JournalUserTest, KeepsTheContentOfARenamedFile) {
  CutPowerAfter([](JournalUser& user, std::mt19937_64&) {
    AddTask(user);
    ReplaceTask(user, 'b');
    user.MakeSafe();
    user.Rename(Task, "Other.vsk");
    user.MakeSafe();
  });
}

TEST_F(JournalUserTest, KeepsAFileThatSomebodyElseHasCutShort) {
  CutPowerAfter([](JournalUser& user, std::mt19937_64&) {
    AddTask(user);
    ReplaceTask(user, 'b');
    user.MakeSafe();
    user.OtherWrites(Task, "bb", true);
  });
}

TEST_F(JournalUserTest, KeepsAnOlderContentThatSomebodyElseHasPutBack) {
  CutPowerAfter([](JournalUser& user, std::mt19937_64&) {
    AddTask(user);
    ReplaceTask(user, 'b');
    user.MakeSafe();
    ReplaceTask(user, 'c');
    user.MakeSafe();
    user.Add("Flushed.vsk", "");  // with the directory: the numbers of the first two are free then
    user.MakeSafe();
    user.Add("First.vsk", "");
    user.OtherReplaces(Task, std::string(2000, 'b'), true);
  });
}

TEST_F(JournalUserTest, KeepsWhatAKilledProcessHasMade) {
  CutPowerAfter([](JournalUser& user, std::mt19937_64& random) {
    user.Add(Task, std::string(2000, 'a'));
    user.Die(std::nullopt, random);
    Start(user);
  });
}

TEST_F(JournalUserTest, KeepsReplacementsOfAFileWhoseFirstFlushHasFailed) {
  CutPowerAfter([](JournalUser& user, std::mt19937_64&) {
    user.Calls().FailAll(FailingFileSystem::SyncCall, EIO);
    AddTask(user);
    EXPECT_EQ(1U, user.Failures());
    user.Calls().Reset();
    ReplaceTask(user, 'b');
    user.MakeSafe();
  });
}

TEST_F(JournalUserTest, KeepsReplacementsOfAFileThatWasNotWrittenToItsEnd) {
  CutPowerAfter([](JournalUser& user, std::mt19937_64&) {
    constexpr unsigned SecondWrite = 3;  // after the opening
    const unsigned before = user.Calls().Count();
    user.Calls().ShortenAt(before + SecondWrite - 1, CrashDisk::SectorSize);
    user.Calls().FailAt(before + SecondWrite, ENOSPC);
    AddTask(user);
    user.Calls().Reset();
    ReplaceTask(user, 'b');
    user.MakeSafe();
  });
}

TEST_F(JournalUserTest, KeepsAReplacementOfAFileThatWasNotThere) {
  CutPowerAfter([](JournalUser& user, std::mt19937_64&) {
    ReplaceTask(user, 'a');
    user.MakeSafe();
  });
}

TEST_F(JournalUserTest, KeepsWhatFollowsARecordThatWasNotWrittenToItsEnd) {
  CutPowerAfter([](JournalUser& user, std::mt19937_64&) {
    AddTask(user);
    ReplaceTask(user, 'b');
    const unsigned next = user.Calls().Count() + 1;
    user.Calls().ShortenAt(next, 100);
    user.Calls().FailAt(next + 1, ENOSPC);
    user.MakeSafe();
    user.Calls().Reset();
    ReplaceTask(user, 'c');
    user.MakeSafe();
  });
}

// A look that fails tells nothing of the file: what the journal holds is not lost by it.
TEST_F(JournalUserTest, KeepsTheJournalWhenAFileCannotBeLookedAt) {
  for (const auto kind : {FailingFileSystem::GetInfoCall, FailingFileSystem::ReadCall}) {
    JournalUser user;
    PrepareAfterALostReplacement(user);
    user.Calls().FailAll(kind, EIO);
    user.Begin();
    user.Calm();
    EXPECT_EQ("", user.Problem());
  }
}

TEST_F(JournalUserTest, KeepsAtItsEndAJournalThatWasNotReplayed) {
  JournalUser user;
  PrepareAfterALostReplacement(user);
  user.Calls().FailAll(FailingFileSystem::WriteCall, ENOSPC);
  user.Begin();
  user.Calls().Reset();
  user.End();
  std::mt19937_64 random(1);
  user.Die(std::nullopt, random);
  Start(user);
  EXPECT_EQ("", user.Problem());
}

// The journal is read first, with two reads; then the file.
TEST_F(JournalUserTest, LooksAtAFileAgainAfterASignal) {
  constexpr unsigned MostCalls = 30;
  for (unsigned number = 1; number < MostCalls; ++number) {
    JournalUser user;
    PrepareAfterALostReplacement(user);
    user.Calls().FailAt(number, EINTR);
    user.Begin();
    user.Read(Task);
    user.Calm();
    EXPECT_EQ("", user.Problem());
  }
}

}  // namespace
}  // namespace NoxAgent
