#include <BaseSDK/ALong32.h>

#include <chrono>

namespace BaseSDK {
namespace {

constexpr std::time_t SecondsPerDay = 86400;

bool IsSameClock(const std::tm& shown, const std::tm& wanted) {
  return shown.tm_sec == wanted.tm_sec && shown.tm_min == wanted.tm_min &&
         shown.tm_hour == wanted.tm_hour && shown.tm_mday == wanted.tm_mday;
}

bool ShowsSameClock(std::time_t moment, const std::tm& wanted) {
  std::tm shown{};
  return localtime_r(&moment, &shown) != nullptr && IsSameClock(shown, wanted);
}

// For a local time that a change of the clock repeats or skips, mktime's answer depends on the call
// made before it: the same schedule would start sometimes at one moment, sometimes at the
// other. Here the offset in force a day earlier decides, as in calendars: a repeated time is the
// first of the two, and a skipped one lies as far behind the change as its fields are past it.
//
// `shown` is what the clock shows at `moment`, mktime's answer.
std::time_t WithOffsetOfDayBefore(std::time_t moment, const std::tm& shown, const std::tm& wanted) {
  const std::time_t dayBefore = moment - SecondsPerDay;
  std::tm before{};
  if (localtime_r(&dayBefore, &before) == nullptr) {
    return moment;
  }
  if (before.tm_gmtoff == shown.tm_gmtoff && IsSameClock(shown, wanted)) {
    return moment;  // as nearly always
  }
  std::tm normal = wanted;  // timegm makes 32 October the 1 November that a clock can show
  const std::time_t utc = timegm(&normal);
  if (utc == -1) {
    return moment;
  }
  const std::time_t candidate = utc - before.tm_gmtoff;
  if (candidate == moment) {
    return moment;
  }
  return ShowsSameClock(candidate, normal) || !ShowsSameClock(moment, normal) ? candidate : moment;
}

bool NearEndOfRange(std::int64_t moment) {
  return moment < Long32Min + 2 * SecondsPerDay || moment > Long32Max - 2 * SecondsPerDay;
}

}  // namespace

long MakeTime32(std::tm& fields) {
  const std::tm wanted = fields;
  const std::time_t moment = std::mktime(&fields);
  // Compared as 64 bits: a 32-bit time_t is always in the range, a 64-bit one may not be.
  const std::int64_t wide = moment;
  if (wide < Long32Min || wide > Long32Max) {
    return -1;
  }
  if (wide == -1 || wanted.tm_isdst >= 0 || NearEndOfRange(wide)) {
    return static_cast<long>(wide);
  }
  const std::time_t settled = WithOffsetOfDayBefore(moment, fields, wanted);
  if (settled != moment) {
    localtime_r(&settled, &fields);
  }
  return static_cast<long>(settled);
}

}  // namespace BaseSDK
