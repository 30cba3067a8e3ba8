#include "tests/faults/Rig.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <functional>
#include <iostream>
#include <string>

namespace Faults {
namespace {

using TestSupport::FailingFileSystem;

/// The operation as it goes when all is well.
struct Course {
  unsigned m_Calls = 0;
  /// Every state of the store on the way, the first and the last included.
  std::vector<Rig::Snapshot> m_States;
  std::vector<std::string> m_History;

  const Rig::Snapshot& After() const { return m_States.back(); }
};

/// Watches what each call makes of the files: a rig dies at every call in turn, without any harm
/// being done by the death itself.
Course FollowCourse(const Operation& operation) {
  Course course;
  Rig whole;
  operation.m_Prepare(whole);
  whole.Files().Reset();
  course.m_States.push_back(whole.Look());
  EXPECT_EQ(operation.m_Act(whole), 1);
  course.m_Calls = whole.Files().Count();
  course.m_History = whole.Files().History();
  for (unsigned call = 2; call <= course.m_Calls; ++call) {
    Rig rig;
    operation.m_Prepare(rig);
    rig.Files().Reset();
    rig.Files().KillAt(call);
    (void)operation.m_Act(rig);
    course.m_States.push_back(rig.Look());
  }
  course.m_States.push_back(whole.Look());
  return course;
}

class StoreFaults : public testing::TestWithParam<Operation> {
 protected:
  StoreFaults() : m_Course(FollowCourse(GetParam())) {}
  ~StoreFaults() override { std::cout << GetParam().m_Name << ": " << m_Faults << " faults\n"; }

  std::string Where(unsigned call) const {
    return std::string(GetParam().m_Name) + ", call " + std::to_string(call) + " of " +
           std::to_string(m_Course.m_Calls) + ": " + m_Course.m_History[call - 1];
  }

  /// Runs the operation with what `plan` sets up, and looks at what it left.
  void Try(const std::function<void(FailingFileSystem&)>& plan, bool dies) {
    TryAndLook(plan, dies, [](const Rig&) {});
  }

  void TryAndLook(const std::function<void(FailingFileSystem&)>& plan, bool dies,
                  const std::function<void(const Rig&)>& look) {
    ++m_Faults;
    Rig rig;
    GetParam().m_Prepare(rig);
    rig.Files().Reset();
    plan(rig.Files());
    const long result = GetParam().m_Act(rig);
    const bool isDead = rig.Files().IsDead();
    EXPECT_EQ(isDead, dies);
    EXPECT_EQ(rig.OpenHandles(), 0U);
    if (!isDead && result == 1 && GetParam().m_SuccessMeansStored) {
      EXPECT_EQ(rig.Look(), m_Course.After()) << "though success was told";
    }
    ExpectOldOrNew(rig.Look(), dies);
    look(rig);
    ExpectToGoOn(rig);
  }

  /// One failure can be cleared up after, unless it is that of the clearing up.
  static void ExpectNothingHalfMade(const Rig& rig) {
    for (const std::string& name : rig.Others()) {
      EXPECT_NE(name.front(), '.') << name << " was left behind";
    }
  }

  void ExpectOldOrNew(const Rig::Snapshot& left, bool dies) const {
    const auto known = std::find(m_Course.m_States.begin(), m_Course.m_States.end(), left);
    if (known == m_Course.m_States.end() && !(dies && GetParam().m_MayBeCut && IsCut(left))) {
      ADD_FAILURE() << "neither an old nor a new state: " << testing::PrintToString(left);
    }
  }

  /// The new state, but for files that are only begun.
  bool IsCut(const Rig::Snapshot& left) const {
    return left.size() == m_Course.After().size() &&
           std::all_of(left.begin(), left.end(), [&](const auto& file) {
             const auto whole = m_Course.After().find(file.first);
             return whole != m_Course.After().end() &&
                    whole->second.compare(0, file.second.size(), file.second) == 0;
           });
  }

  /// After a restart every document is loaded, nothing half-made lies about, and what is due runs.
  void ExpectToGoOn(Rig& rig) const {
    const Rig::Snapshot left = rig.Look();
    rig.Restart("2005-03-02 09:30:00");
    for (const auto& file : left) {
      const std::string& name = file.first;
      const std::string id = name.substr(0, name.rfind('.'));
      EXPECT_NE(rig.Scheduler().Report().find(' ' + id + '\n'), std::string::npos)
          << name << " is not among " << rig.Scheduler().Report();
    }
    ExpectNothingHalfMade(rig);
    rig.Scheduler().OpenGate();
    rig.Scheduler().RunUntil("2005-03-02 14:30:00");
    for (const char* name : {"T1.vsk", "T2.vsk"}) {
      const auto file = left.find(name);
      if (file != left.end() && file->second.find("Enabled=\"0\"") == std::string::npos) {
        EXPECT_NE(rig.Look()[name].find("<RunTime>2005-03-02 1"), std::string::npos)
            << name << " does not run any more";
      }
    }
    EXPECT_EQ(rig.OpenHandles(), 0U);
  }

  const Course m_Course;
  unsigned m_Faults = 0;
};

TEST_P(StoreFaults, EveryCallFailsOnceInEveryWay) {
  for (unsigned call = 1; call <= m_Course.m_Calls; ++call) {
    for (const int error : {EIO, ENOSPC, EROFS, EACCES, EMFILE, ENOENT, EINTR, ENOMEM}) {
      SCOPED_TRACE(Where(call) + " fails with " + std::to_string(error));
      TryAndLook([&](FailingFileSystem& files) { files.FailAt(call, error); }, false,
                 ExpectNothingHalfMade);
    }
  }
}

TEST_P(StoreFaults, EveryCallFailsFromOneOnForEver) {
  for (unsigned call = 1; call <= m_Course.m_Calls; ++call) {
    SCOPED_TRACE(Where(call) + " and all later ones fail");
    Try(
        [&](FailingFileSystem& files) {
          for (unsigned later = call; later <= m_Course.m_Calls + 50; ++later) {
            files.FailAt(later, EIO);
          }
        },
        false);
  }
}

TEST_P(StoreFaults, ProcessDiesInEveryCall) {
  for (unsigned call = 1; call <= m_Course.m_Calls; ++call) {
    for (const std::size_t bytes : {0U, 1U, 100U, 100000U}) {
      SCOPED_TRACE(Where(call) + " dies after " + std::to_string(bytes) + " bytes");
      Try([&](FailingFileSystem& files) { files.KillAt(call, bytes); }, true);
    }
  }
}

TEST_P(StoreFaults, EveryWriteIsShort) {
  for (unsigned call = 1; call <= m_Course.m_Calls; ++call) {
    if (m_Course.m_History[call - 1] != "write") {
      continue;
    }
    for (const std::size_t bytes : {0U, 1U, 100U}) {
      SCOPED_TRACE(Where(call) + " takes only " + std::to_string(bytes) + " bytes");
      Try([&](FailingFileSystem& files) { files.ShortenAt(call, bytes); }, false);
    }
  }
}

std::string NameOf(const testing::TestParamInfo<Operation>& info) {
  return info.param.m_Name;
}
INSTANTIATE_TEST_SUITE_P(Store, StoreFaults, testing::ValuesIn(Operations()), NameOf);

}  // namespace
}  // namespace Faults
