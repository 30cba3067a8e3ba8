#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <vector>

namespace Simulation {

/// The one source of chance: the same numbers for the same seed on every machine, which the
/// distributions of the standard library do not promise.
class Random {
 public:
  explicit Random(std::uint64_t seed) : m_State(seed) {}

  std::uint64_t Next() {
    // SplitMix64: a counter, mixed.
    std::uint64_t mixed = m_State += 0x9E3779B97F4A7C15ULL;
    mixed = (mixed ^ (mixed >> 30)) * 0xBF58476D1CE4E5B9ULL;
    mixed = (mixed ^ (mixed >> 27)) * 0x94D049BB133111EBULL;
    return mixed ^ (mixed >> 31);
  }
  /// From 0 to `count` - 1.
  std::size_t Below(std::size_t count) { return static_cast<std::size_t>(Next() % count); }
  /// Both ends are possible.
  long Between(long low, long high) {
    return low + static_cast<long>(Next() % (static_cast<std::uint64_t>(high - low) + 1));
  }
  /// True `percent` times of a hundred.
  bool Percent(long percent) { return Between(1, 100) <= percent; }
  template <class T>
  T OneOf(std::initializer_list<T> values) {
    return *(values.begin() + Below(values.size()));
  }
  template <class T>
  const T& OneOf(const std::vector<T>& values) {
    return values[Below(values.size())];
  }

 private:
  std::uint64_t m_State;
};

}  // namespace Simulation
