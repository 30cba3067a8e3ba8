#include "tests/agent/daemon/lives/TaskText.h"

#include "tests/support/LocalTimes.h"
#include "tests/support/TaskXml.h"

#include <BaseSDK/ADateTime.h>
#include <BaseSDK/AString.h>
#include <BaseSDK/AStringTokenizer.h>
#include <BaseSDK/AXmlDoc.h>

#include <algorithm>

using BaseSDK::ADateTime;
using BaseSDK::AString;
using TestSupport::Day;
using TestSupport::Hour;
using TestSupport::Minute;
using TestSupport::TaskXml;
using TestSupport::TriggerXml;

namespace NoxAgent {
namespace {

constexpr long RepeatSeconds = 22 * Hour;

// Mostly up to some sectors. Some are so long that a few changes fill the journal.
int WordsOf(int number) {
  constexpr int Step = 37;
  constexpr int MostWords = 150;
  constexpr int LongEach = 25;
  constexpr int LongWords = 15000;
  return number % LongEach == 0 ? LongWords : 1 + number * Step % MostWords;
}

// Each half stands at one end of the document, so that parts of two documents do not make one.
std::string HalfOf(int number) {
  std::string words;
  for (int i = 0; i < WordsOf(number); ++i) {
    words += std::to_string(number) + " ";
  }
  return words;
}

bool ReadRun(const AString& entry, TaskFacts& facts) {
  const BaseSDK::AStringTokenizer words(entry, L" ");
  if (entry.IsEmpty()) {
    return true;
  }
  if (words.Count() != 3) {
    return false;
  }
  facts.m_LastRun = ADateTime(words.Token(0) + L" " + words.Token(1)).GetTime();
  facts.m_State = words.Token(2).ToUtf8();
  return true;
}

std::string Show(long time) {
  return ADateTime(time).ToString(L"%Y/%m/%d %H:%M:%S").ToUtf8();
}

TriggerXml TriggerOf(const TaskPlan& plan) {
  TriggerXml trigger = TriggerXml::Daily(Show(plan.m_Begin)).Description(HalfOf(plan.m_Number));
  if (plan.m_Interval > 0) {
    trigger.EverySeconds(plan.m_Interval).ForMinutes(RepeatSeconds / Minute);
  }
  if (plan.m_End != TaskPlan::Never) {
    trigger.End(Show(plan.m_End));
  }
  return trigger;
}

}  // namespace

long TaskPlan::LatestStart(long now) const {
  constexpr long GraceSeconds = 5;
  const long start = m_Begin + (now - m_Begin) / Day * Day;
  const bool repeats = m_Interval > 0 && now - start <= RepeatSeconds + GraceSeconds;
  return repeats ? start + std::min(now - start, RepeatSeconds) / m_Interval * m_Interval : start;
}

long TaskPlan::NextStart(long now) const {
  if (now < m_Begin) {
    return m_Begin;
  }
  const long start = m_Begin + (now - m_Begin) / Day * Day;
  const long repetition = LatestStart(now) + m_Interval;
  return repetition > now && repetition <= start + RepeatSeconds ? repetition : start + Day;
}

std::string TaskPlan::Describe() const {
  return std::to_string(m_Number) + " from " + Show(m_Begin) +
         (m_Interval > 0 ? " every " + std::to_string(m_Interval) + " s" : "") +
         (m_End != Never ? " to " + Show(m_End) : "");
}

// Two triggers that say the same, so that the number stands at both ends. Two handlers, so that
// there may be two batches at a time.
std::string MakeTaskText(const TaskPlan& plan) {
  constexpr const char* OtherHandler = "{00000000-0000-0000-0000-0000000000A2}";
  TaskXml document;
  if (plan.m_Number % 3 == 0) {
    document.Handler(OtherHandler);
  }
  return document.Enabled(true).With(TriggerOf(plan)).With(TriggerOf(plan)).Utf8();
}

std::optional<TaskFacts> ReadTaskText(const std::string& text) {
  const BaseSDK::AXmlDoc document(AString::FromUtf8(text));
  const auto select = [&](const wchar_t* path) { return document.SelectSingleNode(path); };
  const AString first = select(L"//Trigger[1]/@Description");
  TaskFacts facts;
  facts.m_Document = static_cast<int>(first.Left(first.Find(L" ")).ToLong());
  facts.m_IsEnabled = select(L"/Task/@Enabled") == L"1";
  const bool isWhole = document.IsParsed() && first.ToUtf8() == HalfOf(facts.m_Document) &&
                       select(L"//Trigger[2]/@Description") == first &&
                       ReadRun(select(L"//RunTime/text()"), facts);
  return isWhole ? std::optional(facts) : std::nullopt;
}

}  // namespace NoxAgent
