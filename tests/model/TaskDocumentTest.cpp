#include "model/TaskDocument.h"

#include <gtest/gtest.h>

using BaseSDK::AString;

namespace {

std::string Rewrite(const char* text, const char* history) {
  const CTaskDocument document{AString(text)};
  return document.Rewritten(document.IsEnabled(), history).ToUtf8();
}

TEST(TaskDocument, EnabledUnlessTheAttributeIsANumberThatIsZeroOrNoNumber) {
  EXPECT_TRUE(CTaskDocument(L"<Task/>").IsEnabled());
  EXPECT_TRUE(CTaskDocument(L"<Task Enabled=\"\"/>").IsEnabled());
  EXPECT_TRUE(CTaskDocument(L"<Task Enabled=\"1\"/>").IsEnabled());
  EXPECT_TRUE(CTaskDocument(L"<Task Enabled=\"2\"/>").IsEnabled());
  EXPECT_TRUE(CTaskDocument(L"<Task Enabled=\"-1\"/>").IsEnabled());
  EXPECT_FALSE(CTaskDocument(L"<Task Enabled=\"0\"/>").IsEnabled());
  EXPECT_FALSE(CTaskDocument(L"<Task Enabled=\"true\"/>").IsEnabled());
}

TEST(TaskDocument, FindsItsElementsAtAnyDepthButTheEnabledStateOnlyOnTheRoot) {
  CTaskDocument document(
      L"<Other Enabled=\"0\"><Task "
      L"Enabled=\"0\"><a><HandlerCLSID>{1}</HandlerCLSID></a><b><Trigger/>"
      L"</b><RunTime>2005-03-01 08:00:00 Ok</RunTime><TaskHistory/></Task></Other>");
  EXPECT_TRUE(document.IsEnabled());
  EXPECT_EQ(document.HandlerClassId(), AString(L"{1}"));
  EXPECT_EQ(document.LastRun().m_Date, AString(L"2005-03-01"));
  EXPECT_EQ(document.History(), AString(L"<TaskHistory/>"));
  EXPECT_EQ(document.Triggers().size(), 1u);
}

TEST(TaskDocument, ReadsTheFirstOfTwoRunTimes) {
  const CTaskDocument document(
      L"<Task><TaskHistory><RunTime>2005-03-01 08:00:00 Ok</RunTime>"
      L"<RunTime>2006-03-01 08:00:00 Failed</RunTime></TaskHistory></Task>");
  const CTaskDocument::Run run = document.LastRun();
  EXPECT_EQ(run.m_Date, AString(L"2005-03-01"));
  EXPECT_EQ(run.m_Time, AString(L"08:00:00"));
  EXPECT_EQ(run.m_State, AString(L"Ok"));
}

TEST(TaskDocument, TakesOnlyTheFirstWordOfAStateThatHasMore) {
  const CTaskDocument document(L"<Task><RunTime>2005-03-01 08:00:00 Ok so far</RunTime></Task>");
  EXPECT_EQ(document.LastRun().m_State, AString(L"Ok"));
}

TEST(TaskDocument, CountsEmptyWordsOfARunTime) {
  const CTaskDocument document(L"<Task><RunTime>2005-03-01  08:00:00 Ok</RunTime></Task>");
  const CTaskDocument::Run run = document.LastRun();
  EXPECT_EQ(run.m_Date, AString(L"2005-03-01"));
  EXPECT_EQ(run.m_Time, AString());
  EXPECT_EQ(run.m_State, AString(L"08:00:00"));
}

TEST(TaskDocument, GivesTriggersInDocumentOrderAsTheyAreWritten) {
  CTaskDocument document(
      L"<Task><Schedule><Trigger Type=\"1\"> <BeginDate>x</BeginDate></Trigger>"
      L"<Trigger Type='2'/></Schedule></Task>");
  const auto triggers = document.Triggers();
  ASSERT_EQ(triggers.size(), 2u);
  EXPECT_EQ(triggers[0], AString(L"<Trigger Type=\"1\"> <BeginDate>x</BeginDate></Trigger>"));
  EXPECT_EQ(triggers[1], AString(L"<Trigger Type='2'/>"));
}

TEST(TaskDocument, ThatDoesNotParseIsEnabledAndHasNothing) {
  CTaskDocument document(L"<Task Enabled=\"0\"><Trigger/>");
  EXPECT_TRUE(document.IsEnabled());
  EXPECT_TRUE(document.HandlerClassId().IsEmpty());
  EXPECT_TRUE(document.LastRun().m_Date.IsEmpty());
  EXPECT_TRUE(document.History().IsEmpty());
  EXPECT_TRUE(document.Triggers().empty());
  EXPECT_EQ(Rewrite("<Task Enabled=\"0\">", "H"), "<Task Enabled=\"1\">\n\t\n\t\n\tH\n</Task>");
}

TEST(TaskDocument, RewriteKeepsHandlerAndScheduleAsWrittenAndTakesTheGivenHistory) {
  EXPECT_EQ(
      Rewrite(
          "<?xml version=\"1.0\"?>\n<Task Enabled=\"0\"><!-- c -->"
          "<HandlerCLSID a='1'>{1} &amp; %1</HandlerCLSID>\n<Schedule>\n  <Trigger Type=\"1\"/>\n"
          "</Schedule><TaskHistory><RunTime>old</RunTime></TaskHistory></Task>",
          "<TaskHistory/>"),
      "<Task Enabled=\"0\">\n\t<HandlerCLSID a='1'>{1} &amp; %1</HandlerCLSID>"
      "\n\t<Schedule>\n  <Trigger Type=\"1\"/>\n</Schedule>\n\t<TaskHistory/>\n</Task>");
}

TEST(TaskDocument, RewriteDropsOtherElementsAndAttributesOfTheTask) {
  EXPECT_EQ(Rewrite("<Task Name=\"n\"><Comment>c</Comment><HandlerCLSID>h</HandlerCLSID>"
                    "<Schedule/></Task>",
                    ""),
            "<Task Enabled=\"1\">\n\t<HandlerCLSID>h</HandlerCLSID>\n\t<Schedule/>\n\t\n</Task>");
}

TEST(TaskDocument, RewriteWritesEveryEnabledNumberAsOne) {
  EXPECT_EQ(Rewrite("<Task Enabled=\"5\"/>", ""), "<Task Enabled=\"1\">\n\t\n\t\n\t\n</Task>");
}

TEST(TaskDocument, RewriteWithoutScheduleLeavesTwoSeparatorsInARow) {
  EXPECT_EQ(
      Rewrite("<Task><HandlerCLSID>h</HandlerCLSID></Task>", "<TaskHistory/>"),
      "<Task Enabled=\"1\">\n\t<HandlerCLSID>h</HandlerCLSID>\n\t\n\t<TaskHistory/>\n</Task>");
}

TEST(TaskDocument, HistoryHoldsOneEntryAndTakesTheStateAsItIs) {
  EXPECT_EQ(CTaskDocument::HistoryOf(L"2005-03-01 08:00:00", L"a %1 <b>").ToUtf8(),
            "<TaskHistory>\n\t\t<RunTime>2005-03-01 08:00:00 a %1 <b></RunTime>\n\t</TaskHistory>");
}

}  // namespace
