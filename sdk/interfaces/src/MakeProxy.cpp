#include "RequestEncoding.h"

#include <AgentInterfacesV3/INoxCommandHandler.h>
#include <AgentInterfacesV3/INoxCommandHandlerTable.h>
#include <AgentInterfacesV3/INoxScheduledTaskHandler.h>
#include <AgentInterfacesV3/INoxScheduledTaskHandlerTable.h>
#include <AgentInterfacesV3/INoxTaskScheduler.h>
#include <AgentInterfacesV3/INoxTaskSchedulerTable.h>
#include <AgentInterfacesV3/INoxVeskClientAgent.h>
#include <AgentInterfacesV3/MakeProxy.h>

#include <utility>

namespace Corvane::AgentInterfacesV3 {
namespace {

using BaseSDK::AString;

using AChannelPtr = std::shared_ptr<AMsgChannel>;

/// What all proxies have in common. Owned by its client, whose Release destroys it.
template <class Interface>
class AObjectProxy : public Interface {
 public:
  explicit AObjectProxy(AChannelPtr channel) : m_Channel(std::move(channel)) {}
  virtual ~AObjectProxy() = default;

  long Release() override {
    delete this;
    return 0;
  }
  int ObjectDebugInfo(AString& report) override {
    return ARemoteCall<INoxObjectTable, "ObjectDebugInfo", &INoxObject::ObjectDebugInfo>::On(
        Channel(), report);
  }
  int NotifyObject(long kind, long code, const AString& text) override {
    return ARemoteCall<INoxObjectTable, "NotifyObject", &INoxObject::NotifyObject>::On(
        Channel(), kind, code, text);
  }

 protected:
  AMsgChannel& Channel() const { return *m_Channel; }

 private:
  const AChannelPtr m_Channel;
};

/// INoxObject itself, which the client interfaces derive from virtually as this does.
class AAnyObject : public virtual INoxObject {
 protected:
  ~AAnyObject() = default;
};

class AClientAgentProxy final : public AObjectProxy<INoxVeskClientAgent> {
 public:
  using AObjectProxy::AObjectProxy;

  int AgentStart() override { return Call<"AgentStart", &Self::AgentStart>(); }
  int AgentStop() override { return Call<"AgentStop", &Self::AgentStop>(); }
  int AgentRefresh() override { return Call<"AgentRefresh", &Self::AgentRefresh>(); }
  int AgentQuery() override { return Call<"AgentQuery", &Self::AgentQuery>(); }
  int AgentQueryUnload() override { return Call<"AgentQueryUnload", &Self::AgentQueryUnload>(); }
  int AgentInstall() override { return Call<"AgentInstall", &Self::AgentInstall>(); }
  int AgentUninstall() override { return Call<"AgentUninstall", &Self::AgentUninstall>(); }
  int AgentUpgrade() override { return Call<"AgentUpgrade", &Self::AgentUpgrade>(); }

 private:
  using Self = INoxVeskClientAgent;

  template <AName Operation, auto Method>
  int Call() const {
    return ARemoteCall<INoxVeskClientAgentTable, Operation, Method>::On(Channel());
  }
};

class ATaskSchedulerProxy final : public AObjectProxy<INoxTaskScheduler> {
 public:
  using AObjectProxy::AObjectProxy;

  long AddTask(const AString& taskId, const AString& taskXml, AString& newTaskId) override {
    return Call<"AddTask", &Self::AddTask>(taskId, taskXml, newTaskId);
  }
  long DeleteTask(const AString& taskId) override {
    return Call<"DeleteTask", &Self::DeleteTask>(taskId);
  }
  long GetTaskXML(const AString& taskId, AString& taskXml) override {
    return Call<"GetTaskXML", &Self::GetTaskXML>(taskId, taskXml);
  }
  long FindFirstTask(unsigned long& handle, AString& taskId) override {
    return Call<"FindFirstTask", &Self::FindFirstTask>(handle, taskId);
  }
  long FindNextTask(unsigned long handle, AString& taskId) override {
    return Call<"FindNextTask", &Self::FindNextTask>(handle, taskId);
  }
  long FindClose(unsigned long handle) override {
    return Call<"FindClose", &Self::FindClose>(handle);
  }
  long RefreshTaskList() override { return Call<"RefreshTaskList", &Self::RefreshTaskList>(); }
  long SetRunState(const AString& taskId, const AString& runState) override {
    return Call<"SetRunState", &Self::SetRunState>(taskId, runState);
  }
  long GetTaskAttributes(const AString& taskId, AStringMap& attributes,
                         const AStringMap* inputAttributes) override {
    return Call<"GetTaskAttributes", &Self::GetTaskAttributes>(taskId, attributes, inputAttributes);
  }
  long EnableTask(const AString& taskIds, bool enable) override {
    return Call<"EnableTask", &Self::EnableTask>(taskIds, enable);
  }

 private:
  using Self = INoxTaskScheduler;

  template <AName Operation, auto Method, class... Arguments>
  long Call(Arguments&&... arguments) const {
    return ARemoteCall<INoxTaskSchedulerTable, Operation, Method>::On(
        Channel(), std::forward<Arguments>(arguments)...);
  }
};

class ATaskHandlerProxy final : public AObjectProxy<INoxScheduledTaskHandler> {
 public:
  using AObjectProxy::AObjectProxy;

  long RunTasks(const AString& batch) override { return Call<"RunTasks", &Self::RunTasks>(batch); }
  long RunTasksEx(const AString& batch) override {
    return Call<"RunTasksEx", &Self::RunTasksEx>(batch);
  }

 private:
  using Self = INoxScheduledTaskHandler;

  // A batch that reached nobody is one that nobody takes: any other answer would count as
  // acceptance, and the tasks' files would say Ok of runs that never were.
  template <AName Operation, auto Method>
  long Call(const AString& batch) const {
    const long result =
        ARemoteCall<INoxScheduledTaskHandlerTable, Operation, Method>::On(Channel(), batch);
    return result == CALL_NOT_DELIVERED ? TASK_HANDLER_DECLINED : result;
  }
};

class ACommandHandlerProxy final : public AObjectProxy<INoxCommandHandler> {
 public:
  using AObjectProxy::AObjectProxy;

  long GetRun(const AString& taskId, AStringMap& run) override {
    return Call<"GetRun", &Self::GetRun>(taskId, run);
  }
  long CheckJob(const AString& taskId, AString& problem) override {
    return Call<"CheckJob", &Self::CheckJob>(taskId, problem);
  }
  long PutJob(const AString& taskId, const AString& text, AString& problem) override {
    return Call<"PutJob", &Self::PutJob>(taskId, text, problem);
  }
  long GetJob(const AString& taskId, AString& text, AString& problem) override {
    return Call<"GetJob", &Self::GetJob>(taskId, text, problem);
  }
  long DeleteJob(const AString& taskId, AString& problem) override {
    return Call<"DeleteJob", &Self::DeleteJob>(taskId, problem);
  }
  long GetOutput(const AString& taskId, const AString& position, AString& text,
                 AString& next) override {
    return Call<"GetOutput", &Self::GetOutput>(taskId, position, text, next);
  }
  long StopRun(const AString& taskId) override { return Call<"StopRun", &Self::StopRun>(taskId); }

 private:
  using Self = INoxCommandHandler;

  template <AName Operation, auto Method, class... Arguments>
  long Call(Arguments&&... arguments) const {
    return ARemoteCall<INoxCommandHandlerTable, Operation, Method>::On(
        Channel(), std::forward<Arguments>(arguments)...);
  }
};

/// The pointer to `Interface` itself, as the client casts it back; owned by the client from here
/// on.
template <class Interface, class Proxy>
void* NewProxy(AChannelPtr channel) {
  Interface* const object = new Proxy(std::move(channel));
  return object;
}

struct AMaker {
  const BaseSDK::AGuid& (*m_Identifier)();
  void* (*m_Make)(AChannelPtr);
};

constexpr AMaker Makers[] = {
    {&INoxObject::GetIID, &NewProxy<INoxObject, AObjectProxy<AAnyObject>>},
    {&INoxVeskClientAgent::GetIID, &NewProxy<INoxVeskClientAgent, AClientAgentProxy>},
    {&INoxTaskScheduler::GetIID, &NewProxy<INoxTaskScheduler, ATaskSchedulerProxy>},
    {&INoxScheduledTaskHandler::GetIID, &NewProxy<INoxScheduledTaskHandler, ATaskHandlerProxy>},
    {&INoxCommandHandler::GetIID, &NewProxy<INoxCommandHandler, ACommandHandlerProxy>},
};

}  // namespace

long MakeProxy(int queue, const BaseSDK::AGuid& interfaceId, void*& object) {
  object = nullptr;
  AChannelPtr channel = AMsgChannel::Find(queue);
  if (channel == nullptr) {
    return -1;
  }
  for (const AMaker& maker : Makers) {
    if (maker.m_Identifier().Compare(interfaceId) == 0) {
      object = maker.m_Make(std::move(channel));
      return 1;
    }
  }
  return -1;
}

}  // namespace Corvane::AgentInterfacesV3
