#include "agent/daemon/plugins/PluginLifecycle.h"

#include "agent/daemon/AgentError.h"
#include "agent/daemon/process/AgentLog.h"
#include "agent/daemon/process/Directories.h"

#include <BaseSDK/AFile.h>
#include <BaseSDK/AResult.h>
#include <BaseSDK/AThreadRest.h>

#include <algorithm>
#include <cstring>
#include <optional>

using BaseSDK::AFile;
using BaseSDK::ALogger;
using BaseSDK::AString;
using Corvane::AgentInterfacesV3::AMsgIn;
using Corvane::AgentInterfacesV3::AMsgReply;

namespace NoxAgent {
namespace {

constexpr const char* PluginLifecycleSource = "PluginLifecycle";

AString Decimal(unsigned long value) {
  return AString().SetNum(value, 'u');
}

}  // namespace

PluginLifecycle::PluginLifecycle(Plugins& plugins, NotificationCenter& notifications,
                                 PluginHost& host, HandlerCalls& handlerCalls,
                                 EnumerationHandles& handles, TaskStore& store,
                                 unsigned long drainMilliseconds)
    : m_Plugins(plugins),
      m_Notifications(notifications),
      m_Host(host),
      m_HandlerCalls(handlerCalls),
      m_Handles(handles),
      m_Store(store),
      m_DrainMilliseconds(drainMilliseconds) {}

void PluginLifecycle::LoadAll(const Settings& settings) {
  Plugins::List plugins;
  for (const PluginSettings& plugin : settings.m_Plugins) {
    plugins.push_back(Make(plugin, settings));
  }
  // The end of one registration is told after the beginning of the next. A scheduler runs tasks
  // whenever no registration is under way, and would find handlers missing in between.
  const Plugin* arrived = nullptr;
  for (const auto& plugin : plugins) {
    m_Notifications.Tell(NotificationCenter::RegistrationStarted, plugin->Name());
    if (arrived != nullptr) {
      m_Notifications.Tell(NotificationCenter::RegistrationFinished, arrived->Name(), arrived);
    }
    Load(plugin);
    arrived = plugin.get();
  }
  if (arrived != nullptr) {
    m_Notifications.Tell(NotificationCenter::RegistrationFinished, arrived->Name(), arrived);
  }
  CallAll(plugins, "AgentStart");
  m_Notifications.Tell(NotificationCenter::StartUpFinished, {});
}

std::shared_ptr<Plugin> PluginLifecycle::Make(const PluginSettings& settings, const Settings& all) {
  auto plugin = std::make_shared<Plugin>(settings, ++m_LastQueue);
  PrepareTaskDirectory(*plugin, all);
  return plugin;
}

void PluginLifecycle::Load(const std::shared_ptr<Plugin>& plugin) {
  m_Host.SetInitialising(plugin);
  try {
    plugin->Load(m_DrainMilliseconds);
  } catch (const AgentError&) {
    m_Host.SetInitialising(nullptr);
    throw;
  }
  m_Host.SetInitialising(nullptr);
  m_Plugins.Add(plugin);
  ALOG(AgentLog(), ALogger::Information, PluginLifecycleSource,
       AString("Loaded the plug-in %1 from %2").Arg(plugin->Name(), plugin->Settings().m_Path));
}

// The scheduler takes it for granted that its directory is there and in order, and has no way to
// say that it is not.
void PluginLifecycle::PrepareTaskDirectory(Plugin& plugin, const Settings& settings) {
  const AString directory = settings.Resolve(plugin.Config().Peek("task_storage_path"));
  if (directory.IsEmpty()) {
    return;
  }
  Directories::Make(directory, Directories::Private);
  unsigned removed = 0;
  const unsigned long result = AFile::RemoveLeftovers(directory, removed);
  if (result != 0) {
    ALOG(AgentLog(), ALogger::Warning, PluginLifecycleSource,
         AString("Cannot clear %1 of what was left by a crash: %2")
             .Arg(directory, std::strerror(BaseSDK::ErrnoFromResult(result))));
  } else if (removed > 0) {
    ALOG(AgentLog(), ALogger::Notice, PluginLifecycleSource,
         AString("Removed %1 temporary files from %2, left by a crash")
             .Arg(Decimal(removed), directory));
  }
  const AString extension = plugin.Config().Peek("task_file_extension");
  m_Store.Guard({plugin.Name(), directory, extension.IsEmpty() ? AString(".vsk") : extension,
                 settings.m_StateDir + "/var/refused", settings.m_StateDir + "/var/journal"});
}

void PluginLifecycle::Refresh(const std::function<void()>& readAgain) {
  m_Notifications.Tell(NotificationCenter::RefreshStarted, {});
  std::optional<AgentError> firstError;
  const auto attempt = [&](const std::function<void()>& read) {
    try {
      read();
    } catch (const AgentError& error) {
      firstError = firstError.value_or(error);
    }
  };
  const Plugins::List plugins = m_Plugins.All();
  attempt(readAgain);
  for (const auto& plugin : plugins) {
    attempt([&] { plugin->Config().Reload(); });
  }
  CallAll(plugins, "AgentRefresh");
  m_Notifications.Tell(NotificationCenter::RefreshFinished, {});
  if (firstError.has_value()) {
    throw AgentError(*firstError);
  }
}

bool PluginLifecycle::UnloadAll() {
  Plugins::List plugins = m_Plugins.All();
  std::reverse(plugins.begin(), plugins.end());
  // Every plug-in is told that every plug-in is being unloaded, itself included. A scheduler never
  // hears of the end of its own unloading, so it starts nothing any more, in whatever order they
  // go.
  for (const auto& plugin : plugins) {
    m_Notifications.Tell(NotificationCenter::UnregistrationStarted, plugin->Name());
  }
  CallAll(plugins, "AgentStop");
  m_Handles.CloseAll();
  // These waits come before the first plug-in is unloaded: a scheduler may have recorded runs and
  // be about to open the handlers for them.
  return WaitForHandlers() && WaitForThreads() &&
         std::all_of(plugins.begin(), plugins.end(),
                     [this](const auto& plugin) { return Unload(plugin); });
}

bool PluginLifecycle::WaitForHandlers() {
  if (m_HandlerCalls.WaitUntilNone(m_DrainMilliseconds)) {
    return true;
  }
  ALOG(AgentLog(), ALogger::Error, PluginLifecycleSource,
       AString("A task handler has not come back within %1 ms: ending without unloading the "
               "plug-ins that are left")
           .Arg(Decimal(m_DrainMilliseconds)));
  return false;
}

// A scheduler gives its thread a few seconds to end, and then it is gone, whatever the thread does.
// Recording a batch of runs may take longer than that.
bool PluginLifecycle::WaitForThreads() {
  if (BaseSDK::AThreadRest::WaitForAll(m_DrainMilliseconds)) {
    return true;
  }
  ALOG(AgentLog(), ALogger::Error, PluginLifecycleSource,
       AString("A thread of a plug-in has not come to rest within %1 ms: ending without unloading "
               "the plug-ins that are left")
           .Arg(Decimal(m_DrainMilliseconds)));
  return false;
}

bool PluginLifecycle::Unload(const std::shared_ptr<Plugin>& plugin) {
  // First nobody can open its object any more. Then the open handlers are waited for, then its
  // queue is closed, then its threads are waited for once more: the hourly load may have begun
  // since all threads were at rest.
  m_Plugins.Remove(*plugin);
  if (!WaitForHandlers()) {
    return false;
  }
  if (!plugin->CloseQueue(m_DrainMilliseconds)) {
    ALOG(AgentLog(), ALogger::Error, PluginLifecycleSource,
         AString("A request to the plug-in %1 has not come back within %2 ms: ending without "
                 "unloading it")
             .Arg(plugin->Name(), Decimal(m_DrainMilliseconds)));
    return false;
  }
  if (!WaitForThreads()) {
    return false;
  }
  if (!plugin->Unload()) {
    ALOG(AgentLog(), ALogger::Error, PluginLifecycleSource,
         AString("The plug-in %1 refuses to be unloaded: ending without unloading it")
             .Arg(plugin->Name()));
    return false;
  }
  m_Notifications.Tell(NotificationCenter::UnregistrationFinished, plugin->Name());
  ALOG(AgentLog(), ALogger::Information, PluginLifecycleSource,
       AString("Unloaded the plug-in %1").Arg(plugin->Name()));
  return true;
}

void PluginLifecycle::CallAll(const Plugins::List& plugins, const char* operation) {
  for (const auto& plugin : plugins) {
    if (plugin->Serves("INoxVeskClientAgent")) {
      AMsgReply reply;
      plugin->Send(AMsgIn("INoxVeskClientAgent", operation, reply));
    }
  }
}

}  // namespace NoxAgent
