#include "agent/handler/job/ProcessLimits.h"

#include "agent/handler/job/Duration.h"
#include "agent/handler/job/WholeNumber.h"
#include "agent/handler/job/Words.h"

#include <BaseSDK/ALong32.h>

#include <algorithm>
#include <iterator>
#include <string>

using BaseSDK::AString;

namespace NoxHandler {

namespace {

constexpr long LeastFiles = 8;  // the streams, and what it takes to load a program
constexpr long MostFiles = 1048576;
constexpr long MostOomScore = 1000;
constexpr long MostIoLevel = 7;
constexpr std::uint64_t Kibi = 1024;
constexpr std::uint64_t Mebi = Kibi * Kibi;
constexpr std::uint64_t Gibi = Kibi * Mebi;
constexpr std::uint64_t LeastMemory = Mebi;
constexpr std::uint64_t MostMemory = Kibi * Gibi;

// The system's numbers for the classes, and where they stand in the value.
constexpr int RealtimeClass = 1;
constexpr int BestEffortClass = 2;
constexpr int IdleClass = 3;
constexpr int ClassShift = 13;

AString OutOfRange(long least, long most) {
  return AString("is to be a number from %1 to %2")
      .Arg(AString().SetNum(least, 'd'), AString().SetNum(most, 'd'));
}

std::uint64_t FactorOf(wchar_t unit) {
  switch (unit) {
    case L'K':
      return Kibi;
    case L'M':
      return Mebi;
    case L'G':
      return Gibi;
    default:
      return 1;
  }
}

}  // namespace

AString ProcessLimits::ReadNice(const AString& text) {
  const auto nice = ParseWhole(text, -20, 19);
  if (!nice) {
    return OutOfRange(-20, 19);
  }
  m_Nice = static_cast<int>(*nice);
  return AString();
}

AString ProcessLimits::ReadIoPriority(const AString& text) {
  const auto words = BlankSeparated(text);
  if (words.size() == 1 && words[0] == AString("idle")) {
    m_IoPriority = IdleClass << ClassShift;
    return AString();
  }
  const auto level = words.size() == 2 ? ParseWhole(words[1], 0, MostIoLevel) : std::nullopt;
  const bool isRealtime = level && words[0] == AString("realtime");
  if (!isRealtime && (!level || words[0] != AString("best-effort"))) {
    return "is to be idle, best-effort N or realtime N, with N from 0 to 7";
  }
  const int ioClass = isRealtime ? RealtimeClass : BestEffortClass;
  m_IoPriority = (ioClass << ClassShift) | static_cast<int>(*level);
  return AString();
}

AString ProcessLimits::ReadMemory(const AString& text) {
  const std::uint64_t factor = FactorOf(text.IsEmpty() ? L'\0' : text[text.Length() - 1]);
  const auto number =
      ParseWhole(factor == 1 ? text : text.Left(text.Length() - 1), 1, BaseSDK::Long32Max);
  const std::uint64_t bytes = static_cast<std::uint64_t>(number.value_or(0)) * factor;
  if (bytes < LeastMemory || bytes > MostMemory) {
    return "is to be a number of bytes from 1M to 1024G, such as 512M";
  }
  m_MemoryBytes = bytes;
  return AString();
}

AString ProcessLimits::ReadCpuTime(const AString& text) {
  long seconds = 0;
  const AString reason = Duration::Read(text, 1, Duration::MaxSeconds, seconds);
  if (reason.IsEmpty()) {
    m_CpuSeconds = seconds;
  }
  return reason;
}

AString ProcessLimits::ReadFiles(const AString& text) {
  const auto files = ParseWhole(text, LeastFiles, MostFiles);
  if (!files) {
    return OutOfRange(LeastFiles, MostFiles);
  }
  m_Files = files;
  return AString();
}

AString ProcessLimits::ReadOomScore(const AString& text) {
  if (!ParseWhole(text, -MostOomScore, MostOomScore)) {
    return OutOfRange(-MostOomScore, MostOomScore);
  }
  m_OomScore = text.ToUtf8();
  return AString();
}

ProcessLimits ProcessLimits::WithoutThoseOfGroup() const {
  ProcessLimits others = *this;
  others.m_MemoryBytes.reset();
  others.m_CpuSeconds.reset();
  return others;
}

AString ProcessLimits::MemoryText() const {
  constexpr struct {
    std::uint64_t m_Factor;
    const char* m_Letter;
  } Units[] = {{Gibi, "G"}, {Mebi, "M"}, {Kibi, "K"}, {1, ""}};
  const auto* const unit = std::find_if(std::begin(Units), std::end(Units), [&](const auto& each) {
    return *m_MemoryBytes % each.m_Factor == 0;
  });
  return (std::to_string(*m_MemoryBytes / unit->m_Factor) + unit->m_Letter).c_str();
}

}  // namespace NoxHandler
