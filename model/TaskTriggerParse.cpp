#include "model/LocalZone.h"
#include "model/TaskTrigger.h"

#include <BaseSDK/ADateTime.h>
#include <BaseSDK/AText.h>
#include <BaseSDK/AXmlDoc.h>

#include <algorithm>

using BaseSDK::ADateTime;
using BaseSDK::AString;
using BaseSDK::AXmlDoc;

namespace {

constexpr long SecondsPerMinute = 60;
constexpr long SecondsPerHour = 3600;

/// Made once, not for every trigger that is read.
namespace TriggerPath {
const AString Disabled = L"/Trigger/@Disabled";
const AString Description = L"/Trigger/@Description";
const AString Type = L"/Trigger/@Type";
const AString Interval = L"/Trigger/@Interval";
const AString IntervalUnit = L"/Trigger/@IntervalUnit";
const AString Duration = L"/Trigger/@Duration";
const AString KillAtEnd = L"/Trigger/@KillAtEnd";
const AString BeginDate = L"/Trigger/BeginDate/text()";
const AString EndDate = L"/Trigger/EndDate/text()";
const AString DaysInterval = L"/Trigger/DaysInterval/text()";
const AString WeeksInterval = L"/Trigger/WeeksInterval/text()";
const AString DaysOfWeek = L"/Trigger/DaysOfWeek/text()";
const AString DaysOfMonth = L"/Trigger/DaysOfMonth/text()";
const AString MonthsOfYear = L"/Trigger/MonthsOfYear/text()";
const AString Week = L"/Trigger/Week/text()";
}  // namespace TriggerPath

namespace TriggerWord {
const AString Yes = L"Y";
const AString Hour = L"HOUR";
const AString Second = L"SECOND";
}  // namespace TriggerWord

/// Decimal; 0 when absent or not a number.
long ReadNumber(const AXmlDoc& doc, const AString& path) {
  return doc.SelectSingleNode(path).ToLong();
}

/// At least 1, which is also what an absent element means.
long ReadCount(const AXmlDoc& doc, const AString& path) {
  return std::max(ReadNumber(doc, path), 1L);
}

/// One decimal number. Taken as it is: bits that stand for no day are never asked for.
std::uint32_t ReadMask(const AXmlDoc& doc, const AString& path) {
  return static_cast<std::uint32_t>(ReadNumber(doc, path));
}

bool ReadDisabled(const AXmlDoc& doc) {
  const AString value = doc.SelectSingleNode(TriggerPath::Disabled);
  return BaseSDK::AText::StrToBool(value) || value.EqualsNoCase(TriggerWord::Yes);
}

long ReadSecondsPerUnit(const AXmlDoc& doc) {
  const AString unit = doc.SelectSingleNode(TriggerPath::IntervalUnit);
  if (unit.EqualsNoCase(TriggerWord::Hour)) {
    return SecondsPerHour;
  }
  return unit.EqualsNoCase(TriggerWord::Second) ? 1 : SecondsPerMinute;
}

long KnownTime(const ADateTime& date) {
  return date.GetTime() == 0 ? CTaskTrigger::NoTime : date.GetTime();
}

long ReadBeginDate(const AXmlDoc& doc) {
  const AString text = doc.SelectSingleNode(TriggerPath::BeginDate);
  const long time = KnownTime(ADateTime(text));
  if (time != CTaskTrigger::NoTime) {
    return time;
  }
  return KnownTime(ADateTime(text, L"%Y/%m/%d %H:%M:%S", 0));
}

// Kept on purpose: the end date is not read a second time in the explicit format, so that a task
// that had no end until now still has none.
long ReadEndDate(const AXmlDoc& doc) {
  return KnownTime(ADateTime(doc.SelectSingleNode(TriggerPath::EndDate)));
}

/// 1 to 5; anything else is the first week.
long ReadWeek(const AXmlDoc& doc) {
  const long week = ReadNumber(doc, TriggerPath::Week);
  return week < 1 || week > 5 ? 1 : week;
}

}  // namespace

CTaskTrigger::CTaskTrigger(const AString& element, long* lastRun) : m_pLastRun(lastRun) {
  const AXmlDoc doc(element);
  if (!ReadKind(doc)) {
    m_Disabled = true;
    return;
  }
  ReadRepetition(doc);
  if (!ReadDates(doc)) {
    m_Disabled = true;
    return;
  }
  ReadRecurrence(doc);
}

bool CTaskTrigger::ReadKind(const AXmlDoc& doc) {
  if (ReadDisabled(doc)) {
    return false;
  }
  m_Description = doc.SelectSingleNode(TriggerPath::Description);
  m_Type = ReadNumber(doc, TriggerPath::Type);
  // Kept on purpose: the two event types are refused here although the due test knows them, while
  // negative types without a meaning pass and fire every day.
  if (m_Type > MonthlyByWeekday) {
    return false;
  }
  if (m_Description.IsEmpty() && m_Type == AsSoonAsPossible) {
    m_Description = L"Run as soon as possible";
  }
  return true;
}

void CTaskTrigger::ReadRepetition(const AXmlDoc& doc) {
  m_Interval = Nox::Mul32(ReadNumber(doc, TriggerPath::Interval), ReadSecondsPerUnit(doc));
  m_Duration = Nox::Mul32(ReadNumber(doc, TriggerPath::Duration), SecondsPerMinute);
  // Kept on purpose: with an interval a negative duration stays, and then moves the moments that
  // the due test looks at into the future.
  if (m_Interval == 0) {
    m_Duration = std::max(m_Duration, 0L);
  }
  m_KillAtEnd = ReadNumber(doc, TriggerPath::KillAtEnd) != 0;
}

/// The dates are read in the C library's zone of now, and the arithmetic on them must be of the
/// same.
bool CTaskTrigger::ReadDates(const AXmlDoc& doc) {
  Nox::LocalZone::Refresh();
  m_BeginDate = ReadBeginDate(doc);
  m_EndDate = ReadEndDate(doc);
  if (m_BeginDate == NoTime && m_Type != AsSoonAsPossible) {
    return false;
  }
  if (m_EndDate != NoTime) {
    m_EndDate = std::max(m_EndDate, m_BeginDate);
  }
  return true;
}

void CTaskTrigger::ReadRecurrence(const AXmlDoc& doc) {
  m_DaysInterval = ReadCount(doc, TriggerPath::DaysInterval);
  m_WeeksInterval = ReadCount(doc, TriggerPath::WeeksInterval);
  m_DaysOfWeek = ReadMask(doc, TriggerPath::DaysOfWeek);
  m_DaysOfMonth = ReadMask(doc, TriggerPath::DaysOfMonth);
  m_MonthsOfYear = ReadMask(doc, TriggerPath::MonthsOfYear);
  m_Week = ReadWeek(doc);
}
