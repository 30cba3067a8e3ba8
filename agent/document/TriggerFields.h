#pragma once

#include "agent/document/ValueCheck.h"
#include "agent/schedule/TriggerRule.h"

#include <optional>

namespace NoxAgent {

/// One Trigger element, as it stands in the document and as the scheduler reads it.
struct TriggerFields {
  static constexpr long AsSoonAsPossible = -1;
  static constexpr long Once = 0;
  static constexpr long Daily = 1;
  static constexpr long Weekly = 2;
  static constexpr long MonthlyByDate = 3;
  static constexpr long MonthlyByWeekday = 4;  ///< greater types never fire

  static constexpr long AllDaysOfWeek = 0x7F;
  static constexpr long AllDaysOfMonth = 0x7FFFFFFF;
  static constexpr long AllMonths = 0xFFF;

  pugi::xml_node m_Element;
  TextPlace m_Place;

  /// What the document says, by its fields; nothing for a field that is not there.
  std::optional<SourceValue> m_TypeText, m_IntervalText, m_DurationText, m_BeginText, m_EndText,
      m_DaysIntervalText, m_WeeksIntervalText, m_DaysOfWeekText, m_DaysOfMonthText,
      m_MonthsOfYearText, m_WeekText;

  // What the scheduler makes of it. Masks hold their valid bits only; dates are seconds since the
  // epoch, -1 when absent or unreadable.
  bool m_Disabled = false;
  bool m_KillAtEnd = false;
  long m_Type = Once;
  long m_IntervalSeconds = 0;
  long m_DurationSeconds = 0;
  long m_Begin = -1;
  long m_End = -1;
  long m_DaysInterval = 1;
  long m_WeeksInterval = 1;
  long m_DaysOfWeek = 0;
  long m_DaysOfMonth = 0;
  long m_MonthsOfYear = 0;
  long m_Week = 1;
};

/// Whether the trigger can start a run at all: it is not disabled, of a known type, and has a
/// readable begin date if it needs one.
bool CanFire(const TriggerFields& fields);

/// The numbers alone.
TriggerRule RuleOf(const TriggerFields& fields);

/// Reads the element, and warns about each value that the scheduler reads otherwise than it stands.
TriggerFields ReadTriggerFields(const DocumentSource& source, const pugi::xml_node& trigger,
                                ProblemList& problems);

}  // namespace NoxAgent
