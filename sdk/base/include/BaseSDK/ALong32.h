#pragma once

#include <cstdint>
#include <ctime>

namespace BaseSDK {

/// Arithmetic on times and counts, which are signed 32-bit numbers in a `long` at both word sizes:
/// every result beyond that range is the nearest end of it. It never wraps, so a date in 2038 stays
/// the last one instead of becoming 1901.
constexpr long Long32Max = 2147483647L;
constexpr long Long32Min = -Long32Max - 1;

/// The number of the signed 32-bit range that is nearest to `value`.
constexpr long Clamp32(std::int64_t value) {
  return value > Long32Max ? Long32Max : value < Long32Min ? Long32Min : static_cast<long>(value);
}

/// The operands of these three are in the signed 32-bit range, and so is the result.
constexpr long Add32(long left, long right) {
  return Clamp32(std::int64_t{left} + std::int64_t{right});
}
constexpr long Sub32(long left, long right) {
  return Clamp32(std::int64_t{left} - std::int64_t{right});
}
constexpr long Mul32(long left, long right) {
  return Clamp32(std::int64_t{left} * std::int64_t{right});
}

/// mktime: local time to seconds since the epoch; `fields` is normalised as mktime does it. -1 when
/// it fails or the moment lies outside the signed 32-bit range; -1 is also the moment one second
/// before the epoch, which callers treat as no time.
///
/// With tm_isdst below 0 the answer depends on the fields and the zone alone (that of mktime itself
/// depends on earlier calls): in New York 2024-11-03 01:30, shown twice, is the first of the two,
/// 1730611800; 2024-03-10 02:30, never shown, is 03:30 daylight time, 1710055800.
long MakeTime32(std::tm& fields);

}  // namespace BaseSDK
