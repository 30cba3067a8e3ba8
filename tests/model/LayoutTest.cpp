// How tasks and triggers lie in memory: others read their members directly.
#include "model/Task.h"

#include <gtest/gtest.h>

#include <type_traits>

namespace {

template <std::size_t N>
void ExpectInOrder(const void* const (&members)[N]) {
  for (std::size_t i = 1; i < N; ++i) {
    EXPECT_LT(members[i - 1], members[i]) << "member " << i;
  }
}

TEST(TaskTriggerLayout, HasItsMembersInOrderAndNothingVirtual) {
  long lastRun = -1;
  CTaskTrigger t("", &lastRun);
  EXPECT_FALSE(std::is_polymorphic_v<CTaskTrigger>);
  EXPECT_EQ(static_cast<const void*>(&t), &t.m_Type) << "no base class, nothing before";
  ExpectInOrder({&t.m_Type, &t.m_Interval, &t.m_Duration, &t.m_Disabled, &t.m_Description,
                 &t.m_KillAtEnd, &t.m_BeginDate, &t.m_EndDate, &t.m_DaysInterval,
                 &t.m_WeeksInterval, &t.m_DaysOfWeek, &t.m_DaysOfMonth, &t.m_MonthsOfYear,
                 &t.m_Week, &t.m_pLastRun, &t.m_NextRun, &t.m_ClosestRun});
  for (const std::size_t size :
       {sizeof t.m_DaysOfWeek, sizeof t.m_DaysOfMonth, sizeof t.m_MonthsOfYear}) {
    EXPECT_EQ(size, 4u) << "masks have 32 bits";
  }
}

TEST(TaskLayout, HasItsMembersInOrderAndNothingVirtual) {
  CTask t(nullptr, "t", "<Task/>");
  EXPECT_FALSE(std::is_polymorphic_v<CTask>);
  EXPECT_EQ(static_cast<const void*>(&t), &t.m_pScheduler) << "no base class, nothing before";
  ExpectInOrder({&t.m_pScheduler, &t.m_TaskID, &t.m_TaskXML, &t.m_HandlerCLSID, &t.m_LastRun,
                 &t.m_Triggers, &t.m_Enabled, &t.m_Late});
}

}  // namespace
