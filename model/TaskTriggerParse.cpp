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

/// Decimal; 0 when absent or not a number.
long ReadNumber(const AXmlDoc& doc, const wchar_t* path) {
  return doc.SelectSingleNode(path).ToLong();
}

/// At least 1, which is also what an absent element means.
long ReadCount(const AXmlDoc& doc, const wchar_t* path) {
  return std::max(ReadNumber(doc, path), 1L);
}

/// One decimal number. Taken as it is: bits that stand for no day are never asked for.
std::uint32_t ReadMask(const AXmlDoc& doc, const wchar_t* path) {
  return static_cast<std::uint32_t>(ReadNumber(doc, path));
}

bool ReadDisabled(const AXmlDoc& doc) {
  const AString value = doc.SelectSingleNode(L"/Trigger/@Disabled");
  return BaseSDK::AText::StrToBool(value) || value.EqualsNoCase(L"Y");
}

long ReadSecondsPerUnit(const AXmlDoc& doc) {
  const AString unit = doc.SelectSingleNode(L"/Trigger/@IntervalUnit");
  if (unit.EqualsNoCase(L"HOUR")) {
    return SecondsPerHour;
  }
  return unit.EqualsNoCase(L"SECOND") ? 1 : SecondsPerMinute;
}

long KnownTime(const ADateTime& date) {
  return date.GetTime() == 0 ? CTaskTrigger::NoTime : date.GetTime();
}

long ReadBeginDate(const AXmlDoc& doc) {
  const AString text = doc.SelectSingleNode(L"/Trigger/BeginDate/text()");
  const long time = KnownTime(ADateTime(text));
  if (time != CTaskTrigger::NoTime) {
    return time;
  }
  return KnownTime(ADateTime(text, L"%Y/%m/%d %H:%M:%S", 0));
}

// Kept on purpose: the end date is not read a second time in the explicit format, so that a task
// that had no end until now still has none.
long ReadEndDate(const AXmlDoc& doc) {
  return KnownTime(ADateTime(doc.SelectSingleNode(L"/Trigger/EndDate/text()")));
}

/// 1 to 5; anything else is the first week.
long ReadWeek(const AXmlDoc& doc) {
  const long week = ReadNumber(doc, L"/Trigger/Week/text()");
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
  m_Description = doc.SelectSingleNode(L"/Trigger/@Description");
  m_Type = ReadNumber(doc, L"/Trigger/@Type");
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
  m_Interval = Nox::Mul32(ReadNumber(doc, L"/Trigger/@Interval"), ReadSecondsPerUnit(doc));
  m_Duration = Nox::Mul32(ReadNumber(doc, L"/Trigger/@Duration"), SecondsPerMinute);
  // Kept on purpose: with an interval a negative duration stays, and then moves the moments that
  // the due test looks at into the future.
  if (m_Interval == 0) {
    m_Duration = std::max(m_Duration, 0L);
  }
  m_KillAtEnd = ReadNumber(doc, L"/Trigger/@KillAtEnd") != 0;
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
  m_DaysInterval = ReadCount(doc, L"/Trigger/DaysInterval/text()");
  m_WeeksInterval = ReadCount(doc, L"/Trigger/WeeksInterval/text()");
  m_DaysOfWeek = ReadMask(doc, L"/Trigger/DaysOfWeek/text()");
  m_DaysOfMonth = ReadMask(doc, L"/Trigger/DaysOfMonth/text()");
  m_MonthsOfYear = ReadMask(doc, L"/Trigger/MonthsOfYear/text()");
  m_Week = ReadWeek(doc);
}
