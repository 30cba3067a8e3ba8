#include "agent/crontab/DayRuns.h"

namespace NoxAgent {

namespace {

constexpr int MostNumbers = 60;
constexpr int MinutesPerHour = 60;
constexpr long SecondsPerMinute = 60;

/// Numbers at equal distances; a single one has the step 0.
struct Progression {
  int m_First = 0;
  int m_Step = 0;
  int m_Count = 0;
};

bool IsIn(std::uint64_t numbers, int number) {
  return number < MostNumbers && (numbers >> number & 1) != 0;
}

Progression LongestProgression(std::uint64_t numbers) {
  Progression longest;
  for (int first = 0; first < MostNumbers; ++first) {
    if (!IsIn(numbers, first)) {
      continue;
    }
    longest = longest.m_Count == 0 ? Progression{first, 0, 1} : longest;
    for (int step = 1; first + step < MostNumbers; ++step) {
      int count = 1;
      while (IsIn(numbers, first + count * step)) {
        ++count;
      }
      longest = count > longest.m_Count ? Progression{first, step, count} : longest;
    }
  }
  return longest;
}

// The longest one first, then the longest one of the rest, and so on.
std::vector<Progression> SplitIntoProgressions(std::uint64_t numbers) {
  std::vector<Progression> progressions;
  while (numbers != 0) {
    const Progression next = LongestProgression(numbers);
    for (int i = 0; i < next.m_Count; ++i) {
      numbers &= ~(std::uint64_t{1} << (next.m_First + i * next.m_Step));
    }
    progressions.push_back(next);
  }
  return progressions;
}

DayRun MakeRun(int firstMinute, int step, int count) {
  const bool repeats = count > 1;
  return {firstMinute * SecondsPerMinute, repeats ? step * SecondsPerMinute : 0,
          repeats ? (count - 1) * step * SecondsPerMinute : 0};
}

// One run for all of it, where its last minute of an hour and its first of the next are as far
// apart as the others.
bool IsOneRun(const Progression& minutes, const Progression& hours) {
  return minutes.m_Count == 1 || hours.m_Count == 1 ||
         (hours.m_Step == 1 && minutes.m_Step * minutes.m_Count == MinutesPerHour);
}

void AddRunPerHour(const Progression& minutes, const Progression& hours,
                   std::vector<DayRun>& runs) {
  for (int i = 0; i < hours.m_Count; ++i) {
    const int hour = hours.m_First + i * hours.m_Step;
    runs.push_back(
        MakeRun(hour * MinutesPerHour + minutes.m_First, minutes.m_Step, minutes.m_Count));
  }
}

void AddRunPerMinute(const Progression& minutes, const Progression& hours,
                     std::vector<DayRun>& runs) {
  for (int i = 0; i < minutes.m_Count; ++i) {
    const int minute = minutes.m_First + i * minutes.m_Step;
    runs.push_back(MakeRun(hours.m_First * MinutesPerHour + minute, hours.m_Step * MinutesPerHour,
                           hours.m_Count));
  }
}

void AddRuns(const Progression& minutes, const Progression& hours, std::vector<DayRun>& runs) {
  if (IsOneRun(minutes, hours)) {
    const int step = minutes.m_Count == 1 ? hours.m_Step * MinutesPerHour : minutes.m_Step;
    runs.push_back(MakeRun(hours.m_First * MinutesPerHour + minutes.m_First, step,
                           minutes.m_Count * hours.m_Count));
  } else if (minutes.m_Count < hours.m_Count) {
    AddRunPerMinute(minutes, hours, runs);
  } else {
    AddRunPerHour(minutes, hours, runs);
  }
}

// The hours up to the next cut, taken off `hours`.
std::uint64_t TakeUncut(std::uint64_t& hours, long cuts) {
  int hour = 0;
  while (!IsIn(hours, hour)) {
    ++hour;
  }
  std::uint64_t taken = 0;
  do {
    taken |= hours & std::uint64_t{1} << hour;
    ++hour;
  } while (hour < MostNumbers && !IsIn(static_cast<std::uint64_t>(cuts), hour));
  hours &= ~taken;
  return taken;
}

}  // namespace

std::vector<DayRun> DivideDay(std::uint64_t minutes, long hours, long cuts) {
  std::vector<DayRun> runs;
  const auto minuteParts = SplitIntoProgressions(minutes);
  for (auto rest = static_cast<std::uint64_t>(hours); rest != 0;) {
    for (const Progression& hourPart : SplitIntoProgressions(TakeUncut(rest, cuts))) {
      for (const Progression& minutePart : minuteParts) {
        AddRuns(minutePart, hourPart, runs);
      }
    }
  }
  return runs;
}

}  // namespace NoxAgent
