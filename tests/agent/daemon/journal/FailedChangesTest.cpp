#include "agent/daemon/journal/FailedChanges.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

namespace NoxAgent {
namespace {

TEST(FailedChanges, AreGivenOnceToTheThreadThatMadeThem) {
  FailedChanges failed;
  failed.Note(std::this_thread::get_id(), "T1.vsk", EIO);
  failed.Note(std::this_thread::get_id(), "T2.vsk", ENOSPC);
  std::thread([&] { EXPECT_THAT(failed.TakeOwn(), IsEmpty()); }).join();
  EXPECT_THAT(failed.TakeOwn(), ElementsAre(Pair("T1.vsk", EIO), Pair("T2.vsk", ENOSPC)));
  EXPECT_THAT(failed.TakeOwn(), IsEmpty());
}

TEST(FailedChanges, KeepTheFirstErrorOfAFile) {
  FailedChanges failed;
  failed.Note(std::this_thread::get_id(), "T1.vsk", ENOSPC);
  failed.Note(std::this_thread::get_id(), "T1.vsk", EIO);
  EXPECT_THAT(failed.TakeOwn(), ElementsAre(Pair("T1.vsk", ENOSPC)));
}

}  // namespace
}  // namespace NoxAgent
