// Reads a task document as the scheduler would and tells everything that its writer should know.
//
// The scheduler itself never complains: a number that it cannot read is 0 to it, a trigger that it
// cannot read is switched off, a task without triggers is deleted. Whoever hands documents in (the
// agent's border, the client's `check`) asks here first.
//
// docs/task-document.md describes the document; docs/task.xsd is the same description for tools.
#pragma once

#include "agent/document/TaskDocumentProblem.h"
#include "agent/schedule/LocalCalendar.h"

#include <BaseSDK/AString.h>

#include <cstddef>
#include <vector>

namespace NoxAgent {

/// A document may have this many bytes in UTF-8; one that is larger is an Error.
constexpr std::size_t MaxTaskDocumentBytes = 1024 * 1024;

/// All problems of the document `xml`, in the order of their places. `now` is in seconds since the
/// epoch: what has ended is judged by it. Local time is that of the process (TZ). A document that
/// is too large or not well formed has that one problem alone. [any thread] Keeps no state and
/// reads nothing but its arguments and the zone.
///
/// With a calendar it is also told where the runs of the next two years differ from what the words
/// of the schedule say. These are warnings only, so whoever just wants to know whether to take the
/// document leaves it out.
std::vector<TaskDocumentProblem> CheckTaskDocument(const BaseSDK::AString& xml, long now,
                                                   const LocalCalendar* calendar = nullptr);

/// The calendar for checks at `now`, of the zone that is in force. Costs some milliseconds, so it
/// is made once for many documents.
LocalCalendar CalendarForCheck(long now);

/// The greatest severity among `problems` is at least `severity`; false for no problems.
bool HasTaskDocumentProblem(const std::vector<TaskDocumentProblem>& problems,
                            TaskDocumentSeverity severity);

/// "line 3, column 7: what is wrong; what the scheduler makes of it; how to mend it", one line.
BaseSDK::AString DescribeTaskDocumentProblem(const TaskDocumentProblem& problem);

}  // namespace NoxAgent
