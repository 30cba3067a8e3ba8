#pragma once

#include "Common/Long32.h"

#include <BaseSDK/AString.h>
#include <BaseSDK/AXmlDoc.h>

#include <cstdint>
#include <optional>

namespace Nox {
class LocalZone;
class TriggerDays;
}  // namespace Nox

/// One schedule rule of a task: one `Trigger` element, and the arithmetic that says when it starts.
///
/// Times are whole seconds since the epoch in the signed 32-bit range at both word sizes; NoTime
/// (-1) means that there is no such time. All arithmetic on them stops at the ends of that range.
///
/// A trigger that is neither of type AsSoonAsPossible nor an event starts at the time of day of its
/// begin date on every local day that its rule selects, and repeats every m_Interval seconds for
/// m_Duration seconds after each start. Local time is that of Nox::LocalZone; where the clock
/// changes:
///
/// - Spring, New York, 2024-03-10: 02:00 to 03:00 is never shown. A start at 02:30 is at 03:30
///   daylight time that day (1710055800) and at 02:30 again the day after.
/// - Autumn, New York, 2024-11-03: 01:00 to 02:00 is shown twice. A start at 01:30 is the first of
///   the two (1730611800), once.
///
/// A trigger has no lock: its task's caller holds the scheduler's state lock.
class CTaskTrigger {
 public:
  static constexpr long NoTime = -1;

  enum Type : long {
    AsSoonAsPossible = -1,
    Once = 0,
    Daily = 1,
    Weekly = 2,
    MonthlyByDate = 3,
    MonthlyByWeekday = 4,
    FirstEvent = 6,   ///< due while notification 302 is flagged; no document makes such a trigger
    SecondEvent = 7,  ///< due while notification 300 is flagged; no document makes such a trigger
  };

  /// Never fails: whatever is wrong with the element makes a disabled trigger. `lastRun` is the
  /// task's last-run time; borrowed, it must outlive the trigger.
  CTaskTrigger(const BaseSDK::AString& element, long* lastRun);
  ~CTaskTrigger() = default;

  /// The start on the local day of `t`, or NoTime when there is none that day. For AsSoonAsPossible
  /// `t` itself. Where the clock jumps over the time of day, the start lies behind the jump; for a
  /// jump at the end of a day that may be on the next day.
  long GetTriggerStartTime(const long& t) const;

  /// Whether the trigger is due now; updates m_NextRun. `sleepSeconds` is lowered to the next start
  /// or repetition, never raised. `late` is assigned only for a dated trigger that is due and
  /// `expired` only set to true, so clear both before; `nextRunChanged` is always assigned.
  bool IsDue(bool firstEvent, bool secondEvent, long& sleepSeconds, bool& late, bool& expired,
             bool& nextRunChanged);

  /// A time in which due tests find nothing due, change nothing, and lower the sleep to the same
  /// moment. It ends early with another zone, last run or definition.
  struct QuietTime {
    long m_Begin = 0;
    long m_End = 0;  ///< the first moment after it; not after m_Begin: there is no such time
    std::optional<long> m_NextStart;  ///< to which the sleep is lowered; not before m_End
  };
  /// As the last due test left it.
  QuietTime KnownQuietTime() const;

  /// Sets m_NextRun to the first start at or after `from` that the search meets, or to NoTime. The
  /// search goes to the end date, or twenty years ahead when there is none.
  void CalculateNextRunTime(long from, bool expired);

  /// Refreshes m_NextRun and m_ClosestRun; both are NoTime when the task is disabled.
  void UpdateClosestRun(bool taskEnabled);

  // The definition; constant after construction. A disabled trigger keeps the initial values of
  // whatever comes after the field that disabled it.
  long m_Type = Once;
  long m_Interval = 0;  ///< seconds between repetitions; 0: none
  long m_Duration = 0;  ///< seconds of the active period after a start; may be negative
  bool m_Disabled = false;
  BaseSDK::AString m_Description;
  bool m_KillAtEnd = false;
  long m_BeginDate = 0;
  long m_EndDate = 0;  ///< NoTime: no end
  long m_DaysInterval = 0;
  long m_WeeksInterval = 0;
  std::uint32_t m_DaysOfWeek = 0;    ///< bit 0 is Sunday
  std::uint32_t m_DaysOfMonth = 0;   ///< bit 0 is the 1st
  std::uint32_t m_MonthsOfYear = 0;  ///< bit 0 is January
  long m_Week = 0;                   ///< 1 to 5
  long* m_pLastRun;                  ///< the task's; borrowed

  // The state.
  long m_NextRun = NoTime;
  long m_ClosestRun = NoTime;  ///< now when due at the last UpdateClosestRun, else m_NextRun

 private:
  /// What a due test finds out before anything is changed.
  struct Finding {
    bool m_Due = false;
    std::optional<bool> m_Late;
    bool m_Expired = false;
    /// The next start or repetition; at or before now when there is none to sleep for.
    long m_NextStart = Nox::Long32Min;
  };

  /// All that a due test depends on, but for the moment.
  struct Grounds {
    const Nox::LocalZone* m_Zone = nullptr;
    long m_LastRun = NoTime;
    long m_Type = Once;
    long m_Interval = 0;
    long m_Duration = 0;
    bool m_Disabled = false;
    long m_BeginDate = 0;
    long m_EndDate = 0;
    long m_DaysInterval = 0;
    long m_WeeksInterval = 0;
    std::uint32_t m_DaysOfWeek = 0;
    std::uint32_t m_DaysOfMonth = 0;
    std::uint32_t m_MonthsOfYear = 0;
    long m_Week = 0;
    bool operator==(const Grounds&) const = default;
  };

  /// A time in which a due test finds nothing due and says the same each time. The monitor asks on
  /// every pass, and nearly always it is the answer of the pass before.
  struct QuietSpell {
    long m_Begin = 0;
    long m_End = 0;  ///< the first moment that may have another answer
    Grounds m_Grounds;
    Finding m_Finding;
    long m_NextRun = NoTime;
  };

  // Reading the element. ReadKind and ReadDates return whether the trigger can fire at all.
  bool ReadKind(const BaseSDK::AXmlDoc& doc);
  void ReadRepetition(const BaseSDK::AXmlDoc& doc);
  bool ReadDates(const BaseSDK::AXmlDoc& doc);
  void ReadRecurrence(const BaseSDK::AXmlDoc& doc);

  // The due test.
  bool IsDueAt(long now, bool firstEvent, bool secondEvent, long& sleepSeconds, bool& late,
               bool& expired, bool& nextRunChanged);
  Finding Find(long now, bool firstEvent, bool secondEvent, bool expired);
  Finding Examine(Nox::TriggerDays& days, long now, bool firstEvent, bool secondEvent) const;
  Finding ExamineDated(Nox::TriggerDays& days, long now) const;
  long WalkOrigin(Nox::TriggerDays& days, long now) const;
  long LatestStartNotYetRun(Nox::TriggerDays& days, long now) const;
  bool StillToRun(long start, long now) const;
  long NextStartAfter(Nox::TriggerDays& days, long now) const;
  bool Repeats() const { return m_Duration != 0 && m_Interval != 0; }
  long RepetitionFrom(long start, long now, long ahead) const;

  // The quiet spell.
  Grounds GroundsNow() const;
  bool IsQuietAt(long now, const Grounds& grounds) const;
  void KeepWhileQuiet(Nox::TriggerDays& days, long now, const Grounds& grounds,
                      const Finding& found);
  long QuietUntil(Nox::TriggerDays& days, long now, const Finding& found) const;
  long QuietUntilBegin(const Nox::TriggerDays& days, long now) const;
  bool IsPlain(long now) const;
  bool IsSearchPlain(const Nox::TriggerDays& days, long now) const;
  long NextChangeOf(long start, long now) const;

  // The search.
  long NextRunFrom(Nox::TriggerDays& days, long from, bool expired) const;

  QuietSpell m_Quiet;
};
