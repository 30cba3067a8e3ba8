#include "agent/handler/run/RunBook.h"

#include "tests/agent/handler/FakeScheduler.h"
#include "tests/support/TempDir.h"

#include <gtest/gtest.h>

using BaseSDK::AString;

namespace NoxHandlerTest {

using namespace NoxHandler;

namespace {

class RunBookTest : public testing::Test {
 protected:
  RunBookTest() {
    m_Settings.m_OutputPath = AString(m_Directory.Path().c_str());
    m_Settings.m_RecordPath = m_Settings.m_OutputPath;
  }

  const TestSupport::TempDir m_Directory;
  const FakeScheduler m_Scheduler;
  HandlerSettings m_Settings;
};

}  // namespace

TEST_F(RunBookTest, TellsWhenARunEndedNotWhenThatIsTold) {
  RunBook book(m_Settings);
  EXPECT_STREQ(book.NoteEnd("a", {100, 130, false, true, "exit status 1", 2}), "Ok");
  EXPECT_EQ(book.Latest().Find("a")->m_End, 130);
  book.Report({{"a", "Ok"}});
  EXPECT_EQ(FinalFailures(m_Settings.m_RecordPath).All().at("a").m_End, 130);
}

}  // namespace NoxHandlerTest
