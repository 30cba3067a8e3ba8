// Cases on which the two implementations once disagreed, with the answer that was right.
#include "tests/proof/Comparison.h"

#include <VirtualTime/Zone.h>

#include <gtest/gtest.h>

namespace {

struct Row {
  const char* zone;
  const char* trigger;
  long lastRun, now, sleepSeconds;
  bool due, late, expired;
  long sleepAfterwards, nextRun;
};

const Row rows[] = {
    {"America/New_York",
     R"(<Trigger Type="1"><BeginDate>2005/03/01 08:00:00</BeginDate></Trigger>)", -1, 1109682030, 0,
     true, false, false, 0, 1109768400},
};

TEST(FoundCases, StayMended) {
  for (const Row& row : rows) {
    const VirtualTime::Zone zone(row.zone);
    const PlainSchedule::Answer wanted{row.due, row.late, row.expired, row.sleepAfterwards,
                                       row.nextRun};
    long lastRun = row.lastRun;
    CTaskTrigger trigger(row.trigger, &lastRun);
    EXPECT_EQ(Show(Ask(trigger, row.now, row.sleepSeconds)), Show(wanted))
        << row.zone << " " << row.trigger << " last run " << row.lastRun << " now " << row.now;
  }
}

}  // namespace
