#include "model/LocalZone.h"

#include "Common/ThreadAnnotations.h"

#include <BaseSDK/AMutex.h>

#include <sys/stat.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <ctime>
#include <memory>
#include <string>
#include <utility>

namespace Nox {
namespace {

/// Between two questions to the C library the clock may change once. No zone of the time zone
/// database has changed twice within three days: the shortest time between two changes is 3 days
/// and 23 hours, in Freetown in 1939.
constexpr long ProbeSeconds = 3 * SecondsPerDay;

/// No clock is further from UTC.
constexpr long MostOffset = 2 * SecondsPerDay;

/// The file from which the C library takes the zone when there is no TZ: as the next look would
/// find it changed.
struct FileState {
  dev_t m_Device = 0;
  ino_t m_Node = 0;
  off_t m_Size = 0;
  std::time_t m_Written = 0;
  long m_WrittenNanoseconds = 0;
  bool operator==(const FileState&) const = default;
};

FileState StateOf(const char* file) {
  struct stat info {};
  if (stat(file, &info) != 0) {
    return {};
  }
  return {info.st_dev, info.st_ino, info.st_size, info.st_mtim.tv_sec, info.st_mtim.tv_nsec};
}

/// Byte by byte: a host that keeps TZ in step with the machine's zone changes a byte of it, and
/// either text will do.
std::string TextOf(const char* variable) {
  std::string text;
  for (;; ++variable) {
    const char next = std::atomic_ref(const_cast<char&>(*variable)).load(std::memory_order_relaxed);
    if (next == 0) {
      return text;
    }
    text += next;
  }
}

/// What the C library looks at to find out whether the zone has become another.
struct Source {
  bool m_HasVariable = false;
  std::string m_Variable;
  FileState m_File;
  bool operator==(const Source&) const = default;

  static Source Now() {
    if (const char* const variable = std::getenv("TZ")) {
      return {true, TextOf(variable), {}};
    }
    return {false, {}, StateOf("/etc/localtime")};
  }
};

std::atomic<const LocalZone*> zoneInForce = nullptr;

/// The zones that have been in force. They are kept, for a thread may be in the midst of asking
/// one. Machines change between few.
class KnownZones {
 public:
  void Refresh() {
    BaseSDK::AMutexGuard guard(m_Lock);
    // Taken before the C library looks: what changes in between is then seen by the next look.
    Source source = Source::Now();
    if (zoneInForce.load(std::memory_order_relaxed) != nullptr && source == m_Source) {
      return;
    }
    tzset();
    zoneInForce.store(Keep(std::make_unique<const LocalZone>()), std::memory_order_release);
    m_Source = std::move(source);
  }

 private:
  const LocalZone* Keep(std::unique_ptr<const LocalZone> zone) PLUGIN_REQUIRES(m_Lock) {
    const auto known = std::find_if(m_Zones.begin(), m_Zones.end(),
                                    [&](const auto& other) { return *other == *zone; });
    if (known != m_Zones.end()) {
      return known->get();
    }
    m_Zones.push_back(std::move(zone));
    return m_Zones.back().get();
  }

  BaseSDK::AMutex m_Lock;
  std::vector<std::unique_ptr<const LocalZone>> m_Zones PLUGIN_GUARDED_BY(m_Lock);
  Source m_Source PLUGIN_GUARDED_BY(m_Lock);
};

}  // namespace

const LocalZone& LocalZone::InForce() {
  if (zoneInForce.load(std::memory_order_acquire) == nullptr) {
    Refresh();
  }
  return *zoneInForce.load(std::memory_order_acquire);
}

void LocalZone::Refresh() {
  static KnownZones zones;
  zones.Refresh();
}

LocalZone::LocalZone() : m_Spans{{Long32Min, Ask(Long32Min)}} {
  long probe = Long32Min;
  while (probe < Long32Max) {
    probe = Add32(probe, ProbeSeconds);
    AddChanges(probe);
  }
  MakeIndex();
}

/// What is shown counts, and not tm_gmtoff: the clock of a zone with leap seconds is behind it.
LocalZone::Setting LocalZone::Ask(long moment) {
  namespace chrono = std::chrono;
  const std::time_t time = moment;
  std::tm shown{};
  (void)localtime_r(&time, &shown);  // fails only for years that an int cannot hold
  const chrono::local_days day{chrono::year(shown.tm_year + 1900) /
                               chrono::month(static_cast<unsigned>(shown.tm_mon + 1)) /
                               chrono::day(static_cast<unsigned>(shown.tm_mday))};
  const std::int64_t seconds = std::int64_t{day.time_since_epoch().count()} * SecondsPerDay +
                               shown.tm_hour * 3600 + shown.tm_min * 60 + shown.tm_sec;
  return {static_cast<long>(seconds - moment), shown.tm_isdst > 0};
}

/// The first moment of the change that lies between the span's begin and `after`, which has another
/// setting.
long LocalZone::FirstChange(const Span& span, long after) {
  long before = std::max(span.m_Begin, Sub32(after, ProbeSeconds));
  while (after - before > 1) {
    const long middle = before + (after - before) / 2;
    (Ask(middle) == span.m_Setting ? before : after) = middle;
  }
  return after;
}

void LocalZone::AddChanges(long until) {
  const Setting last = Ask(until);
  while (m_Spans.back().m_Setting != last) {
    const long change = FirstChange(m_Spans.back(), until);
    m_Spans.push_back({change, Ask(change)});
  }
}

void LocalZone::MakeIndex() {
  std::size_t place = 0;
  for (std::size_t part = 0; part < Parts; ++part) {
    const std::int64_t first = Long32Min + (static_cast<std::int64_t>(part) << PartBits);
    while (place + 1 < m_Spans.size() && m_Spans[place + 1].m_Begin <= first) {
      ++place;
    }
    m_Index[part] = static_cast<std::uint16_t>(place);
  }
}

std::size_t LocalZone::PlaceOf(long moment) const {
  const std::uint32_t sinceBegin = static_cast<std::uint32_t>(moment) - 0x80000000U;
  std::size_t place = m_Index[sinceBegin >> PartBits];
  while (place + 1 < m_Spans.size() && m_Spans[place + 1].m_Begin <= moment) {
    ++place;
  }
  return place;
}

LocalTime LocalZone::LocalTimeAt(long moment) const {
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

long LocalZone::MomentOf(const LocalTime& local) const {
  const std::int64_t shown = std::int64_t{local.m_Day} * SecondsPerDay + local.m_Second;
  const auto moment = [&](std::size_t place) { return shown - m_Spans[place].m_Setting.m_Offset; };
  // The first span whose clock does not end before it shows the local time. If that clock begins
  // later, the local time was skipped, and the clock before goes on to it.
  std::size_t place = PlaceOf(Clamp32(shown - MostOffset));
  while (place + 1 < m_Spans.size() && moment(place) >= m_Spans[place + 1].m_Begin) {
    ++place;
  }
  const bool skipped = place > 0 && moment(place) < m_Spans[place].m_Begin;
  const std::int64_t found = moment(skipped ? place - 1 : place);
  return found < Long32Min || found > Long32Max ? -1 : static_cast<long>(found);
}

}  // namespace Nox
