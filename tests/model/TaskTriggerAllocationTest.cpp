// A due test takes no memory: the monitor asks every trigger of every task, each time it wakes.
#include "tests/model/Moment.h"
#include "tests/model/TriggerTable.h"

#include <VirtualTime/Zone.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <new>

namespace {

long allocations = 0;

}  // namespace

void* operator new(std::size_t size) {
  ++allocations;
  void* const memory = std::malloc(size == 0 ? 1 : size);
  if (memory == nullptr) {
    throw std::bad_alloc();
  }
  return memory;
}

void operator delete(void* memory) noexcept {
  std::free(memory);
}

void operator delete(void* memory, std::size_t /*size*/) noexcept {
  std::free(memory);
}

namespace {

constexpr const char* Daily =
    R"(<Trigger Type="1" Interval="30" Duration="120"><BeginDate>2005/03/01 08:00:00</BeginDate>)"
    "</Trigger>";
constexpr const char* February30 =
    R"(<Trigger Type="3"><BeginDate>2005/03/01 08:00:00</BeginDate>)"
    "<DaysOfMonth>536870912</DaysOfMonth><MonthsOfYear>2</MonthsOfYear></Trigger>";

TEST(TaskTriggerAllocation, ADueTestAndTheSearchForTheNextRunTakeNoMemory) {
  const VirtualTime::Zone zone(NewYork);
  for (const char* xml : {Daily, February30}) {
    AskedTrigger asked(xml, Moment::At("2005-03-01 09:00:00 -0500"));
    CTaskTrigger& trigger = asked.m_Trigger;
    (void)asked.AnswerAt(Moment::At("2006-11-05 08:40:00 -0500"));
    const long from = Moment::At("2006-11-06 08:40:00 -0500");
    long sleepSeconds = 86400;
    bool late = false, expired = false, changed = false;
    const long before = allocations;
    (void)trigger.IsDue(false, false, sleepSeconds, late, expired, changed);
    trigger.CalculateNextRunTime(from, false);
    trigger.UpdateClosestRun(true);
    EXPECT_EQ(before, allocations) << xml;
  }
  EXPECT_GT(allocations, 0) << "they are counted";
}

}  // namespace
