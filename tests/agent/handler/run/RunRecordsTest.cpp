#include "agent/handler/run/RunRecords.h"

#include "tests/agent/handler/FullDisk.h"
#include "tests/support/LogCapture.h"
#include "tests/support/TempDir.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>
#include <functional>
#include <string>

using BaseSDK::ALogger;
using BaseSDK::AString;
using TestSupport::LogCapture;
using TestSupport::TempDir;

namespace NoxHandlerTest {

using namespace NoxHandler;

namespace {

constexpr std::size_t Slots = 3;
constexpr std::size_t SlotBytes = NamedRunRecord::Bytes;

class RunRecordsTest : public testing::Test {
 protected:
  // As the agent that starts next has them.
  RunRecords Open(std::size_t slots = Slots) const {
    return RunRecords(AString(m_Directory.Path().c_str()), slots);
  }
  static int Write(RunRecords& records, const std::string& taskId) {
    return records.Write(
        {AString::FromUtf8(taskId), {1234, 5678901234567ULL, "boot", TokenOf(taskId)}});
  }
  // The tests have one run of a task.
  static std::string TokenOf(const std::string& taskId) {
    return std::to_string(std::hash<std::string>()(taskId));
  }
  std::vector<std::string> Found() const {
    std::vector<std::string> tasks;
    for (const NamedRunRecord& named : Open().All()) {
      tasks.push_back(named.m_TaskId.ToUtf8());
    }
    return tasks;
  }
  static std::string Slot(std::string text) {
    text.resize(SlotBytes, '\0');
    return text;
  }

  const TempDir m_Directory;
};

using Names = std::vector<std::string>;

}  // namespace

TEST_F(RunRecordsTest, GivesBackWhatWasWritten) {
  auto records = Open();
  ASSERT_EQ(Write(records, "a.b"), 0);
  const auto all = Open().All();
  ASSERT_EQ(all.size(), 1u);
  EXPECT_EQ(all[0].m_TaskId, AString("a.b"));
  EXPECT_EQ(all[0].m_Record.m_Pid, 1234);
  EXPECT_EQ(all[0].m_Record.m_StartTicks, 5678901234567ULL);
  EXPECT_EQ(all[0].m_Record.m_BootId, "boot");
  EXPECT_EQ(all[0].m_Record.m_Token, TokenOf("a.b"));
}

TEST_F(RunRecordsTest, GivesBackEveryName) {
  for (const std::string name : {" a b ", "a\nb end\n", "12 34 end", "\xC3\xA4", "\t"}) {
    SCOPED_TRACE(name);
    auto records = Open();
    ASSERT_EQ(Write(records, name), 0);
    EXPECT_EQ(Found(), Names{name});
    records.Remove(TokenOf(name));
  }
  const std::string longest(240, 'x');
  auto records = Open();
  ASSERT_EQ(records.Write({AString(longest.c_str()),
                           {0x7FFFFFFF, ~0ULL, std::string(36, 'b'), std::string(32, 't')}}),
            0);
  EXPECT_EQ(Found(), Names{longest});
  EXPECT_EQ(Write(records, std::string(600, 'x')), ENAMETOOLONG);
  EXPECT_EQ(Found(), Names{longest});
}

TEST_F(RunRecordsTest, ForgetsWhatWasRemoved) {
  auto records = Open();
  ASSERT_EQ(Write(records, "a"), 0);
  ASSERT_EQ(Write(records, "b"), 0);
  records.Remove(TokenOf("a"));
  records.Remove(TokenOf("c"));
  EXPECT_EQ(Found(), Names{"b"});
}

TEST_F(RunRecordsTest, HasOneOfARunAndAsManyOfATaskAsItHasRuns) {
  auto records = Open();
  ASSERT_EQ(Write(records, "a"), 0);
  ASSERT_EQ(records.Write({"a", {7, 1, "boot", TokenOf("a")}}), 0);
  ASSERT_EQ(records.Write({"a", {8, 1, "boot", "other"}}), 0);
  const auto all = Open().All();
  ASSERT_EQ(all.size(), 2u);
  EXPECT_EQ(all[0].m_Record.m_Pid, 7);
  EXPECT_EQ(all[1].m_Record.m_Pid, 8);
  records.Remove("other");
  EXPECT_EQ(Found(), Names{"a"});
}

TEST_F(RunRecordsTest, HoldsItsSpaceFromTheStart) {
  auto records = Open();
  EXPECT_EQ(std::filesystem::file_size(m_Directory / "runs"), Slots * SlotBytes);
  const FullDisk full(m_Directory.Path());
  for (int round = 0; round < 3; ++round) {
    for (const char* name : {"a", "b", "c"}) {
      EXPECT_EQ(Write(records, name), 0);
    }
    EXPECT_EQ(Found(), (Names{"a", "b", "c"}));
    EXPECT_EQ(Write(records, "d"), ENOSPC);
    EXPECT_EQ(Found(), (Names{"a", "b", "c"}));
    for (const char* name : {"b", "a", "c"}) {
      records.Remove(TokenOf(name));
    }
    EXPECT_EQ(Found(), Names{});
  }
}

// Records of processes that could not be ended stay, and take no run's place.
TEST_F(RunRecordsTest, TakesMoreThanItHoldsSpaceForWhenThereIsRoom) {
  auto records = Open(1);
  EXPECT_EQ(Write(records, "a"), 0);
  EXPECT_EQ(Write(records, "b"), 0);
  EXPECT_EQ(Found(), (Names{"a", "b"}));
}

TEST_F(RunRecordsTest, KeepsWhatIsThereWhenItHoldsMoreOrLessSpace) {
  {
    auto records = Open();
    for (const char* name : {"a", "b", "c"}) {
      ASSERT_EQ(Write(records, name), 0);
    }
  }
  (void)Open(100);
  EXPECT_EQ(std::filesystem::file_size(m_Directory / "runs"), 100 * SlotBytes);
  (void)Open(1);
  EXPECT_EQ(Found(), (Names{"a", "b", "c"}));
}

TEST_F(RunRecordsTest, SaysThatThereIsNoRoomForThem) {
  const LogCapture log;
  const FullDisk full(m_Directory.Path());
  auto records = Open();
  EXPECT_EQ(log.CountContaining("Cannot hold space for the records of runs in "), 1u);
  EXPECT_EQ(log.CountContaining("/runs: No space left on device"), 1u);
  EXPECT_EQ(Write(records, "a"), ENOSPC);
}

TEST_F(RunRecordsTest, AreNoneOfATextThatEndsBeforeTheTask) {
  const std::string whole = "1234 5 boot token 1 b end\n";
  ASSERT_TRUE(NamedRunRecord::Decode(whole));
  for (std::size_t length = 0; length < whole.size() - 1; ++length) {
    EXPECT_FALSE(NamedRunRecord::Decode(whole.substr(0, length))) << length;
  }
}

TEST_F(RunRecordsTest, DeletesWhatCannotBeReadAndSaysSo) {
  for (const char* text :
       {"x", "1234 5 boot token 1 a", "1234 5 boot token 2 a end\n",
        "1234 5 boot token 600 a end\n", "x 5 boot token 1 a end\n", "1 5 boot token 1 a end\n",
        "-7 5 boot token 1 a end\n", "1234 5 boot token 1", "1234 5 boot token 1\n",
        "1234 5 boot token -1 a end\n"}) {
    SCOPED_TRACE(text);
    {
      const LogCapture log;
      m_Directory.Write("runs", Slot("1234 5 boot token 1 b end\n") + Slot(text));
      EXPECT_EQ(Found(), Names{"b"});
      EXPECT_EQ(log.Messages(ALogger::Warning).size(), 1u);
      EXPECT_EQ(log.CountContaining("Deleting the unreadable run record 1 of "), 1u);
    }
    const LogCapture log;
    EXPECT_EQ(Found(), Names{"b"});
    EXPECT_EQ(log.Lines().size(), 0u);
  }
}

TEST_F(RunRecordsTest, ReportsThatItCannotWrite) {
  RunRecords records(AString((m_Directory / "missing").c_str()), Slots);
  EXPECT_EQ(Write(records, "a"), ENOENT);
  EXPECT_TRUE(records.All().empty());
}

TEST_F(RunRecordsTest, AreWrittenWhereTheNextAgentLooksWhenTheFileWasDeleted) {
  auto records = Open();
  ASSERT_EQ(Write(records, "a"), 0);
  std::filesystem::remove(m_Directory / "runs");
  ASSERT_EQ(Write(records, "b"), 0);
  EXPECT_EQ(Found(), Names{"b"});
}

}  // namespace NoxHandlerTest
