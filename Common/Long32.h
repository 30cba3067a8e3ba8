#pragma once

#include <cstdint>

namespace Nox {

/// Arithmetic on times and counts, which are signed 32-bit numbers in a `long` at both word sizes:
/// every result beyond that range is the nearest end of it. It never wraps, so a date in 2038 stays
/// the last one instead of becoming 1901.
///
/// The host kit has the same for itself (BaseSDK/ALong32.h); a plug-in may use the host's names
/// alone, so this is its own.
constexpr long Long32Max = 2147483647L;
constexpr long Long32Min = -Long32Max - 1;

constexpr long Clamp32(std::int64_t value) {
  return value > Long32Max ? Long32Max : value < Long32Min ? Long32Min : static_cast<long>(value);
}

/// The operands of these three are in the signed 32-bit range. Without 64-bit numbers, which cost a
/// 32-bit processor several times as much; due tests do little else.
constexpr long Add32(long left, long right) {
  std::int32_t sum = 0;
  const bool fits = !__builtin_add_overflow(left, right, &sum);
  return fits ? sum : right > 0 ? Long32Max : Long32Min;
}
constexpr long Sub32(long left, long right) {
  std::int32_t difference = 0;
  const bool fits = !__builtin_sub_overflow(left, right, &difference);
  return fits ? difference : right < 0 ? Long32Max : Long32Min;
}
constexpr long Mul32(long left, long right) {
  std::int32_t product = 0;
  const bool fits = !__builtin_mul_overflow(left, right, &product);
  return fits ? product : (left < 0) == (right < 0) ? Long32Max : Long32Min;
}

}  // namespace Nox
