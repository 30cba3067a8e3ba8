#pragma once

#include <BaseSDK/AString.h>
#include <BaseSDK/AXmlDoc.h>

#include <ctime>
#include <optional>

namespace NoxHandler {

/// A trigger's schedule as far as its starts and their active periods go, read off the task's
/// document. The rules are the scheduler's, the one-off week numbers included: both must mean the
/// same day. Moments are seconds since the epoch; days are those of TZ.
class PeriodTrigger {
 public:
  /// `markup` is the trigger's element.
  explicit PeriodTrigger(const BaseSDK::AString& markup);

  /// Whether it starts at moments that its document tells: enabled, of a dated type, with a begin
  /// date that can be read. The rest is asked of such a one alone.
  bool IsDated() const;
  /// Whether it ends what runs at the end of its active period.
  bool Kills() const;
  long Duration() const { return m_Duration; }  ///< of its periods, in seconds

  /// The last start at or before `moment` whose period still holds it.
  std::optional<long> StartOfPeriod(long moment) const;
  /// The last start at or before `moment`, sought on so many days before it.
  std::optional<long> LastStart(long moment, long days) const;
  /// The last repetition at or before `moment` of the period that began at `start`.
  long LastDue(long start, long moment) const;
  /// From the begin on a task that never ran is due, and after the end nothing is; nothing for no
  /// end.
  long Begin() const { return m_Begin; }
  std::optional<long> End() const;

 private:
  BaseSDK::AString Text(const char* path) const;
  long Number(const char* path, long fallback) const;
  long AtLeastOne(const char* path) const;
  bool HasBit(const char* path, int bit) const;
  long UnitSeconds() const;
  long BeginDate() const;
  std::optional<long> StartDaysBefore(long moment, long back) const;
  bool IsStartDay(long start, const std::tm& begin, const std::tm& day) const;
  long Week() const;

  BaseSDK::AXmlDoc m_Doc;
  long m_Begin = 0;
  long m_Duration = 0;
  long m_Interval = 0;
  long m_Type = 0;
};

}  // namespace NoxHandler
