#include "agent/handler/run/RunRecords.h"

#include "tests/support/LogCapture.h"
#include "tests/support/TempDir.h"

#include <gtest/gtest.h>

#include <cerrno>

using BaseSDK::ALogger;
using BaseSDK::AString;
using TestSupport::LogCapture;
using TestSupport::TempDir;

namespace NoxHandlerTest {

using namespace NoxHandler;

namespace {

RunRecords RecordsIn(const TempDir& directory) {
  return RunRecords(AString(directory.Path().c_str()));
}

}  // namespace

TEST(RunRecords, GivesBackWhatWasWritten) {
  const TempDir directory;
  const RunRecords records = RecordsIn(directory);
  ASSERT_EQ(records.Write("a.b", {1234, 5678901234567ULL, "boot", "token"}), 0);
  const auto all = records.All();
  ASSERT_EQ(all.size(), 1u);
  EXPECT_EQ(all[0].m_TaskId, AString("a.b"));
  EXPECT_EQ(all[0].m_Record.m_Pid, 1234);
  EXPECT_EQ(all[0].m_Record.m_StartTicks, 5678901234567ULL);
  EXPECT_EQ(all[0].m_Record.m_BootId, "boot");
  EXPECT_EQ(all[0].m_Record.m_Token, "token");
}

TEST(RunRecords, ForgetsWhatWasRemoved) {
  const TempDir directory;
  const RunRecords records = RecordsIn(directory);
  ASSERT_EQ(records.Write("a", {2, 1, "boot", "token"}), 0);
  records.Remove("a");
  records.Remove("b");
  EXPECT_TRUE(records.All().empty());
}

TEST(RunRecords, DeletesWhatCannotBeReadAndSaysSo) {
  for (const char* text : {"", "1234 5 boot token", "x 5 boot token end", "1 5 boot token end",
                           "-7 5 boot token end"}) {
    SCOPED_TRACE(text);
    const LogCapture log;
    const TempDir directory;
    directory.Write("a.run", text);
    directory.Write("other", "left alone");
    EXPECT_TRUE(RecordsIn(directory).All().empty());
    EXPECT_EQ(directory.Names(), std::vector<std::string>{"other"});
    EXPECT_EQ(log.Messages(ALogger::Warning).size(), 1u);
  }
}

TEST(RunRecords, ReportsThatItCannotWrite) {
  const TempDir directory;
  const RunRecords records(AString((directory / "missing").c_str()));
  EXPECT_EQ(records.Write("a", {2, 1, "boot", "token"}), ENOENT);
  EXPECT_TRUE(records.All().empty());
}

}  // namespace NoxHandlerTest
