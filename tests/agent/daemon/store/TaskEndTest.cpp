#include "agent/daemon/store/TaskEnd.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>
#include <string>

using BaseSDK::AString;

namespace NoxAgent {
namespace {

std::string Trigger(const std::string& begin, const std::string& end) {
  return "<Trigger><BeginDate>" + begin + "</BeginDate>" +
         (end.empty() ? "" : "<EndDate>" + end + "</EndDate>") + "</Trigger>";
}

TEST(TaskEnd, TellsWhichTriggerEndedWhen) {
  (void)::setenv("TZ", "UTC0", 1);
  ::tzset();
  const std::string ended = Trigger("2020/01/01 00:00:00", "2021/01/01 00:00:00");
  const struct {
    std::string m_Triggers;
    const char* m_Told;
  } rows[] = {
      {"", "it has no trigger"},
      {ended, "its trigger ended on 2021-01-01 00:00:00"},
      {Trigger("2022/01/01 00:00:00", "2021/01/01 00:00:00"),
       "its trigger ended on 2022-01-01 00:00:00"},
      {ended + Trigger("2020/01/01 00:00:00", "2022/06/07 08:09:10"),
       "its triggers have ended: 1 on 2021-01-01 00:00:00, 2 on 2022-06-07 08:09:10"},
      {ended + Trigger("2020/01/01 00:00:00", ""), "none of its triggers will fire again"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(WhyTaskEnds("<Task>" + row.m_Triggers + "</Task>"), AString(row.m_Told))
        << row.m_Triggers;
  }
  std::string many;
  for (int i = 0; i < 7; ++i) {
    many += ended;
  }
  EXPECT_NE(WhyTaskEnds("<Task>" + many + "</Task>").Find(", and 2 more"), AString::npos);
}

}  // namespace
}  // namespace NoxAgent
