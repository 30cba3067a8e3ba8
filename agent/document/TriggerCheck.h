#pragma once

#include "agent/document/TriggerFields.h"

#include <string>
#include <vector>

namespace NoxAgent {

/// Checks one trigger: whether it ever fires, and where it may surprise its writer.
class TriggerCheck {
 public:
  /// Reads the trigger and adds its problems, all but the reasons why it never fires: how grave
  /// those are depends on the other triggers (ReportReasons). `now` is in seconds since the epoch.
  TriggerCheck(const DocumentSource& source, const pugi::xml_node& trigger, long now,
               ProblemList& problems);

  const TriggerFields& Fields() const { return m_Fields; }

  bool NeverFires() const { return !m_Reasons.empty(); }
  /// Whether its runs can be told beforehand: it begins within the calendar and selects some day.
  bool HasRuns() const;
  /// Whether it never fires again only because its time has passed. The scheduler deletes a task
  /// that has only such triggers.
  bool IsEnded() const { return m_Ended && m_Reasons.size() == 1; }

  /// Adds the reasons why it never fires. A trigger that is switched off on purpose is reported
  /// only when no other one fires. `taskEffect` says what becomes of the task.
  void ReportReasons(bool anotherFires, const std::string& taskEffect, ProblemList& problems) const;

 private:
  struct Reason {
    TextPlace m_Place;
    std::string m_Message;
    std::string m_Mend;
    bool m_OnPurpose;
  };

  void FindReasons();
  void FindReasonInDates();
  void CheckType(ProblemList& problems) const;
  void CheckEnd(ProblemList& problems) const;
  void CheckRepetition(ProblemList& problems) const;
  void CheckUnused(ProblemList& problems) const;
  void CheckMasks(ProblemList& problems) const;
  void CheckDaysInMonths(ProblemList& problems) const;
  void CheckBegin(ProblemList& problems) const;
  bool FiresOnDays() const;
  bool SelectsNoDay() const;
  TextPlace PlaceOr(const std::optional<SourceValue>& value) const;

  TriggerFields m_Fields;
  long m_Now;
  bool m_Ended = false;
  std::vector<Reason> m_Reasons;
};

}  // namespace NoxAgent
