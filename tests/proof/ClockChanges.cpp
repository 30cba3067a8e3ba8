#include "tests/proof/ClockChanges.h"

#include <BaseSDK/ALong32.h>

#include <ctime>
#include <utility>

namespace {

std::pair<long, int> SettingAt(long moment) {
  const std::time_t time = moment;
  std::tm fields{};
  (void)localtime_r(&time, &fields);
  return {fields.tm_gmtoff, fields.tm_isdst};
}

}  // namespace

std::vector<long> ClockChanges(long stride) {
  std::vector<long> changes{BaseSDK::Long32Min};
  for (long at = BaseSDK::Long32Min; at < BaseSDK::Long32Max;) {
    const auto setting = SettingAt(at);
    long same = at, other = BaseSDK::Add32(at, stride);
    while (other - same > 1 && SettingAt(other) != setting) {
      const long middle = same + (other - same) / 2;
      (SettingAt(middle) == setting ? same : other) = middle;
    }
    if (SettingAt(other) != setting) {
      changes.push_back(other);
    }
    at = other;
  }
  changes.push_back(BaseSDK::Long32Max);
  return changes;
}
