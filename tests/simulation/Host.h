#pragma once

#include <AgentInterfacesV3/INoxScheduledTaskHandler.h>
#include <AgentSDK/AHost.h>
#include <BaseSDK/AString.h>

#include <functional>
#include <map>
#include <string>

namespace Simulation {

/// How a handler takes the batches that it is handed.
enum class Manner {
  Accepts,
  AcceptsOldWay,   ///< RunTasksEx 0, RunTasks 1
  AcceptsByError,  ///< both negative, which is acceptance
  Declines,
  DeclinesOldWay,
  IsMissing,  ///< cannot be opened
  TakesHours,
  ReportsFailure,  ///< sets the run state itself, from within the call
  Kills,           ///< the process dies as the batch arrives
};
const char* Name(Manner manner);

/// The agent of the simulated machine and its handlers. It outlives the scheduler.
class Host : public AgentSDK::AHost {
 public:
  class Observer {
   public:
    virtual ~Observer() = default;
    virtual bool IsDead() const = 0;
    virtual void OnPosted(long code, const std::string& taskId) = 0;
    virtual void OnMissing(const std::string& handlerId) = 0;
    /// A batch has come, once for both operations; answered when this returns.
    virtual void OnBatch(const std::string& handlerId, const std::string& batch, Manner manner) = 0;
  };

  explicit Host(Observer& observer);
  ~Host() override;

  void SetManner(const std::string& handlerId, Manner manner) { m_Manners[handlerId] = manner; }
  /// Whether a handler is inside a call.
  bool IsBusy() const { return m_OpenHandlers > 0; }

  long Subscribe(const BaseSDK::AString& subscriber, const long* codes, unsigned count) override;
  long PostNotification(long code, const BaseSDK::AString& text) override;
  BaseSDK::AString GetConfigString(const BaseSDK::AString& section, const BaseSDK::AString& key,
                                   const BaseSDK::AString& fallback) override;
  long OpenObject(const BaseSDK::AString& classId, const BaseSDK::AGuid& interfaceId,
                  unsigned long flags, void*& object) override;

 private:
  class Handler;

  Observer& m_Observer;
  AgentSDK::AHost* const m_Before;
  // Changed by the controller while every other thread is parked, and by the monitor; never by both
  // at once.
  std::map<std::string, Manner> m_Manners;
  int m_OpenHandlers = 0;
};

}  // namespace Simulation
