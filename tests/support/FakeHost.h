#pragma once

#include "tests/support/FakeHandler.h"

#include <AgentSDK/AHost.h>
#include <BaseSDK/AGuid.h>
#include <BaseSDK/AMutex.h>
#include <BaseSDK/AString.h>
#include <BaseSDK/ThreadAnnotations.h>

#include <functional>
#include <map>
#include <optional>
#include <ostream>
#include <utility>
#include <vector>

namespace TestSupport {

/// The agent in a test: it is in place as the process's host while it lives, remembers what it was
/// asked, and delivers nothing. May be used from any thread.
class FakeHost : public AgentSDK::AHost {
 public:
  struct Notification {
    long m_Code;
    BaseSDK::AString m_Text;
    long m_Time;  ///< by time()

    bool operator==(const Notification&) const = default;
  };
  struct Subscription {
    BaseSDK::AString m_Subscriber;
    std::vector<long> m_Codes;
  };
  struct Opening {
    BaseSDK::AString m_ClassId;
    BaseSDK::AGuid m_InterfaceId;
    unsigned long m_Flags;
    long m_Result;
  };
  /// Is called with each notification when it is posted, on that thread and under its locks.
  using Observer = std::function<void(const Notification&)>;

  FakeHost();
  ~FakeHost() override;

  void SetConfig(const BaseSDK::AString& section, const BaseSDK::AString& key,
                 const BaseSDK::AString& value);
  /// `handler` is what opening this class identifier gives from now on; borrowed. An identifier
  /// that was never added does not open.
  void AddHandler(const BaseSDK::AString& classId, FakeHandler& handler);
  /// Opening this class identifier succeeds from now on, and gives no object.
  void AddNothing(const BaseSDK::AString& classId);
  void RemoveHandler(const BaseSDK::AString& classId);
  /// While this is set, opening a known class identifier fails too, with this negative result.
  void FailOpening(std::optional<long> result);
  void AnswerSubscribe(long result);
  void AnswerPost(long result);
  void Observe(Observer observer);

  std::vector<Notification> Notifications() const;
  /// The texts of those with this code, in order.
  std::vector<BaseSDK::AString> Texts(long code) const;
  unsigned CountNotifications(long code, const BaseSDK::AString& text) const;
  void ClearNotifications();
  std::vector<Subscription> Subscriptions() const;
  std::vector<Opening> Openings() const;

  long Subscribe(const BaseSDK::AString& subscriber, const long* codes, unsigned count) override;
  long PostNotification(long code, const BaseSDK::AString& text) override;
  BaseSDK::AString GetConfigString(const BaseSDK::AString& section, const BaseSDK::AString& key,
                                   const BaseSDK::AString& fallback) override;
  long OpenObject(const BaseSDK::AString& classId, const BaseSDK::AGuid& interfaceId,
                  unsigned long flags, void*& object) override;

 private:
  AgentSDK::AHost* const m_Before;

  mutable BaseSDK::AMutex m_Lock;
  std::map<std::pair<BaseSDK::AString, BaseSDK::AString>, BaseSDK::AString> m_Config
      NOX_GUARDED_BY(m_Lock);
  std::map<BaseSDK::AString, FakeHandler*> m_Handlers NOX_GUARDED_BY(m_Lock);
  std::vector<Notification> m_Notifications NOX_GUARDED_BY(m_Lock);
  std::vector<Subscription> m_Subscriptions NOX_GUARDED_BY(m_Lock);
  std::vector<Opening> m_Openings NOX_GUARDED_BY(m_Lock);
  Observer m_Observer NOX_GUARDED_BY(m_Lock);
  std::optional<long> m_OpenFailure NOX_GUARDED_BY(m_Lock);
  long m_SubscribeResult NOX_GUARDED_BY(m_Lock) = 1;
  long m_PostResult NOX_GUARDED_BY(m_Lock) = 1;
};

std::ostream& operator<<(std::ostream& out, const FakeHost::Notification& notification);

}  // namespace TestSupport
