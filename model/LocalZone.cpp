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

/// The zones that have been in force. They are kept, for a thread may be in the midst of asking
/// one. Machines change between few.
class KnownZones {
 public:
  /// Puts the C library's zone of now into `inForce` if it is another.
  void Refresh(std::atomic<const LocalZone*>& inForce) {
    BaseSDK::AMutexGuard guard(m_Lock);
    // Taken before the C library looks: what changes in between is then seen by the next look.
    Source source = Source::Now();
    if (inForce.load(std::memory_order_relaxed) != nullptr && source == m_Source) {
      return;
    }
    tzset();
    inForce.store(Keep(std::make_unique<const LocalZone>()), std::memory_order_release);
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

constinit std::atomic<const LocalZone*> LocalZone::s_InForce = nullptr;

void LocalZone::Refresh() {
  static KnownZones zones;
  zones.Refresh(s_InForce);
}

LocalZone::LocalZone() : m_Spans{{Long32Min, Ask(Long32Min)}} {
  long probe = Long32Min;
  while (probe < Long32Max) {
    probe = Add32(probe, ProbeSeconds);
    AddChanges(probe);
  }
  m_Last = m_Spans.size() - 1;
  MakeIndex();
  FindMostDrift();
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
    while (place < m_Last && m_Spans[place + 1].m_Begin <= first) {
      ++place;
    }
    m_Index[part] = static_cast<std::uint16_t>(place);
  }
}

void LocalZone::FindMostDrift() {
  const auto offset = [](const Span& span) { return span.m_Setting.m_Offset; };
  const auto [least, most] = std::ranges::minmax(m_Spans, {}, offset);
  m_MostDrift = 1 + (offset(most) - offset(least)) / SecondsPerDay;
}

}  // namespace Nox
