#pragma once

#include "Common/PluginBase.h"
#include "agent/handler/job/JobStore.h"
#include "agent/handler/run/Supervisor.h"

#include <AgentInterfacesV3/INoxCommandHandler_impl.h>
#include <AgentInterfacesV3/INoxScheduledTaskHandler_impl.h>
#include <BaseSDK/AGuid.h>
#include <BaseSDK/AString.h>

#include <functional>
#include <memory>

namespace NoxHandler {

/// The plug-in's server object: the task handler that runs commands. docs/command-handler.md
/// describes its class identifier, its configuration and its job files.
///
/// It declines every batch, because it reports the run states itself: if it accepted, the scheduler
/// would record "Ok" while the commands still run. The scheduler has recorded "Started" when it
/// hands a batch over; the handler reports "Ok" or "Failed" when the command has ended.
class CommandHandlerObject_i
    : public virtual Corvane::AgentInterfacesV3::INoxScheduledTaskHandler_impl,
      public virtual Corvane::AgentInterfacesV3::INoxCommandHandler_impl,
      public APluginBase {
 public:
  CommandHandlerObject_i();
  ~CommandHandlerObject_i() override;

  /// Hands the request to the skeleton that its interface belongs to.
  long CallMethod(const Corvane::AgentInterfacesV3::AMsgIn* request) override;

  /// INoxObject
  int ObjectDebugInfo(BaseSDK::AString& report) override;
  int NotifyObject(long kind, long code, const BaseSDK::AString& text) override;

  /// INoxScheduledTaskHandler: both start the batch's runs, return without waiting for them and
  /// decline. Entries that cannot be read are logged and left out. [any thread]
  long RunTasks(const BaseSDK::AString& batch) override;
  long RunTasksEx(const BaseSDK::AString& batch) override;

  /// INoxCommandHandler [any thread]
  long GetRun(const BaseSDK::AString& taskId, Corvane::AgentInterfacesV3::AStringMap& run) override;
  long CheckJob(const BaseSDK::AString& taskId, BaseSDK::AString& problem) override;
  long PutJob(const BaseSDK::AString& taskId, const BaseSDK::AString& text,
              BaseSDK::AString& problem) override;
  long GetJob(const BaseSDK::AString& taskId, BaseSDK::AString& text,
              BaseSDK::AString& problem) override;
  long DeleteJob(const BaseSDK::AString& taskId, BaseSDK::AString& problem) override;
  long GetOutput(const BaseSDK::AString& taskId, const BaseSDK::AString& position,
                 BaseSDK::AString& text, BaseSDK::AString& next) override;
  long StopRun(const BaseSDK::AString& taskId) override;

  /// APluginBase
  int QueryInterface(const UUID& interfaceId, void*& object) override;
  int QueryInterface(const BaseSDK::AGuid& interfaceId, void*& object) override;
  int GetVersion() override;
  int Initialize() override;
  /// Consents to an unforced unload when nothing runs. A forced one ends all runs.
  int Uninitialize(unsigned int forced) override;
  int GetAttribute(const char* name, BaseSDK::AString& value) override;

 private:
  /// 1 when `ask` has found the task's job, -1 when there is none, -2 when it cannot be reached;
  /// `problem` then says so.
  long AskJobs(const BaseSDK::AString& taskId, BaseSDK::AString& problem,
               const std::function<bool(JobStore&)>& ask);

  // Both from a successful Initialize on, until Uninitialize. [agent thread]
  std::unique_ptr<Supervisor> m_Supervisor;
  std::unique_ptr<JobStore> m_Jobs;
};

}  // namespace NoxHandler
