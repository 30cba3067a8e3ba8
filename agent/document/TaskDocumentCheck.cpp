#include "agent/document/TaskDocumentCheck.h"

#include "agent/document/AsciiDocument.h"
#include "agent/document/DocumentSource.h"
#include "agent/document/ProblemList.h"
#include "agent/document/TaskCheck.h"

#include <BaseSDK/AXmlDoc.h>

#include <algorithm>
#include <string>

namespace NoxAgent {

using BaseSDK::AString;

namespace {

constexpr const char* Refused = "the document is refused";

TaskDocumentProblem Refusal(TextPlace place, const AString& message, const AString& mend) {
  return {TaskDocumentSeverity::Error, place.m_Line, place.m_Column, message, Refused, mend};
}

// What keeps the document from being read at all.
std::optional<TaskDocumentProblem> Unreadable(const AString& xml, std::size_t bytes) {
  if (bytes > MaxTaskDocumentBytes) {
    return Refusal(
        {},
        AString("the document has %1 bytes, more than %2")
            .Arg(std::to_string(bytes).c_str(), std::to_string(MaxTaskDocumentBytes).c_str()),
        "shorten it");
  }
  const BaseSDK::AXmlDoc parsed(xml);
  if (parsed.IsParsed()) {
    return std::nullopt;
  }
  const auto& error = parsed.Error();
  return Refusal({std::max(error.m_Line, 1U), std::max(error.m_Column, 1U)},
                 AString("not well-formed XML: %1").Arg(error.m_Message),
                 "correct the markup at this place");
}

}  // namespace

std::vector<TaskDocumentProblem> CheckTaskDocument(const AString& xml, long now,
                                                   const LocalCalendar* calendar) {
  const std::string utf8 = xml.ToUtf8();
  if (const auto problem = Unreadable(xml, utf8.size())) {
    return {*problem};
  }

  const DocumentSource source(utf8);
  const pugi::xml_node root = source.Document().document_element();
  ProblemList problems;
  if (const auto problem = AsciiDocument(xml).Problem()) {
    problems.Add(problem->m_Severity, {problem->m_Line, problem->m_Column},
                 problem->m_Message.ToUtf8(), problem->m_Effect.ToUtf8(), problem->m_Mend.ToUtf8());
  }
  if (std::string(root.name()) != "Task") {
    problems.Add(TaskDocumentSeverity::Error, source.PlaceOf(root),
                 "the root element is " + Quoted(root.name()) + ", not Task", Refused,
                 "write the whole task inside one Task element");
  } else {
    TaskCheck(source, now, calendar, problems).Run();
  }
  return problems.Take();
}

// A period that is under way may have begun a year ago.
LocalCalendar CalendarForCheck(long now) {
  return LocalCalendar(now - 366 * LocalCalendar::SecondsPerDay);
}

bool HasTaskDocumentProblem(const std::vector<TaskDocumentProblem>& problems,
                            TaskDocumentSeverity severity) {
  return std::any_of(problems.begin(), problems.end(),
                     [severity](const auto& problem) { return problem.m_Severity >= severity; });
}

AString DescribeTaskDocumentProblem(const TaskDocumentProblem& problem) {
  const AString place =
      AString("line %1, column %2: ")
          .Arg(std::to_string(problem.m_Line).c_str(), std::to_string(problem.m_Column).c_str());
  return place + problem.m_Message + "; " + problem.m_Effect + "; " + problem.m_Mend;
}

}  // namespace NoxAgent
