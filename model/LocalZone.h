#pragma once

#include "Common/Long32.h"

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace Nox {

constexpr long SecondsPerDay = 86400;

/// What the clocks of a zone show.
struct LocalTime {
  long m_Day;     ///< the calendar's day, counted from 1970-01-01
  long m_Second;  ///< the clock's time of day, 0 to 86399; no count of elapsed time
};

/// The local time zone, held in memory for the signed 32-bit range of moments: when its clock
/// changed or will change, and what it shows in between. All of that is asked of the C library's
/// localtime_r, once, so every answer is the C library's; after that an answer takes nanoseconds.
///
///     const Nox::LocalZone& zone = Nox::LocalZone::InForce();
///     const Nox::LocalTime shown = zone.LocalTimeAt(now);
///     const long noon = zone.MomentOf({shown.m_Day, 43200});
///
/// An object never changes, so any number of threads may ask it.
class LocalZone {
 public:
  /// The zone as of the latest Refresh; the first call is one itself. The object stays for good.
  /// Fails only at the first call, as Refresh does. [any thread]
  static const LocalZone& InForce() {
    if (s_InForce.load(std::memory_order_acquire) == nullptr) {
      Refresh();
    }
    return *s_InForce.load(std::memory_order_acquire);
  }

  /// Looks whether the C library's zone has become another since the last look: another TZ or,
  /// without TZ, another /etc/localtime. If so, the new one is in force from here on. Without a
  /// change this takes some hundred nanoseconds, with one some milliseconds. Fails only when memory
  /// runs out, with an exception: the zone in force is then as it was. [any thread]
  static void Refresh();

  /// Asks the C library for its zone of this moment.
  LocalZone();

  /// `moment` is in the signed 32-bit range.
  LocalTime LocalTimeAt(long moment) const;

  /// The moment at which the clock shows `local`; -1 when it lies outside the signed 32-bit range.
  /// -1 is also the moment one second before the epoch, which callers treat as no time.
  ///
  /// A local time that is shown twice is the first of the two: in New York 2024-11-03 01:30 is
  /// 1730611800. One that is never shown lies as far behind the change as it is past it: there
  /// 2024-03-10 02:30 is 03:30 daylight time, 1710055800. This is what mktime says, but for its
  /// dependence on earlier calls. The host kit reads dates by the same rule.
  long MomentOf(const LocalTime& local) const;

  /// Whether the clock does not change from the one moment to the other.
  bool IsSteady(long from, long to) const { return PlaceOf(from) == PlaceOf(to); }

  /// However many times 86400 seconds after a moment, the local day is as many days later, give or
  /// take these: changes of the clock, all together, move it no further.
  long MostDrift() const { return m_MostDrift; }

  bool operator==(const LocalZone&) const = default;

 private:
  /// How the clock is set.
  struct Setting {
    long m_Offset;  ///< what is shown, less the moment, in seconds
    bool m_IsDaylight;
    bool operator==(const Setting&) const = default;
  };
  /// A setting and the moment from which on it holds.
  struct Span {
    long m_Begin;
    Setting m_Setting;
    bool operator==(const Span&) const = default;
  };

  /// The moment at which the clock shows so many seconds after the epoch's midnight. `Number` holds
  /// all numbers up to twice MostOffset beyond `shown`.
  template <class Number>
  Number MomentShowing(Number shown) const;

  static Setting Ask(long moment);
  static long FirstChange(const Span& span, long after);
  void AddChanges(long until);
  void MakeIndex();
  void FindMostDrift();
  std::size_t PlaceOf(long moment) const;

  // A place is looked up by the part of the range that the moment lies in, 48 days long: the index
  // has the place of its first second, and few parts have a change.
  static constexpr int PartBits = 22;
  static constexpr std::size_t Parts = std::size_t{1} << (32 - PartBits);

  /// No clock is further from UTC.
  static constexpr long MostOffset = 2 * SecondsPerDay;

  static std::atomic<const LocalZone*> s_InForce;

  std::vector<Span> m_Spans;  ///< in the order of time; the first begins with the range
  std::size_t m_Last = 0;     ///< the place of the last span
  std::array<std::uint16_t, Parts> m_Index{};
  long m_MostDrift = 0;
};

// Here, so that they are inlined: a due test asks a dozen times.

inline std::size_t LocalZone::PlaceOf(long moment) const {
  const std::uint32_t sinceBegin = static_cast<std::uint32_t>(moment) - 0x80000000U;
  std::size_t place = m_Index[sinceBegin >> PartBits];
  while (place < m_Last && m_Spans[place + 1].m_Begin <= moment) {
    ++place;
  }
  return place;
}

inline LocalTime LocalZone::LocalTimeAt(long moment) const {
  // Day and second apart: their sum may lie outside the range, and it would need a costly division.
  long day = moment / SecondsPerDay;
  long second = moment % SecondsPerDay + m_Spans[PlaceOf(moment)].m_Setting.m_Offset;
  for (; second < 0; second += SecondsPerDay) {
    --day;
  }
  for (; second >= SecondsPerDay; second -= SecondsPerDay) {
    ++day;
  }
  return {day, second};
}

template <class Number>
Number LocalZone::MomentShowing(Number shown) const {
  const auto moment = [&](std::size_t place) { return shown - m_Spans[place].m_Setting.m_Offset; };
  // The first span whose clock does not end before it shows the local time. If that clock begins
  // later, the local time was skipped, and the clock before goes on to it.
  std::size_t place = PlaceOf(Clamp32(shown - MostOffset));
  while (place < m_Last && moment(place) >= m_Spans[place + 1].m_Begin) {
    ++place;
  }
  const bool skipped = place > 0 && moment(place) < m_Spans[place].m_Begin;
  return moment(skipped ? place - 1 : place);
}

inline long LocalZone::MomentOf(const LocalTime& local) const {
  // A few days inside the range no sum of these leaves it, and 32 bits will do.
  constexpr long MostDays = (Long32Max - 2 * MostOffset) / SecondsPerDay - 1;
  if (-MostDays <= local.m_Day && local.m_Day <= MostDays) {
    return MomentShowing<long>(local.m_Day * SecondsPerDay + local.m_Second);
  }
  const auto found =
      MomentShowing<std::int64_t>(std::int64_t{local.m_Day} * SecondsPerDay + local.m_Second);
  return found < Long32Min || found > Long32Max ? -1 : static_cast<long>(found);
}

}  // namespace Nox
