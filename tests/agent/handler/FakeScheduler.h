#pragma once

#include <AgentInterfacesV3/INoxTaskScheduler.h>
#include <AgentSDK/AHost.h>
#include <BaseSDK/AString.h>

#include <condition_variable>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <vector>

namespace NoxHandlerTest {

/// The agent and its task scheduler, as the command handler sees them: it is the process's host
/// while it lives, knows the tasks it was given, and remembers the states it was told. Any thread.
class FakeScheduler : public AgentSDK::AHost, public Corvane::AgentInterfacesV3::INoxTaskScheduler {
 public:
  FakeScheduler();
  virtual ~FakeScheduler();

  void AddStoredTask(const std::string& taskId, const std::string& xml = "<Task/>");
  void RemoveTask(const std::string& taskId);
  /// Whether tasks are in the scheduler's memory; those that are not cannot be told a state.
  void HoldTasks(bool hold);
  void SetConfig(const std::string& key, const std::string& value);
  void ForgetConfig(const std::string& key);
  /// Called whenever a task's document is asked for, on the thread that asks.
  void OnQuestion(std::function<void()> call);
  /// Called whenever a state is told, before it counts as told, on the thread that tells it.
  void OnState(std::function<void()> call);
  /// Whether the scheduler's object can be opened.
  void BeThere(bool there);

  /// The states told so far, as "ID State", in order.
  std::vector<std::string> States() const;
  /// Waits until so many were told; those told, whatever came of the wait.
  std::vector<std::string> WaitForStates(std::size_t count) const;
  /// Waits until a state was offered so often, taken or not.
  bool WaitForOffers(std::size_t count) const;

  /// AHost
  long Subscribe(const BaseSDK::AString&, const long*, unsigned) override { return 1; }
  long PostNotification(long, const BaseSDK::AString&) override { return 1; }
  BaseSDK::AString GetConfigString(const BaseSDK::AString& section, const BaseSDK::AString& key,
                                   const BaseSDK::AString& fallback) override;
  long OpenObject(const BaseSDK::AString& classId, const BaseSDK::AGuid& interfaceId,
                  unsigned long flags, void*& object) override;

  /// INoxTaskScheduler: what handlers use.
  long SetRunState(const BaseSDK::AString& taskId, const BaseSDK::AString& state) override;
  long GetTaskXML(const BaseSDK::AString& taskId, BaseSDK::AString& taskXml) override;
  long Release() override { return 0; }
  int ObjectDebugInfo(BaseSDK::AString&) override { return 1; }
  int NotifyObject(long, long, const BaseSDK::AString&) override { return 0; }
  long AddTask(const BaseSDK::AString&, const BaseSDK::AString&, BaseSDK::AString&) override {
    return -1;
  }
  long DeleteTask(const BaseSDK::AString&) override { return -1; }
  long FindFirstTask(unsigned long&, BaseSDK::AString&) override { return -1; }
  long FindNextTask(unsigned long, BaseSDK::AString&) override { return -1; }
  long FindClose(unsigned long) override { return 0; }
  long RefreshTaskList() override { return 1; }
  long GetTaskAttributes(const BaseSDK::AString&, Corvane::AgentInterfacesV3::AStringMap&,
                         const Corvane::AgentInterfacesV3::AStringMap*) override {
    return -1;
  }
  long EnableTask(const BaseSDK::AString&, bool) override { return -1; }

 private:
  AgentSDK::AHost* const m_Before;
  mutable std::mutex m_Lock;
  mutable std::condition_variable m_Changed;
  std::map<std::string, std::string> m_Tasks;
  std::map<std::string, std::string> m_Config;
  std::vector<std::string> m_States;
  std::function<void()> m_OnQuestion;
  std::function<void()> m_OnState;
  std::size_t m_Offers = 0;
  bool m_Holds = true;
  bool m_IsThere = true;
};

}  // namespace NoxHandlerTest
