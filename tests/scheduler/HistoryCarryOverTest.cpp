// The rewrite of a task document around its history.
#include "scheduler/TaskSchedulerObject.h"

#include <gtest/gtest.h>

namespace {

using BaseSDK::AString;

AString Rewritten(const wchar_t* document, const wchar_t* history) {
  AString text(document);
  TaskSchedulerObject_i::UpdateTaskHistoryNode(text, history);
  return text;
}

TEST(HistoryCarryOver, KeepsHandlerAndScheduleAndTakesTheGivenHistory) {
  EXPECT_EQ(AString(L"<Task Enabled=\"1\">\n\t<HandlerCLSID>{A}</HandlerCLSID>\n\t"
                    L"<Schedule><Trigger/></Schedule>\n\t<TaskHistory>new</TaskHistory>\n</Task>"),
            Rewritten(L"<Task><TaskHistory>old</TaskHistory><Schedule><Trigger/></Schedule>"
                      L"<HandlerCLSID>{A}</HandlerCLSID></Task>",
                      L"<TaskHistory>new</TaskHistory>"));
}

TEST(HistoryCarryOver, ReadsTheEnabledState) {
  const struct {
    const wchar_t* m_Document;
    const wchar_t* m_Enabled;
  } rows[] = {
      {L"<Task/>", L"1"},
      {L"<Task Enabled=\"\"/>", L"1"},
      {L"<Task Enabled=\"1\"/>", L"1"},
      {L"<Task Enabled=\"0\"/>", L"0"},
      {L"<Task Enabled=\"5\"/>", L"1"},
      {L"<Task Enabled=\"-1\"/>", L"1"},
      {L"<Task Enabled=\"yes\"/>", L"0"},
      {L"<Other Enabled=\"0\"/>", L"1"},
      {L"no document", L"1"},
      {L"", L"1"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(AString(L"<Task Enabled=\"%1\">\n\t\n\t\n\t<H/>\n</Task>").Arg(row.m_Enabled),
              Rewritten(row.m_Document, L"<H/>"))
        << AString(row.m_Document).ToUtf8();
  }
}

TEST(HistoryCarryOver, LeavesThePlaceOfAMissingScheduleEmpty) {
  EXPECT_EQ(
      AString(L"<Task Enabled=\"1\">\n\t<HandlerCLSID>{A}</HandlerCLSID>\n\t\n\t<H/>\n</Task>"),
      Rewritten(L"<Task><HandlerCLSID>{A}</HandlerCLSID></Task>", L"<H/>"));
}

TEST(HistoryCarryOver, OnPurposeDropsEverythingElse) {
  EXPECT_EQ(AString(L"<Task Enabled=\"0\">\n\t<HandlerCLSID>{A}</HandlerCLSID>\n\t<Schedule/>\n\t"
                    L"<H/>\n</Task>"),
            Rewritten(L"<?xml version=\"1.0\"?><!-- note --><Task Owner=\"me\" Enabled=\"0\">"
                      L"<Extra/><HandlerCLSID>{A}</HandlerCLSID><Schedule/></Task>",
                      L"<H/>"));
}

TEST(HistoryCarryOver, FindsItsElementsAtAnyDepth) {
  EXPECT_EQ(
      AString(L"<Task Enabled=\"1\">\n\t<HandlerCLSID>{A}</HandlerCLSID>\n\t<Schedule/>\n\t"
              L"<H/>\n</Task>"),
      Rewritten(L"<Task><Deep><Schedule/><HandlerCLSID>{A}</HandlerCLSID></Deep></Task>", L"<H/>"));
}

TEST(HistoryCarryOver, TakesTheHistoryAsItIs) {
  EXPECT_EQ(AString(L"<Task Enabled=\"1\">\n\t\n\t\n\t%1 & <\n</Task>"),
            Rewritten(L"<Task/>", L"%1 & <"));
}

}  // namespace
