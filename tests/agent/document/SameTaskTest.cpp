#include "agent/document/SameTask.h"

#include <gtest/gtest.h>

#include <string>

namespace NoxAgent {
namespace {

using BaseSDK::AString;

constexpr const char* Handler = "<HandlerCLSID>{A}</HandlerCLSID>";

std::string Text(const std::string& attributes, const std::string& parts) {
  return "<Task" + attributes + ">" + Handler + parts + "</Task>";
}

std::string Scheduled(const std::string& date, const std::string& attributes = {}) {
  return Text(attributes, "<Schedule><Trigger Type=\"1\"><BeginDate>" + date +
                              "</BeginDate></Trigger></Schedule>");
}

bool IsSame(const std::string& left, const std::string& right) {
  const bool isSame = IsSameTask(AString::FromUtf8(left), AString::FromUtf8(right));
  EXPECT_EQ(isSame, IsSameTask(AString::FromUtf8(right), AString::FromUtf8(left)));
  return isSame;
}

TEST(SameTask, WhatTheSchedulerChangesByItselfIsNoDifference) {
  const std::string task = Scheduled("2026/06/15 08:00:00");
  EXPECT_TRUE(IsSame(task, task));
  EXPECT_TRUE(IsSame(
      "<!-- mine --><Task>\n  <HandlerCLSID>{A}</HandlerCLSID><Note/>" +
          task.substr(task.find("<Schedule>")),
      "<Task Enabled=\"1\">\n\t" + std::string(Handler) + "\n\t" +
          task.substr(task.find("<Schedule>"), task.find("</Task>") - task.find("<Schedule>")) +
          "\n\t<TaskHistory>\n\t\t<RunTime>2026-06-15 08:00:00 Ok</RunTime>\n\t</TaskHistory>\n"
          "</Task>"));
}

TEST(SameTask, WhatAnybodyElseChangesIsOne) {
  const std::string task = Scheduled("2026/06/15 08:00:00");
  EXPECT_FALSE(IsSame(task, Scheduled("2026/06/15 09:00:00")));
  EXPECT_FALSE(IsSame(task, Scheduled("2026/06/15 08:00:00", " Enabled=\"0\"")));
  EXPECT_FALSE(IsSame(task, "<Task>" + task.substr(task.find("<Schedule>"))));
  EXPECT_FALSE(IsSame(task, Text("", "<Schedule/>")));
  EXPECT_FALSE(IsSame(Text("", "<Schedule/>"), Text("", "<Schedule><!-- mine --></Schedule>")));
  EXPECT_FALSE(IsSame(Text("", "<Schedule/>"), Text("", "<Schedule/><Trigger Type=\"-1\"/>")));
}

TEST(SameTask, ATextThatIsNoDocumentIsTheSameAsItselfAlone) {
  EXPECT_TRUE(IsSame("<Task>", "<Task>"));
  EXPECT_FALSE(IsSame("<Task>", "<Job>"));
  EXPECT_FALSE(IsSame("<Task>", "<Task/>"));
}

}  // namespace
}  // namespace NoxAgent
