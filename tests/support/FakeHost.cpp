#include "tests/support/FakeHost.h"

#include <algorithm>
#include <ctime>

namespace TestSupport {

using BaseSDK::AGuid;
using BaseSDK::AMutexGuard;
using BaseSDK::AString;
using Corvane::AgentInterfacesV3::INoxScheduledTaskHandler;

FakeHost::FakeHost() : m_Before(AgentSDK::AHost::Replace(this)) {}

FakeHost::~FakeHost() {
  (void)AgentSDK::AHost::Replace(m_Before);
}

void FakeHost::SetConfig(const AString& section, const AString& key, const AString& value) {
  const AMutexGuard guard(m_Lock);
  m_Config[{section, key}] = value;
}

void FakeHost::AddHandler(const AString& classId, FakeHandler& handler) {
  const AMutexGuard guard(m_Lock);
  m_Handlers[classId] = &handler;
}

void FakeHost::AddNothing(const AString& classId) {
  const AMutexGuard guard(m_Lock);
  m_Handlers[classId] = nullptr;
}

void FakeHost::RemoveHandler(const AString& classId) {
  const AMutexGuard guard(m_Lock);
  m_Handlers.erase(classId);
}

void FakeHost::FailOpening(std::optional<long> result) {
  const AMutexGuard guard(m_Lock);
  m_OpenFailure = result;
}

void FakeHost::AnswerSubscribe(long result) {
  const AMutexGuard guard(m_Lock);
  m_SubscribeResult = result;
}

void FakeHost::AnswerPost(long result) {
  const AMutexGuard guard(m_Lock);
  m_PostResult = result;
}

void FakeHost::Observe(Observer observer) {
  const AMutexGuard guard(m_Lock);
  m_Observer = std::move(observer);
}

std::vector<FakeHost::Notification> FakeHost::Notifications() const {
  const AMutexGuard guard(m_Lock);
  return m_Notifications;
}

std::vector<AString> FakeHost::Texts(long code) const {
  std::vector<AString> texts;
  for (const Notification& notification : Notifications()) {
    if (notification.m_Code == code) {
      texts.push_back(notification.m_Text);
    }
  }
  return texts;
}

unsigned FakeHost::CountNotifications(long code, const AString& text) const {
  const std::vector<AString> texts = Texts(code);
  return static_cast<unsigned>(std::count(texts.begin(), texts.end(), text));
}

void FakeHost::ClearNotifications() {
  const AMutexGuard guard(m_Lock);
  m_Notifications.clear();
}

std::vector<FakeHost::Subscription> FakeHost::Subscriptions() const {
  const AMutexGuard guard(m_Lock);
  return m_Subscriptions;
}

std::vector<FakeHost::Opening> FakeHost::Openings() const {
  const AMutexGuard guard(m_Lock);
  return m_Openings;
}

long FakeHost::Subscribe(const AString& subscriber, const long* codes, unsigned count) {
  const AMutexGuard guard(m_Lock);
  m_Subscriptions.push_back({subscriber, {codes, codes + count}});
  return m_SubscribeResult;
}

long FakeHost::PostNotification(long code, const AString& text) {
  const Notification notification{code, text, std::time(nullptr)};
  Observer observer;
  long result = 0;
  {
    const AMutexGuard guard(m_Lock);
    m_Notifications.push_back(notification);
    observer = m_Observer;
    result = m_PostResult;
  }
  if (observer) {
    observer(notification);
  }
  return result;
}

AString FakeHost::GetConfigString(const AString& section, const AString& key,
                                  const AString& fallback) {
  const AMutexGuard guard(m_Lock);
  const auto found = m_Config.find({section, key});
  return found != m_Config.end() ? found->second : fallback;
}

long FakeHost::OpenObject(const AString& classId, const AGuid& interfaceId, unsigned long flags,
                          void*& object) {
  const AMutexGuard guard(m_Lock);
  const auto found = m_Handlers.find(classId);
  const bool known =
      found != m_Handlers.end() && interfaceId.Compare(INoxScheduledTaskHandler::GetIID()) == 0;
  const long result = !known ? -1 : m_OpenFailure.value_or(1);
  m_Openings.push_back({classId, interfaceId, flags, result});
  object = result < 0 ? nullptr : static_cast<INoxScheduledTaskHandler*>(found->second);
  return result;
}

std::ostream& operator<<(std::ostream& out, const FakeHost::Notification& notification) {
  return out << notification.m_Code << " '" << notification.m_Text.ToUtf8() << "' at "
             << notification.m_Time;
}

}  // namespace TestSupport
