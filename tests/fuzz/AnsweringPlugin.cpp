// A plug-in whose object serves the interfaces of the scheduler and of the command handler, and
// answers with what it is given.
#include "Common/PluginBase.h"

#include <AgentInterfacesV3/INoxCommandHandlerTable.h>
#include <AgentInterfacesV3/INoxCommandHandler_impl.h>
#include <AgentInterfacesV3/INoxTaskScheduler_impl.h>

#include <new>

using namespace Corvane::AgentInterfacesV3;
using BaseSDK::AString;

namespace {

class AnsweringObject_i : public INoxTaskScheduler_impl,
                          public INoxCommandHandler_impl,
                          public APluginBase {
 public:
  long CallMethod(const AMsgIn* request) override {
    return request->Interface() == INoxCommandHandlerTable.m_Name
               ? INoxCommandHandler_impl::CallMethod(request)
               : INoxTaskScheduler_impl::CallMethod(request);
  }

  int Initialize() override { return 1; }
  int Uninitialize(unsigned int /*forced*/) override { return 1; }
  int GetAttribute(const char* /*name*/, AString& /*value*/) override { return -1; }
  int GetVersion() override { return 3; }
  int QueryInterface(const UUID& /*interfaceId*/, void*& /*object*/) override { return -1; }
  int QueryInterface(const BaseSDK::AGuid& /*interfaceId*/, void*& /*object*/) override {
    return -1;
  }

  int ObjectDebugInfo(AString& report) override {
    report = "report";
    return 1;
  }
  int NotifyObject(long kind, long /*code*/, const AString& /*text*/) override {
    return static_cast<int>(kind);
  }
  int AgentStart() override { return 1; }
  int AgentStop() override { return 1; }
  int AgentRefresh() override { return 1; }
  int AgentQuery() override { return 1; }
  int AgentQueryUnload() override { return 1; }
  int AgentInstall() override { return 1; }
  int AgentUninstall() override { return 1; }
  int AgentUpgrade() override { return 1; }

  long AddTask(const AString& taskId, const AString& /*taskXml*/, AString& newTaskId) override {
    newTaskId = taskId;
    return 1;
  }
  long DeleteTask(const AString& /*taskId*/) override { return -1; }
  long GetTaskXML(const AString& taskId, AString& taskXml) override {
    taskXml = taskId;
    return 1;
  }
  long FindFirstTask(unsigned long& handle, AString& taskId) override {
    handle = 7;
    taskId = "first";
    return 1;
  }
  long FindNextTask(unsigned long /*handle*/, AString& /*taskId*/) override { return 0; }
  long FindClose(unsigned long /*handle*/) override { return 1; }
  long RefreshTaskList() override { return 1; }
  long SetRunState(const AString& /*taskId*/, const AString& /*runState*/) override { return 1; }
  long GetTaskAttributes(const AString& /*taskId*/, AStringMap& attributes,
                         const AStringMap* inputAttributes) override {
    if (inputAttributes != nullptr) {
      attributes = *inputAttributes;
    }
    return 1;
  }
  long EnableTask(const AString& /*taskIds*/, bool enable) override { return enable ? 1 : -1; }

  long GetRun(const AString& taskId, AStringMap& run) override {
    run = {{"state", taskId}};
    return 1;
  }
  long CheckJob(const AString& taskId, AString& problem) override {
    problem = taskId;
    return -1;
  }
  long PutJob(const AString& /*taskId*/, const AString& text, AString& problem) override {
    problem = text;
    return -1;
  }
  long GetJob(const AString& taskId, AString& text, AString& problem) override {
    text = taskId;
    problem = taskId;
    return 1;
  }
  long DeleteJob(const AString& taskId, AString& problem) override {
    problem = taskId;
    return -2;
  }
  long GetOutput(const AString& taskId, const AString& position, AString& text,
                 AString& next) override {
    text = taskId;
    next = position;
    return 1;
  }
  long StopRun(const AString& /*taskId*/) override { return -1; }
};

}  // namespace

APluginBase* PluginMain() {
  return new (std::nothrow) AnsweringObject_i;
}
