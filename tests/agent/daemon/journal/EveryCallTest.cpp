#include "tests/agent/daemon/journal/JournalUser.h"
#include "tests/support/EnvironmentNumber.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>

namespace NoxAgent {
namespace {

using TestSupport::FailingFileSystem;

// One life of an agent, of which each call in turn fails or is the last one.
class EveryCallTest : public testing::Test {
 protected:
  using Loss = std::optional<CrashDisk::Loss>;

  // Leaves a journal whose replay has something to do.
  static void Prepare(JournalUser& user) {
    std::mt19937_64 random(1);
    user.Prepare();
    user.Begin();
    user.Calm();
    user.Add("A.vsk", std::string(600, 'a'));
    user.Add("B.vsk", std::string(600, 'b'));
    user.MakeSafe();
    user.Replace("A.vsk", std::string(700, 'c'));
    user.Replace("B.vsk", std::string(700, 'd'));
    user.MakeSafe();
    user.Die(CrashDisk::Loss::All, random);
    user.Prepare();
  }

  static void Live(JournalUser& user) {
    constexpr std::size_t MoreThanHalf = Journal::Size * 2 / 3;
    user.Begin();
    user.List();
    user.Add("C.vsk", "new");
    user.Replace("A.vsk", std::string(800, 'e'));
    user.MakeSafe();
    user.Replace("A.vsk", std::string(500, 'f'));
    user.Replace("B.vsk", std::string(900, 'g'));
    user.Read("B.vsk");
    user.MakeSafe();
    user.Replace("C.vsk", std::string(MoreThanHalf, 'h'));
    user.Replace("C.vsk", std::string(MoreThanHalf, 'i'));
    user.MakeSafe();
    for (char letter = 'A'; letter <= 'P'; ++letter) {  // as many as are prepared at once
      user.Replace("B.vsk", std::string(50, letter));
    }
    for (const char* const name : {"A.vsk", "B.vsk", "A.vsk", "C.vsk"}) {  // these are late
      user.Replace(name, std::string("late ") + name);
    }
    user.MakeSafe();
    user.Replace("B.vsk", "later");
    user.Follow();
    (void)user.Invent();
    user.Remove("A.vsk");
    user.Replace("B.vsk", "last");
    user.End();
  }

  static unsigned CountCalls() {
    JournalUser user;
    Prepare(user);
    Live(user);
    EXPECT_EQ("", user.Problem());
    EXPECT_EQ(0U, user.Failures());
    return user.Calls().Count();
  }

  static void StartAgain(JournalUser& user, Loss loss, unsigned seed) {
    std::mt19937_64 random(seed);
    user.Die(loss, random);
    user.Prepare();
    user.Begin();
    user.Calm();
  }

  /// At each call or, with NOX_JOURNAL_CALL_STEP, at one of so many, beginning with `first`.
  template <class Act>
  static void AtEachCall(unsigned first, Act act) {
    const auto step =
        static_cast<unsigned>(TestSupport::EnvironmentNumber("NOX_JOURNAL_CALL_STEP", 1));
    const unsigned count = CountCalls();
    for (unsigned number = std::min(first, step); number <= count; number += step) {
      SCOPED_TRACE("call " + std::to_string(number));
      JournalUser user;
      Prepare(user);
      act(user, number);
      ASSERT_EQ("", user.Problem());
    }
  }

  static void FailAtEach(unsigned first, int error) {
    AtEachCall(first, [&](JournalUser& user, unsigned number) {
      user.Calls().FailAt(number, error);
      Live(user);
      user.Calm();
      StartAgain(user, CrashDisk::Loss::Any, number);
    });
  }

  static void DieAtEach(unsigned first, Loss loss) {
    AtEachCall(first, [&](JournalUser& user, unsigned number) {
      user.Calls().KillAt(number, number * 100);
      Live(user);
      StartAgain(user, loss, number);
    });
  }
};

TEST_F(EveryCallTest, MayFail) {
  FailAtEach(1, EIO);
}

TEST_F(EveryCallTest, MayFindTheDiskFull) {
  FailAtEach(2, ENOSPC);
}

TEST_F(EveryCallTest, MayBeInterrupted) {
  FailAtEach(3, EINTR);
}

TEST_F(EveryCallTest, MayBeTheLastOne) {
  DieAtEach(1, std::nullopt);
}

TEST_F(EveryCallTest, MayBeTheLastOneBeforeAllUnflushedIsLost) {
  DieAtEach(2, CrashDisk::Loss::All);
}

TEST_F(EveryCallTest, MayBeTheLastOneBeforeAnythingUnflushedIsLost) {
  DieAtEach(3, CrashDisk::Loss::Any);
}

// Every failure that a call does not return is reported by MakeSafe.
TEST_F(EveryCallTest, IsReportedWhenItFailsLater) {
  JournalUser user;
  Prepare(user);
  user.Begin();
  user.Replace("A.vsk", "new");
  user.Calls().FailAll(FailingFileSystem::RenameCall, EIO);
  user.MakeSafe();
  EXPECT_EQ(1U, user.Failures());
  user.Calls().Reset();
  user.Replace("A.vsk", "newer");
  user.Calls().FailAll(FailingFileSystem::SyncCall, EIO);
  user.MakeSafe();
  EXPECT_EQ(2U, user.Failures());
  user.Calm();
  EXPECT_EQ(2U, user.Failures());
  EXPECT_EQ("", user.Problem());
}

}  // namespace
}  // namespace NoxAgent
