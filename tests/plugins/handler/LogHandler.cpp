// The smallest task handler: it logs the tasks that are due, and takes each for done. Start here
// when tasks are to do something of your own; docs/plugins.md explains the steps.
#include "Common/PluginBase.h"

#include <AgentInterfacesV3/INoxScheduledTaskHandler_impl.h>
#include <AgentInterfacesV3/InterfaceIds.h>
#include <BaseSDK/ALogger.h>
#include <BaseSDK/AStringTokenizer.h>
#include <BaseSDK/AUrl.h>

#include <cstdint>
#include <cstring>
#include <new>

using namespace Corvane::AgentInterfacesV3;
using BaseSDK::AGuid;
using BaseSDK::ALogger;
using BaseSDK::AString;
using BaseSDK::AStringTokenizer;

class LogHandler_i : public virtual INoxScheduledTaskHandler_impl, public APluginBase {
 public:
  // What the scheduler asks for, on its own thread: the tasks that are due.
  long RunTasksEx(const AString& batch) override {
    const AStringTokenizer entries(batch, L";");
    for (std::size_t i = 0; i < entries.Count(); ++i) {
      Run(AStringTokenizer(entries.Token(i), L":"));
    }
    return 1;  // accepted: the scheduler records "Ok" for every one of them
  }
  long RunTasks(const AString& batch) override { return RunTasksEx(batch); }

  // What the agent asks for.
  int ObjectDebugInfo(AString& report) override {
    report = L"Logs tasks.\n";
    return 1;
  }
  int NotifyObject(long /*kind*/, long /*code*/, const AString& /*text*/) override { return 0; }
  int Initialize() override { return 1; }
  int Uninitialize(unsigned int /*forced*/) override { return 1; }
  int GetVersion() override { return 3; }
  int GetAttribute(const char* name, AString& value) override {
    if (std::strcmp(name, "InterfaceFactory") != 0) {
      return -1;
    }
    INoxInterfaceFactory* const factory = this;
    value.SetNum(static_cast<unsigned long>(reinterpret_cast<std::uintptr_t>(factory)), 'x');
    return 1;
  }
  int QueryInterface(const UUID& interfaceId, void*& object) override {
    return QueryInterface(AGuid(interfaceId), object);
  }
  int QueryInterface(const AGuid& interfaceId, void*& object) override {
    object = nullptr;
    if (interfaceId == IID_INoxScheduledTaskHandler) {
      object = static_cast<INoxScheduledTaskHandler_impl*>(this);
    }
    if (interfaceId == IID_INoxObject) {
      object = static_cast<INoxObject_impl*>(this);
    }
    return object == nullptr ? -1 : 0;
  }

 private:
  // ID, late, never run, kill at end.
  static void Run(const AStringTokenizer& entry) {
    const AString lateness = entry.Token(1) == AString(L"1") ? L", late" : L"";
    ALOG(ALogger::GetLogger("Example::LogHandler"), ALogger::Information, "LogHandler",
         AString(L"Task %1 is due%2").Arg(BaseSDK::AUrl::Decode(entry.Token(0)), lateness));
  }
};

APluginBase* PluginMain() {
  return new (std::nothrow) LogHandler_i;
}
