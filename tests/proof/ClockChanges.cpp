#include "tests/proof/ClockChanges.h"

#include <BaseSDK/ALong32.h>

#include <algorithm>
#include <ctime>

namespace {

// The first moment of the other setting, which is in force at `after` and not yet at `before`.
long ChangeBetween(long before, long after) {
  const ClockSetting setting = ClockSettingAt(before);
  while (after - before > 1) {
    const long middle = before + (after - before) / 2;
    (ClockSettingAt(middle) == setting ? before : after) = middle;
  }
  return after;
}

}  // namespace

ClockSetting ClockSettingAt(long moment) {
  const std::time_t time = moment;
  std::tm fields{};
  (void)localtime_r(&time, &fields);
  return {fields.tm_gmtoff, fields.tm_isdst};
}

std::vector<long> ClockChanges(long first, long last, long stride) {
  std::vector<long> changes;
  ClockSetting setting = ClockSettingAt(first);
  while (first < last) {
    const long probe = std::min(BaseSDK::Add32(first, stride), last);
    const ClockSetting found = ClockSettingAt(probe);
    if (found == setting) {
      first = probe;
      continue;
    }
    first = ChangeBetween(first, probe);
    setting = ClockSettingAt(first);
    changes.push_back(first);
  }
  return changes;
}

std::vector<long> ClockChangesOf32Bits(long stride) {
  std::vector<long> moments = ClockChanges(BaseSDK::Long32Min, BaseSDK::Long32Max, stride);
  moments.insert(moments.begin(), BaseSDK::Long32Min);
  moments.push_back(BaseSDK::Long32Max);
  return moments;
}
