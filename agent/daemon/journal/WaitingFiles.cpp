#include "agent/daemon/journal/WaitingFiles.h"

#include <BaseSDK/AWaitableLock.h>

#include <chrono>
#include <utility>

using BaseSDK::AMutexGuard;
using BaseSDK::AWaitableLock;

namespace NoxAgent {
namespace {

// So many changes of one moment share a flush, and yet a file is up to date within a second.
constexpr std::chrono::milliseconds PatienceWithUnsafe{200};

}  // namespace

bool WaitingFiles::Has(const std::string& name) const {
  AMutexGuard guard(m_Lock);
  return m_Waiting.contains(name);
}

std::size_t WaitingFiles::Count() const {
  AMutexGuard guard(m_Lock);
  return m_Count;
}

void WaitingFiles::Add(Files& files) {
  AMutexGuard guard(m_Lock);
  for (const WaitingFile& file : files) {
    ++m_Waiting[file.m_Record.m_Name];
    ++m_Count;
  }
  const bool isFirst = !HasUnsafe();
  m_Unsafe.splice(m_Unsafe.end(), files);
  if (isFirst) {
    m_Changed.notify_all();
  }
}

void WaitingFiles::BeginFlush() {
  AMutexGuard guard(m_Lock);
  m_HasOther = false;
}

WaitingFiles::Files WaitingFiles::TakeUnsafe() {
  AMutexGuard guard(m_Lock);
  return std::exchange(m_Unsafe, {});
}

void WaitingFiles::AddSafe(Files& files) {
  AMutexGuard guard(m_Lock);
  m_Safe.splice(m_Safe.end(), files);
  m_Changed.notify_all();
}

WaitingFiles::Files WaitingFiles::TakeSafe() {
  AMutexGuard guard(m_Lock);
  m_Taken += m_Safe.size();
  return std::exchange(m_Safe, {});
}

void WaitingFiles::Remove(const Files& files) noexcept {
  AMutexGuard guard(m_Lock);
  Forget(files);
}

void WaitingFiles::RemoveSafe(const Files& files) noexcept {
  AMutexGuard guard(m_Lock);
  Forget(files);
  m_Taken -= files.size();
}

void WaitingFiles::Forget(const Files& files) noexcept {
  for (const WaitingFile& file : files) {
    const auto found = m_Waiting.find(file.m_Record.m_Name);
    if (--found->second == 0) {
      m_Waiting.erase(found);
    }
  }
  m_Count -= files.size();
}

std::size_t WaitingFiles::CountSafe() const {
  AMutexGuard guard(m_Lock);
  return m_Safe.size() + m_Taken;
}

void WaitingFiles::NoteOther() {
  AMutexGuard guard(m_Lock);
  const bool isFirst = !HasUnsafe();
  m_HasOther = true;
  if (isFirst) {
    m_Changed.notify_all();
  }
}

bool WaitingFiles::Await() {
  AMutexGuard guard(m_Lock);
  AWaitableLock lock(m_Lock);
  while (!IsOneReady() && !HasUnsafe()) {
    m_Changed.wait(lock);
  }
  const auto end = std::chrono::steady_clock::now() + PatienceWithUnsafe;
  while (!IsOneReady() && m_Changed.wait_until(lock, end) == std::cv_status::no_timeout) {
  }
  return !m_Stopped;
}

void WaitingFiles::StopAwaiting() {
  AMutexGuard guard(m_Lock);
  m_Stopped = true;
  m_Changed.notify_all();
}

}  // namespace NoxAgent
