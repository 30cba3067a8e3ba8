#include "tests/agent/handler/FakeScheduler.h"

#include "agent/Protocol.h"

#include <chrono>
#include <utility>

using BaseSDK::AGuid;
using BaseSDK::AString;
using Corvane::AgentInterfacesV3::INoxTaskScheduler;

namespace NoxHandlerTest {

namespace {

constexpr const char* ClassId = NoxAgent::SchedulerClassId;
// How long a test waits for what has to come; only a failing one waits so long.
constexpr std::chrono::seconds Patience{120};

}  // namespace

FakeScheduler::FakeScheduler() : m_Before(AHost::Replace(this)) {}

FakeScheduler::~FakeScheduler() {
  (void)AHost::Replace(m_Before);
}

void FakeScheduler::AddStoredTask(const std::string& taskId, const std::string& xml) {
  const std::lock_guard lock(m_Lock);
  m_Tasks[taskId] = xml;
}

void FakeScheduler::RemoveTask(const std::string& taskId) {
  const std::lock_guard lock(m_Lock);
  m_Tasks.erase(taskId);
}

void FakeScheduler::HoldTasks(bool hold) {
  const std::lock_guard lock(m_Lock);
  m_Holds = hold;
}

void FakeScheduler::SetConfig(const std::string& key, const std::string& value) {
  const std::lock_guard lock(m_Lock);
  m_Config[key] = value;
}

void FakeScheduler::ForgetConfig(const std::string& key) {
  const std::lock_guard lock(m_Lock);
  m_Config.erase(key);
}

void FakeScheduler::OnQuestion(std::function<void()> call) {
  const std::lock_guard lock(m_Lock);
  m_OnQuestion = std::move(call);
}

void FakeScheduler::OnState(std::function<void()> call) {
  const std::lock_guard lock(m_Lock);
  m_OnState = std::move(call);
}

void FakeScheduler::BeThere(bool there) {
  const std::lock_guard lock(m_Lock);
  m_IsThere = there;
}

std::vector<std::string> FakeScheduler::States() const {
  const std::lock_guard lock(m_Lock);
  return m_States;
}

std::vector<std::string> FakeScheduler::WaitForStates(std::size_t count) const {
  std::unique_lock lock(m_Lock);
  (void)m_Changed.wait_for(lock, Patience, [&] { return m_States.size() >= count; });
  return m_States;
}

bool FakeScheduler::WaitForOffers(std::size_t count) const {
  std::unique_lock lock(m_Lock);
  return m_Changed.wait_for(lock, Patience, [&] { return m_Offers >= count; });
}

AString FakeScheduler::GetConfigString(const AString& section, const AString& key,
                                       const AString& fallback) {
  const std::lock_guard lock(m_Lock);
  const auto found = m_Config.find(key.ToUtf8());
  return section == AString("Configuration") && found != m_Config.end()
             ? AString(found->second.c_str())
             : fallback;
}

long FakeScheduler::OpenObject(const AString& classId, const AGuid& interfaceId, unsigned long,
                               void*& object) {
  const std::lock_guard lock(m_Lock);
  object = nullptr;
  ++m_Offers;
  m_Changed.notify_all();
  if (!m_IsThere || classId != AString(ClassId) || !(interfaceId == INoxTaskScheduler::GetIID())) {
    return -1;
  }
  object = static_cast<INoxTaskScheduler*>(this);
  return 1;
}

long FakeScheduler::SetRunState(const AString& taskId, const AString& state) {
  std::unique_lock lock(m_Lock);
  if (const std::function<void()> call = m_OnState) {
    lock.unlock();
    call();
    lock.lock();
  }
  if (!m_Holds || !m_Tasks.contains(taskId.ToUtf8())) {
    return 1;
  }
  m_States.push_back(taskId.ToUtf8() + " " + state.ToUtf8());
  m_Changed.notify_all();
  return 0;
}

long FakeScheduler::GetTaskXML(const AString& taskId, AString& taskXml) {
  std::unique_lock lock(m_Lock);
  if (const std::function<void()> call = m_OnQuestion) {
    lock.unlock();
    call();
    lock.lock();
  }
  const auto found = m_Tasks.find(taskId.ToUtf8());
  if (found == m_Tasks.end()) {
    return -1;
  }
  taskXml = AString(found->second.c_str());
  return 1;
}

}  // namespace NoxHandlerTest
