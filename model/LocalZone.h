#pragma once

#include "Common/Long32.h"

#include <array>
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
  static const LocalZone& InForce();

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
  /// dependence on earlier calls.
  long MomentOf(const LocalTime& local) const;

  /// Whether the clock does not change from the one moment to the other.
  bool IsSteady(long from, long to) const { return PlaceOf(from) == PlaceOf(to); }

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

  static Setting Ask(long moment);
  static long FirstChange(const Span& span, long after);
  void AddChanges(long until);
  void MakeIndex();
  std::size_t PlaceOf(long moment) const;

  // A place is looked up by the part of the range that the moment lies in, 48 days long: the index
  // has the place of its first second, and few parts have a change.
  static constexpr int PartBits = 22;
  static constexpr std::size_t Parts = std::size_t{1} << (32 - PartBits);

  std::vector<Span> m_Spans;  ///< in the order of time; the first begins with the range
  std::array<std::uint16_t, Parts> m_Index{};
};

}  // namespace Nox
