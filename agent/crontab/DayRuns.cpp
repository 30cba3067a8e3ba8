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

}  // namespace

std::vector<DayRun> DivideDay(std::uint64_t minutes, long hours, bool holdHours) {
  std::vector<DayRun> runs;
  const auto hourParts = SplitIntoProgressions(static_cast<std::uint64_t>(hours));
  for (const Progression& minutePart : SplitIntoProgressions(minutes)) {
    for (const Progression& hourPart : hourParts) {
      if (holdHours) {
        AddRunPerHour(minutePart, hourPart, runs);
      } else {
        AddRuns(minutePart, hourPart, runs);
      }
    }
  }
  return runs;
}

}  // namespace NoxAgent
