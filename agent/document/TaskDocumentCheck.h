// Reads a task document as the scheduler would and tells everything that its writer should know.
//
// The scheduler itself never complains: a number that it cannot read is 0 to it, a trigger that it
// cannot read is switched off, a task without triggers is deleted. So the agent's border and the
// client's `check` ask here before a document reaches the scheduler.
//
// docs/task-document.md describes the document; docs/task.xsd is the same description for tools.
#pragma once

#include "agent/document/TaskDocumentProblem.h"
#include "agent/schedule/LocalCalendar.h"

#include <BaseSDK/AString.h>

#include <cstddef>
#include <vector>

namespace NoxAgent {

/// A document may have this many bytes in UTF-8; a larger one is an Error.
constexpr std::size_t MaxTaskDocumentBytes = 1024 * 1024;

/// All problems of the document `xml`, in the order of their places. `now` is in seconds since the
/// epoch and decides what has ended. Local time is that of the process (TZ). A document that is too
/// large or not well formed has that one problem alone. [any thread]
///
/// With a calendar there are also warnings where the runs of the next two years differ from what
/// the words of the schedule say. They never decide whether a document is accepted, so a caller
/// that only wants to know that passes no calendar.
std::vector<TaskDocumentProblem> CheckTaskDocument(const BaseSDK::AString& xml, long now,
                                                   const LocalCalendar* calendar = nullptr);

/// The calendar for checks at `now`, of the zone that is in force. Costs some milliseconds, so it
/// is made once for many documents.
LocalCalendar CalendarForCheck(long now);

/// Whether any of the problems has this severity or a greater one.
bool HasTaskDocumentProblem(const std::vector<TaskDocumentProblem>& problems,
                            TaskDocumentSeverity severity);

/// "line 3, column 7: what is wrong; what the scheduler makes of it; how to mend it", one line.
BaseSDK::AString DescribeTaskDocumentProblem(const TaskDocumentProblem& problem);

}  // namespace NoxAgent
