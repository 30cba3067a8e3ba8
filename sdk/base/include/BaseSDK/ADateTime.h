#pragma once

#include <BaseSDK/AString.h>

namespace BaseSDK {

/// A moment, in seconds since the epoch in the signed 32-bit range, read and written as local time
/// (the zone of TZ). 0 stands for "no readable time"; the moment 0 itself cannot be told from it.
///
/// A local time that a change of the clocks skips or repeats is resolved as MakeTime32 says
/// (ALong32.h): of two showings the first is meant.
class ADateTime {
 public:
  ADateTime() = default;
  explicit ADateTime(long seconds) : m_Time(seconds) {}

  /// The default reading: "YYYY-MM-DD HH:MM:SS", the same with "/" between the numbers of the date
  /// or with "T" before the time, or the date alone (midnight). Every field has all its digits and
  /// lies in its range, and the day exists in its month. White space may stand before and after,
  /// nothing else. Anything else gives 0.
  explicit ADateTime(const AString& text);

  /// Reads like strptime, then wants the fields to be in range and the whole text used up, but for
  /// white space before and after; otherwise 0. A field that the format lacks is that of
  /// 1 January 1970, midnight. `mode` is 0, local time; any other value gives 0.
  ADateTime(const AString& text, const AString& format, int mode);

  /// What time() says.
  static ADateTime Now();

  long GetTime() const { return m_Time; }

  /// Local time by the rules of strftime; empty when the moment has no local time.
  AString ToString(const AString& format) const;

 private:
  long m_Time = 0;
};

}  // namespace BaseSDK
