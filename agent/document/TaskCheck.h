#pragma once

#include "agent/document/TriggerCheck.h"
#include "agent/schedule/LocalCalendar.h"

#include <initializer_list>
#include <string>
#include <vector>

namespace NoxAgent {

/// Everything of a task document around its triggers: its elements, what a rewrite drops, the
/// handler, the history; and what the triggers make of the task together.
class TaskCheck {
 public:
  /// All arguments must outlive the object. The document's root is a Task. Without a calendar the
  /// runs of the years ahead are not looked at.
  TaskCheck(const DocumentSource& source, long now, const LocalCalendar* calendar,
            ProblemList& problems);

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
