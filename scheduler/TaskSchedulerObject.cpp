// Life cycle, configuration and identification.
#include "scheduler/TaskSchedulerObject.h"

#include "Common/Log.h"
#include "Common/Notifications.h"
#include "model/Task.h"
#include "storage/TaskStorage.h"

#include <AgentInterfacesV3/InterfaceIds.h>
#include <AgentSDK/APluginMgr.h>
#include <AgentSDK/NTracker.h>

#include <cstdint>
#include <cstring>
#include <iterator>
#include <memory>

using BaseSDK::AGuid;
using BaseSDK::AString;
using namespace Corvane::AgentInterfacesV3;

namespace {

constexpr long SubscribedCodes[] = {Nox::SecondEvent, Nox::FirstEvent};
constexpr int FrameVersion = 3;

void Subscribe() {
  if (AgentSDK::NTracker::Subscribe(L"Corvane.NoxTaskScheduler", SubscribedCodes,
                                    static_cast<unsigned>(std::size(SubscribedCodes))) < 1) {
    PLUGIN_LOG(Scheduler, Error,
               L"TaskSchedulerObject_i::Initialize(), failed to subscribe to notifications");
  }
}

AString ConfiguredText(const wchar_t* key) {
  const AgentSDK::APluginMgr manager;
  return manager.GetConfigString(L"Configuration", key, L"");
}

}  // namespace

TaskSchedulerObject_i::TaskSchedulerObject_i() : m_MonitorThread(this, L"") {}

TaskSchedulerObject_i::~TaskSchedulerObject_i() {
  PLUGIN_LOG(Scheduler, Trace, L"TaskSchedulerObject_i destructor.\n");
}

int TaskSchedulerObject_i::Initialize() {
  PLUGIN_LOG(Scheduler, Trace, L"TaskSchedulerObject_i::Initialize()\n");
  Subscribe();
  const AString path = ConfiguredText(L"task_storage_path");
  const AString extension = ConfiguredText(L"task_file_extension");
  // Kept on purpose: the storage's own defaults are never reached from here. A configuration that
  // lacks a key is a mistake, and tasks must not be looked for in a place nobody chose.
  if (path.IsEmpty() || extension.IsEmpty()) {
    return -1;
  }
  m_Storage = std::make_unique<CTaskStorage>(path, extension);
  return m_MonitorThread.Start() ? 1 : -1;
}

int TaskSchedulerObject_i::Uninitialize(unsigned int forced) {
  if (forced == 0) {
    return -1;
  }
  PLUGIN_LOG(Scheduler, Trace, L"TaskSchedulerObject_i::Uninitialize()\n");
  // A monitor that does not end is logged and left running. The agent insists on unloading, so the
  // rest goes on.
  (void)m_MonitorThread.Shutdown();
  m_Storage.reset();
  return 1;
}

int TaskSchedulerObject_i::AgentStart() {
  PLUGIN_LOG(Scheduler, Trace, L"TaskSchedulerObject_i::AgentStart()\n");
  return 1;
}

int TaskSchedulerObject_i::AgentStop() {
  PLUGIN_LOG(Scheduler, Trace, L"TaskSchedulerObject_i::AgentStop()\n");
  return 1;
}

int TaskSchedulerObject_i::AgentRefresh() {
  PLUGIN_LOG(Scheduler, Trace, L"TaskSchedulerObject_i::AgentRefresh()\n");
  return 1;
}

int TaskSchedulerObject_i::AgentQuery() {
  return 1;
}

int TaskSchedulerObject_i::AgentQueryUnload() {
  return 0;
}

int TaskSchedulerObject_i::AgentInstall() {
  return 0;
}

int TaskSchedulerObject_i::AgentUninstall() {
  return 0;
}

int TaskSchedulerObject_i::AgentUpgrade() {
  return 0;
}

int TaskSchedulerObject_i::GetVersion() {
  return FrameVersion;
}

int TaskSchedulerObject_i::GetAttribute(const char* name, AString& value) {
  if (std::strcmp(name, "InterfaceFactory") != 0) {
    return -1;
  }
  const auto address = reinterpret_cast<std::uintptr_t>(static_cast<INoxInterfaceFactory*>(this));
  value.SetNum(static_cast<unsigned long>(address), 'x');
  return 1;
}

int TaskSchedulerObject_i::QueryInterface(const UUID& /*interfaceId*/, void*& object) {
  object = nullptr;
  return -1;
}

int TaskSchedulerObject_i::QueryInterface(const AGuid& interfaceId, void*& object) {
  object = nullptr;
  if (interfaceId.Compare(IID_INoxTaskScheduler) == 0) {
    object = static_cast<INoxTaskScheduler_impl*>(this);
  } else if (interfaceId.Compare(IID_INoxVeskClientAgent) == 0) {
    object = static_cast<INoxVeskClientAgent_impl*>(this);
  } else if (interfaceId.Compare(IID_INoxObject) == 0) {
    object = static_cast<INoxObject_impl*>(this);
  }
  return object == nullptr ? -1 : 0;
}
