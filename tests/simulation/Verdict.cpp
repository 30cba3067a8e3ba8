#include "tests/simulation/Verdict.h"

#include <BaseSDK/ADateTime.h>

namespace Simulation {

using BaseSDK::AMutexGuard;

namespace {

/// FNV-1a, 64 bits (draft-eastlake-fnv): the same at every word size.
constexpr std::uint64_t FnvPrime = 0x100000001B3ULL;

std::string Stamped(const std::string& text) {
  return BaseSDK::ADateTime::Now().ToString(L"%Y-%m-%d %H:%M:%S ").ToUtf8() + text;
}

}  // namespace

void Verdict::Note(const std::string& event) {
  const std::string line = Stamped(event);
  const AMutexGuard guard(m_Lock);
  for (const char c : line) {
    m_Fingerprint = (m_Fingerprint ^ static_cast<unsigned char>(c)) * FnvPrime;
  }
  m_Story.push_back(line);
  if (m_Story.size() > KeptLines) {
    m_Story.pop_front();
  }
}

void Verdict::Violation(const std::string& what) {
  const std::string line = Stamped(what);
  const AMutexGuard guard(m_Lock);
  if (m_Violation.empty()) {
    m_Violation = line;
    for (const std::string& event : m_Story) {
      m_Violation += "\n    " + event;
    }
  }
}

bool Verdict::IsViolated() const {
  const AMutexGuard guard(m_Lock);
  return !m_Violation.empty();
}

std::string Verdict::Text() const {
  const AMutexGuard guard(m_Lock);
  return m_Violation;
}

std::uint64_t Verdict::Fingerprint() const {
  const AMutexGuard guard(m_Lock);
  return m_Fingerprint;
}

}  // namespace Simulation
