#include "agent/daemon/journal/FailedChanges.h"

#include <new>

using BaseSDK::AMutexGuard;

namespace NoxAgent {

void FailedChanges::Note(std::thread::id thread, const std::string& path, int error) noexcept {
  try {
    AMutexGuard guard(m_Lock);
    m_Errors[thread].emplace(path, error);
  } catch (const std::bad_alloc&) {
    // Nobody can be told; the file keeps what it has.
  }
}

FailedChanges::Errors FailedChanges::TakeOwn() {
  AMutexGuard guard(m_Lock);
  const auto found = m_Errors.find(std::this_thread::get_id());
  if (found == m_Errors.end()) {
    return {};
  }
  Errors errors = std::move(found->second);
  m_Errors.erase(found);
  return errors;
}

}  // namespace NoxAgent
