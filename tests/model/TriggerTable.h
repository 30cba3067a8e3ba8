#pragma once

#include "model/TaskTrigger.h"
#include "tests/support/LocalTimes.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

// Zones as rules, which need no zone files.
using TestSupport::Dublin;
using TestSupport::LordHowe;
using TestSupport::NewYork;
using TestSupport::SaoPaulo;
using TestSupport::Utc;

/// One due test. Moments are written as Moment::At reads them.
struct DueRow {
  const char* zone;
  const char* trigger;
  const char* lastRun;
  const char* now;
  const char*
      answer;         ///< "due", "late" (due and late), "-" or, with a type that is both, two words
  long sleepSeconds;  ///< what a long sleep is lowered to; 0 when it is left alone
  const char* nextRun;
};

/// The start that `trigger` has on the local day of `moment`.
struct StartRow {
  const char* zone;
  const char* trigger;
  const char* moment;
  const char* start;
};

/// A trigger with a last run of its own, asked at moments of the virtual clock.
class AskedTrigger {
 public:
  explicit AskedTrigger(const std::string& xml, long lastRun = -1)
      : m_LastRun(lastRun), m_Trigger(BaseSDK::AString::FromUtf8(xml), &m_LastRun) {}

  /// "due", "late", "expired", "due expired" or "-". The sleep asked for is in m_SleepSeconds.
  std::string AnswerAt(long now, bool firstEvent = false, bool secondEvent = false);

  static constexpr long LongSleep = 2147483647;

  long m_LastRun;
  CTaskTrigger m_Trigger;
  long m_SleepSeconds = LongSleep;
  bool m_NextRunChanged = false;
};

void CheckDue(const DueRow& row);
void CheckStart(const StartRow& row);

template <std::size_t N>
void CheckAll(const DueRow (&rows)[N]) {
  for (const DueRow& row : rows) {
    CheckDue(row);
  }
}
template <std::size_t N>
void CheckAll(const StartRow (&rows)[N]) {
  for (const StartRow& row : rows) {
    CheckStart(row);
  }
}

/// The moments at which a never-run trigger runs between two moments when it is asked as the
/// monitor asks: after the sleep that it wants, and each half hour, so at every local midnight too.
std::vector<std::string> RunsBetween(const char* trigger, const char* from, const char* to);
