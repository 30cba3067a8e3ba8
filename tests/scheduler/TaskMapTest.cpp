#include "scheduler/TaskMap.h"

#include "model/Task.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

using BaseSDK::AString;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class TaskMapTest : public testing::Test {
 protected:
  void Insert(const std::string& id) { m_Tasks.Insert(NodeOf(id, true)); }
  static TaskMap::Node NodeOf(const std::string& id, bool hasTask) {
    TaskMap::Map made;
    const AString taskID = AString::FromUtf8(id);
    made[taskID] = hasTask ? std::make_unique<CTask>(nullptr, taskID, L"<Task/>") : nullptr;
    return made.extract(made.begin());
  }
  // What a walk tells, in its order: "T1", and "T1 without a task".
  std::vector<std::string> Visited() {
    std::vector<std::string> visited;
    TaskMap::Walk walk(m_Tasks);
    for (TaskMap::Entry entry; walk.Next(entry);) {
      EXPECT_TRUE(entry.m_Task == nullptr || entry.m_Task->m_TaskID == *entry.m_ID);
      visited.push_back(entry.m_ID->ToUtf8() + (entry.m_Task == nullptr ? " without a task" : ""));
    }
    return visited;
  }

  TaskMap m_Tasks;
};

TEST_F(TaskMapTest, VisitsAllInTheOrderOfTheirIds) {
  EXPECT_THAT(Visited(), IsEmpty());
  Insert("T2");
  Insert("T10");
  Insert("T1");
  EXPECT_THAT(Visited(), ElementsAre("T1", "T10", "T2"));
  EXPECT_THAT(Visited(), ElementsAre("T1", "T10", "T2"));
}

TEST_F(TaskMapTest, VisitsWhatIsThereAfterEachChange) {
  Insert("T1");
  Insert("T2");
  EXPECT_THAT(Visited(), ElementsAre("T1", "T2"));
  Insert("T0");
  EXPECT_THAT(Visited(), ElementsAre("T0", "T1", "T2"));
  EXPECT_FALSE(m_Tasks.Extract(L"T1").empty());
  EXPECT_THAT(Visited(), ElementsAre("T0", "T2"));
  EXPECT_TRUE(m_Tasks.Extract(L"T1").empty());
  Insert("T1");
  EXPECT_THAT(Visited(), ElementsAre("T0", "T1", "T2"));
  m_Tasks.Clear();
  EXPECT_THAT(Visited(), IsEmpty());
  EXPECT_EQ(m_Tasks.Count(), 0U);
}

TEST_F(TaskMapTest, VisitsAPlaceWithoutATask) {
  m_Tasks.Insert(NodeOf("T1", false));
  EXPECT_THAT(Visited(), ElementsAre("T1 without a task"));
}

// A task that is replaced has another address, which the list must not keep.
TEST_F(TaskMapTest, VisitsTheTaskThatReplacedAnother) {
  Insert("T1");
  EXPECT_THAT(Visited(), ElementsAre("T1"));
  TaskMap::Node old = m_Tasks.Extract(L"T1");
  Insert("T1");
  TaskMap::Entry visited;
  ASSERT_TRUE(TaskMap::Walk(m_Tasks).Next(visited));
  EXPECT_EQ(visited.m_Task, m_Tasks.Find(L"T1"));
  EXPECT_NE(visited.m_Task, old.mapped().get());
}

}  // namespace
