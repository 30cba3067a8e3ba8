#pragma once

#include <BaseSDK/AMutex.h>
#include <BaseSDK/ThreadAnnotations.h>

#include <cstddef>
#include <cstdint>
#include <deque>
#include <string>

namespace Simulation {

/// What happened last and the first thing that must not have. May be used from any thread.
class Verdict {
 public:
  /// A line of the story; only the last ones are kept.
  void Note(const std::string& event);
  void Violation(const std::string& what);
  bool IsViolated() const;
  /// The violation and the story that led to it.
  std::string Text() const;
  /// Of all the story: equal for two runs of a seed, also at different word sizes.
  std::uint64_t Fingerprint() const;

 private:
  static constexpr std::size_t KeptLines = 60;

  mutable BaseSDK::AMutex m_Lock;
  std::deque<std::string> m_Story NOX_GUARDED_BY(m_Lock);
  std::string m_Violation NOX_GUARDED_BY(m_Lock);
  std::uint64_t m_Fingerprint NOX_GUARDED_BY(m_Lock) = 0xCBF29CE484222325ULL;
};

}  // namespace Simulation
