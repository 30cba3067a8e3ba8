#include "agent/handler/job/Duration.h"

#include <gtest/gtest.h>

#include <iterator>
#include <optional>

namespace NoxHandlerTest {

using NoxHandler::Duration;

TEST(Duration, ReadsSecondsMinutesAndHours) {
  const struct {
    const char* m_Text;
    std::optional<long> m_Seconds;
  } rows[] = {{"0", 0},
              {"90", 90},
              {"90s", 90},
              {"5m", 300},
              {"2h", 7200},
              {"87600h", Duration::MaxSeconds},
              {"87601h", Duration::MaxSeconds + 1},
              {"99999999999999999999", Duration::MaxSeconds + 1},
              {"", std::nullopt},
              {"s", std::nullopt},
              {"-1", std::nullopt},
              {"5 m", std::nullopt},
              {"1h30m", std::nullopt},
              {"1d", std::nullopt}};
  for (const auto& row : rows) {
    EXPECT_EQ(Duration::Parse(row.m_Text), row.m_Seconds) << row.m_Text;
  }
}

TEST(Duration, LeavesTheValueAloneThatIsOutOfItsBounds) {
  long seconds = 7;
  EXPECT_EQ(Duration::Read("29", 30, 900, seconds).ToUtf8(), "is to be at least 30s");
  EXPECT_EQ(Duration::Read("16m", 30, 900, seconds).ToUtf8(), "is to be at most 15m");
  EXPECT_EQ(Duration::Read("x", 30, 900, seconds).ToUtf8(),
            "is to be a number of seconds, or a number with s, m or h after it");
  EXPECT_EQ(seconds, 7);
  EXPECT_EQ(Duration::Read("15m", 30, 900, seconds).ToUtf8(), "");
  EXPECT_EQ(seconds, 900);
}

TEST(Duration, IsTextInItsShortestForm) {
  const char* const rows[] = {"0s", "90s", "15m", "2h", "3601s", "61m"};
  for (const char* row : rows) {
    EXPECT_EQ(Duration::Text(Duration::Parse(row).value()).ToUtf8(), row);
  }
}

}  // namespace NoxHandlerTest
