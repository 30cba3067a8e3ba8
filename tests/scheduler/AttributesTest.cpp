// A task's scheduling attributes.
#include "model/Task.h"
#include "tests/scheduler/SchedulerFixture.h"
#include "tests/scheduler/SchedulerInside.h"

#include <string>
#include <utility>

namespace {

using BaseSDK::AString;

class AttributesTest : public SchedulerFixture {
 protected:
  using Map = TaskSchedulerObject_i::AttributeMap;

  /// Puts the one task T1 into memory while the gate is closed, so that nothing runs.
  void Load(const std::string& document) {
    Store("T1", document);
    Start();
  }
  Map Attributes(Map attributes = {}) {
    EXPECT_EQ(1, m_Scheduler->GetTaskAttributes(L"T1", attributes, nullptr));
    return attributes;
  }
  void ExpectAttributes(const Map& expected) {
    const Map attributes = Attributes();
    for (const auto& [key, value] : expected) {
      const auto found = attributes.find(key);
      ASSERT_NE(attributes.end(), found) << key.ToUtf8();
      EXPECT_EQ(value.ToUtf8(), found->second.ToUtf8()) << key.ToUtf8();
    }
    EXPECT_EQ(expected.size(), attributes.size());
  }
  CTask& InMemory() { return *SCHEDULER_INSIDE(*m_Scheduler, m_Tasks).Find(L"T1"); }
};

TEST_F(AttributesTest, TellAllOfATaskThatNeverRan) {
  Load(
      Task("<Trigger Type=\"1\" Description=\"every day\"><BeginDate>2005-03-01 09:00:00"
           "</BeginDate></Trigger>"));
  ExpectAttributes({{L"t0", L"T1"},
                    {L"t1", Handler},
                    {L"t2", L"0"},
                    {L"t3", L"-1"},
                    {L"t5", L"1"},
                    {L"t6", L"1109667600"},
                    {L"t7", L"0"},
                    {L"t8", L"0"},
                    {L"td0", L"every day"},
                    {L"tr0", L"1109667600"}});
}

TEST_F(AttributesTest, TellTheEarliestOfTheTriggersRuns) {
  Load(Task(Daily("2005-03-03 09:00:00") + Daily("2005-03-02 09:00:00") +
                Daily("2005-03-04 09:00:00") + AsSoonAsPossible(),
            History("2005-02-28 08:00:00 Ok")));
  ExpectAttributes({{L"t0", L"T1"},
                    {L"t1", Handler},
                    {L"t2", L"0"},
                    {L"t3", L"1109577600"},
                    {L"t5", L"1"},
                    {L"t6", L"1109754000"},
                    {L"t7", L"0"},
                    {L"t8", L"0"},
                    {L"td0", L""},
                    {L"tr0", L"1109840400"},
                    {L"td1", L""},
                    {L"tr1", L"1109754000"},
                    {L"td2", L""},
                    {L"tr2", L"1109926800"},
                    {L"td3", L"Run as soon as possible"},
                    {L"tr3", L"0"}});
}

TEST_F(AttributesTest, TheRunOfADueTriggerIsNow) {
  Load(Task(AsSoonAsPossible()));
  const Map attributes = Attributes();
  EXPECT_EQ("1109664000", attributes.at(L"tr0").ToUtf8());
  EXPECT_EQ("1109664000", attributes.at(L"t6").ToUtf8());
}

TEST_F(AttributesTest, EventTriggersHaveTheirOwnRunValues) {
  Load(Task("<Trigger Type=\"6\"/><Trigger Type=\"7\"/>" + Daily("2005-03-02 09:00:00")));
  const Map attributes = Attributes();
  EXPECT_EQ("2", attributes.at(L"tr0").ToUtf8());
  EXPECT_EQ("1", attributes.at(L"tr1").ToUtf8());
  EXPECT_EQ("1109754000", attributes.at(L"tr2").ToUtf8());
  EXPECT_EQ("1109754000", attributes.at(L"t6").ToUtf8());
  EXPECT_EQ("1", attributes.at(L"t7").ToUtf8()) << "a trigger of type 7 was seen";
  EXPECT_EQ("1", attributes.at(L"t8").ToUtf8()) << "a trigger of type 6 was seen";
}

TEST_F(AttributesTest, TheFirstEventIsT8AndTheSecondT7) {
  Load(Task(Daily("2005-03-02 09:00:00")));
  CTaskTrigger& trigger = *InMemory().m_Triggers[0];
  trigger.m_Type = CTaskTrigger::FirstEvent;
  const Map first = Attributes();
  EXPECT_EQ("0", first.at(L"t7").ToUtf8());
  EXPECT_EQ("1", first.at(L"t8").ToUtf8());
  trigger.m_Type = CTaskTrigger::SecondEvent;
  const Map second = Attributes();
  EXPECT_EQ("1", second.at(L"t7").ToUtf8());
  EXPECT_EQ("0", second.at(L"t8").ToUtf8());
}

TEST_F(AttributesTest, ATriggerThatNeverFiresHasNoRun) {
  Load(Task("<Trigger Type=\"1\"/>"));
  const Map attributes = Attributes();
  EXPECT_EQ("0", attributes.at(L"tr0").ToUtf8());
  EXPECT_EQ("0", attributes.at(L"t6").ToUtf8());
}

TEST_F(AttributesTest, ADisabledTaskHasNoRunsAtAll) {
  std::string document = Task("<Trigger Type=\"6\"/><Trigger Type=\"7\"/>" +
                              Daily("2005-03-02 09:00:00") + AsSoonAsPossible());
  Load(document.replace(0, 5, "<Task Enabled=\"0\""));
  const Map attributes = Attributes();
  EXPECT_EQ("0", attributes.at(L"t5").ToUtf8());
  for (const wchar_t* key : {L"tr0", L"tr1", L"tr2", L"tr3", L"t6", L"t7", L"t8"}) {
    EXPECT_EQ("0", attributes.at(key).ToUtf8()) << AString(key).ToUtf8();
  }
}

TEST_F(AttributesTest, ATaskWithoutTriggersHasNoneOfTheirKeys) {
  Load("<Task/>");
  ExpectAttributes({{L"t0", L"T1"},
                    {L"t1", L""},
                    {L"t2", L"0"},
                    {L"t3", L"-1"},
                    {L"t5", L"1"},
                    {L"t6", L"0"},
                    {L"t7", L"0"},
                    {L"t8", L"0"}});
}

TEST_F(AttributesTest, LateIsWhatTheLastDueTestFoundUntilARunStateIsSet) {
  m_Handler.AnswerAlways(Corvane::AgentInterfacesV3::TASK_HANDLER_DECLINED, 1);
  Load(Task(Daily("2005-03-01 07:00:00")));
  EXPECT_EQ("0", Attributes().at(L"t2").ToUtf8());
  OpenGate();
  EXPECT_EQ("1", Attributes().at(L"t2").ToUtf8()) << "an hour late";
  EXPECT_EQ(0, m_Scheduler->SetRunState(L"T1", L"Ok"));
  EXPECT_EQ("0", Attributes().at(L"t2").ToUtf8());
}

TEST_F(AttributesTest, KeysThatTheMapHoldsKeepTheirValues) {
  Load(Task(Daily("2005-03-02 09:00:00")));
  const Map attributes = Attributes({{L"t0", L"mine"}, {L"tr0", L"mine"}, {L"x", L"mine"}});
  EXPECT_EQ("mine", attributes.at(L"t0").ToUtf8());
  EXPECT_EQ("mine", attributes.at(L"tr0").ToUtf8());
  EXPECT_EQ("mine", attributes.at(L"x").ToUtf8());
  EXPECT_EQ("1109754000", attributes.at(L"t6").ToUtf8());
}

TEST_F(AttributesTest, TheInputMapIsNotRead) {
  Load("<Task/>");
  const Map input = {{L"t0", L"other"}};
  Map attributes;
  EXPECT_EQ(1, m_Scheduler->GetTaskAttributes(L"T1", attributes, &input));
  EXPECT_EQ(Attributes(), attributes);
}

TEST_F(AttributesTest, AnUnknownTaskLeavesTheMapUntouched) {
  Load("<Task/>");
  Map attributes = {{L"x", L"mine"}};
  const Map before = attributes;
  EXPECT_EQ(-1, m_Scheduler->GetTaskAttributes(L"T2", attributes, nullptr));
  EXPECT_EQ(before, attributes);
}

TEST_F(AttributesTest, RefreshTheClosestRunOfEveryTrigger) {
  Load(Task(Daily("2005-03-01 09:00:00")));
  RunUntil(Begin + 30 * Minute);
  InMemory().m_Triggers[0]->m_ClosestRun = 1;
  EXPECT_EQ("1109667600", Attributes().at(L"tr0").ToUtf8());
}

}  // namespace
