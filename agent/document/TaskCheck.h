#pragma once

#include "agent/document/TriggerCheck.h"
#include "agent/schedule/LocalCalendar.h"

#include <initializer_list>
#include <string>
#include <vector>

namespace NoxAgent {

/// Checks a task document as a whole: its elements, what is lost when the scheduler rewrites it,
/// the handler, the history, and what all triggers together make of the task. Each trigger by
/// itself is for TriggerCheck.
class TaskCheck {
 public:
  /// The root of the document is a Task. All arguments must outlive the object; `now` is in seconds
  /// since the epoch. Without a calendar the runs of the years ahead are not checked.
  TaskCheck(const DocumentSource& source, long now, const LocalCalendar* calendar,
            ProblemList& problems);

  /// Makes all checks; the problems are in the list afterwards.
  void Run();

 private:
  void CheckAroundRoot();
  void CheckTaskAttributes();
  void CheckTaskChildren();
  void CheckElements(const char* name, const char* parent, const std::string& effectElsewhere);
  void CheckContent(const pugi::xml_node& parent, std::initializer_list<const char*> known,
                    const std::string& effect);
  void CheckPartAttributes(const pugi::xml_node& part);
  void CheckHandler();
  void CheckHistory();
  void CheckRunTime(const pugi::xml_node& runTime);
  void CheckTriggerPlace(const pugi::xml_node& trigger, const pugi::xml_node& schedule);
  void CheckTriggers();
  void CheckSchedules(const std::vector<TriggerCheck>& triggers) const;
  bool HasFinishedRun() const;
  void ReportNoTrigger();
  pugi::xml_node First(const char* name) const;

  const DocumentSource& m_Source;
  const pugi::xml_node m_Task;
  const long m_Now;
  const LocalCalendar* const m_Calendar;
  ProblemList& m_Problems;
};

}  // namespace NoxAgent
