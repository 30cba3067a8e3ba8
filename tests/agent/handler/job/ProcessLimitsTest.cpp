#include "agent/handler/job/ProcessLimits.h"

#include <gtest/gtest.h>

#include <string>

using BaseSDK::AString;

namespace NoxHandlerTest {

using NoxHandler::ProcessLimits;

namespace {

using ReadLimit = AString (ProcessLimits::*)(const AString& text);

// What is wrong with each text, or nothing; what it is not to change stays.
void ExpectRefused(ReadLimit read, const std::vector<const char*>& texts, const char* reason) {
  for (const char* text : texts) {
    ProcessLimits limits;
    EXPECT_EQ((limits.*read)(text).ToUtf8(), reason) << text;
    EXPECT_FALSE(limits.m_Nice || limits.m_IoPriority || limits.m_MemoryBytes ||
                 limits.m_CpuSeconds || limits.m_Files || !limits.m_OomScore.empty())
        << text;
  }
}

}  // namespace

TEST(ProcessLimits, ReadNumbersWithinTheirBounds) {
  ProcessLimits limits;
  EXPECT_EQ(limits.ReadNice("-20").ToUtf8(), "");
  EXPECT_EQ(limits.m_Nice, -20);
  EXPECT_EQ(limits.ReadNice("19").ToUtf8(), "");
  EXPECT_EQ(limits.m_Nice, 19);
  EXPECT_EQ(limits.ReadFiles("8").ToUtf8(), "");
  EXPECT_EQ(limits.m_Files, 8);
  EXPECT_EQ(limits.ReadOomScore("-1000").ToUtf8(), "");
  EXPECT_EQ(limits.m_OomScore, "-1000");
  EXPECT_EQ(limits.ReadCpuTime("2h").ToUtf8(), "");
  EXPECT_EQ(limits.m_CpuSeconds, 7200);
  ExpectRefused(&ProcessLimits::ReadNice, {"", "-21", "20", "+5", "5 ", "x"},
                "is to be a number from -20 to 19");
  ExpectRefused(&ProcessLimits::ReadFiles, {"", "7", "1048577", "-1", "0x10"},
                "is to be a number from 8 to 1048576");
  ExpectRefused(&ProcessLimits::ReadOomScore, {"", "-1001", "1001", "+1", "01"},
                "is to be a number from -1000 to 1000");
  ExpectRefused(&ProcessLimits::ReadCpuTime, {"0"}, "is to be at least 1s");
  ExpectRefused(&ProcessLimits::ReadCpuTime, {"87601h"}, "is to be at most 87600h");
}

TEST(ProcessLimits, ReadAmountsOfMemory) {
  const struct {
    const char* m_Text;
    std::uint64_t m_Bytes;
  } rows[] = {{"1048576", 1048576},
              {"1024K", 1048576},
              {"512M", 536870912},
              {"4G", 4294967296},
              {"1024G", 1099511627776}};
  for (const auto& row : rows) {
    ProcessLimits limits;
    EXPECT_EQ(limits.ReadMemory(row.m_Text).ToUtf8(), "") << row.m_Text;
    EXPECT_EQ(limits.m_MemoryBytes, row.m_Bytes) << row.m_Text;
  }
  ExpectRefused(&ProcessLimits::ReadMemory,
                {"", "M", "0", "1048575", "1025G", "99999999999G", "-1M", "1.5G", "512MB", "512m",
                 "1 G", "1T"},
                "is to be a number of bytes from 1M to 1024G, such as 512M");
}

TEST(ProcessLimits, SayAmountsOfMemoryWithTheLargestUnit) {
  const char* const texts[][2] = {{"1048577", "1048577"}, {"1025K", "1025K"}, {"2048K", "2M"},
                                  {"512M", "512M"},       {"4096M", "4G"},    {"1024G", "1024G"}};
  for (const auto& [text, said] : texts) {
    ProcessLimits limits;
    EXPECT_EQ(limits.ReadMemory(text).ToUtf8(), "");
    EXPECT_EQ(limits.MemoryText().ToUtf8(), said);
  }
}

TEST(ProcessLimits, ReadClassesOfInputAndOutput) {
  const struct {
    const char* m_Text;
    int m_Priority;
  } rows[] = {{"idle", 0x6000},
              {"best-effort 0", 0x4000},
              {"best-effort  7", 0x4007},
              {"realtime 3", 0x2003}};
  for (const auto& row : rows) {
    ProcessLimits limits;
    EXPECT_EQ(limits.ReadIoPriority(row.m_Text).ToUtf8(), "") << row.m_Text;
    EXPECT_EQ(limits.m_IoPriority, row.m_Priority) << row.m_Text;
  }
  ExpectRefused(&ProcessLimits::ReadIoPriority,
                {"", "idle 0", "best-effort", "realtime", "best-effort 8", "realtime -1", "Idle",
                 "none 0", "realtime 3 3"},
                "is to be idle, best-effort N or realtime N, with N from 0 to 7");
}

}  // namespace NoxHandlerTest
