#include "agent/daemon/plugins/Plugin.h"

#include "agent/daemon/AgentError.h"
#include "agent/daemon/config/BuiltInPlugins.h"
#include "agent/daemon/plugins/NotificationCenter.h"
#include "agent/daemon/process/AgentLog.h"

#include <BaseSDK/AThreadRest.h>

#include <algorithm>

using BaseSDK::ALogger;
using BaseSDK::AString;
using Corvane::AgentInterfacesV3::AMsgError;
using Corvane::AgentInterfacesV3::AMsgIn;
using Corvane::AgentInterfacesV3::AMsgReply;

namespace NoxAgent {
namespace {

constexpr const char* PluginSource = "Plugin";

thread_local Plugin* currentPlugin = nullptr;

// Says for whom this thread works, within a scope. Scopes nest: one plug-in calls another.
class CurrentScope {
 public:
  explicit CurrentScope(Plugin* plugin) : m_Before(currentPlugin) { currentPlugin = plugin; }
  CurrentScope(const CurrentScope&) = delete;
  CurrentScope& operator=(const CurrentScope&) = delete;
  ~CurrentScope() { currentPlugin = m_Before; }

 private:
  Plugin* const m_Before;
};

std::unique_ptr<PluginConfig> MakeConfig(const PluginSettings& settings) {
  if (!settings.m_ConfigFile.IsEmpty()) {
    return std::make_unique<PluginConfig>(settings.m_ConfigFile, settings.m_Inherited);
  }
  const BuiltInPlugin* const builtIn = BuiltInPlugin::Find(settings.m_Name);
  return std::make_unique<PluginConfig>(
      builtIn != nullptr ? builtIn->m_Config : PluginConfig::Values(), settings.m_Inherited);
}

// Which setting it refuses the plug-in alone knows, and says in the log; where it is, the agent.
AString WhereSettingsAre(const PluginConfig& config) {
  if (config.FileName().IsEmpty()) {
    return "its configuration";
  }
  const AString lines = config.LinesOfAsked();
  return lines.IsEmpty() ? config.FileName() : config.FileName() + " (" + lines + ")";
}

}  // namespace

Plugin* Plugin::Current() {
  return currentPlugin;
}

Plugin::Plugin(PluginSettings settings, int queueNumber)
    : m_Settings(std::move(settings)), m_Config(MakeConfig(m_Settings)), m_Queue(queueNumber) {
  if (!m_Queue.IsOpen()) {
    throw AgentError(AgentError::Kind::Failure,
                     AString("no message queue for the plug-in %1").Arg(Name()));
  }
}

Plugin::~Plugin() {
  if (m_Library.has_value()) {
    m_Library->Keep();
  }
}

void Plugin::Load(unsigned long milliseconds) {
  const CurrentScope scope(this);
  try {
    m_Library.emplace(m_Settings.m_Path);
    const int result = m_Library->Initialize(m_Queue.Number());
    if (result < 1) {
      throw AgentError(AgentError::Kind::Failure,
                       AString("it did not start (PluginInitialize: %1); see the log, and check "
                               "the section \"%2\" of %3")
                           .Arg(AString().SetNum(result, 'd'), PluginConfig::SectionName(),
                                WhereSettingsAre(*m_Config)));
    }
    m_Config->RefuseUnasked();
    AskForInterfaces();
  } catch (const AgentError& error) {
    if (BaseSDK::AThreadRest::WaitForAll(milliseconds)) {
      TakeDown();
    }
    throw AgentError(error.Reason(), AString("the plug-in %1: %2").Arg(Name(), error.what()));
  }
}

bool Plugin::Unload() {
  const CurrentScope scope(this);
  TakeDown();
  return !m_Library.has_value();
}

void Plugin::TakeDown() {
  if (!m_Library.has_value()) {
    return;
  }
  m_Queue.Close();
  if (m_Library->Uninitialize(true) < 1) {
    m_Library->Keep();
    return;
  }
  m_Library.reset();
}

void Plugin::Send(const AMsgIn& request) {
  const CurrentScope scope(this);
  m_Requests.fetch_add(1, std::memory_order_relaxed);
  if (request.Operation() == "NotifyObject") {
    Notify(request);
  } else {
    Answer(request);
  }
}

void Plugin::Answer(const AMsgIn& request) {
  if (m_Queue.Send(request) < 0) {
    m_Errors.fetch_add(1, std::memory_order_relaxed);
  }
}

// That tasks may run is said before the first one runs, that they are held back when none starts
// any more.
void Plugin::Notify(const AMsgIn& notification) {
  m_Notifications.fetch_add(1, std::memory_order_relaxed);
  const std::optional<TaskGate::Change> change = ChangeBy(notification);
  if (change.has_value() && change->m_MayRun) {
    ALOG(AgentLog(), ALogger::Information, PluginSource, change->m_Words);
  }
  Answer(notification);
  if (change.has_value() && !change->m_MayRun) {
    ALOG(AgentLog(), ALogger::Information, PluginSource, change->m_Words);
  }
}

std::optional<TaskGate::Change> Plugin::ChangeBy(const AMsgIn& notification) {
  const auto* const kind = notification.Find("kind");
  const auto* const text = notification.Find("text");
  if (kind == nullptr || text == nullptr) {
    return std::nullopt;
  }
  // What a plug-in subscribed to may reach it while it is loaded and its interfaces are not known
  // yet; it changes nothing.
  if (std::get<long>(*kind) == NotificationCenter::Subscribed || !Serves("INoxTaskScheduler")) {
    return std::nullopt;
  }
  return m_Gate.After(std::get<long>(*kind), std::get<AString>(*text));
}

bool Plugin::Serves(const BaseSDK::AGuid& interfaceId) const {
  return std::any_of(m_Interfaces.begin(), m_Interfaces.end(), [&](const InterfaceTable* table) {
    return BaseSDK::AGuid(table->m_Identifier) == interfaceId;
  });
}

bool Plugin::Serves(std::string_view interfaceName) const {
  return std::any_of(m_Interfaces.begin(), m_Interfaces.end(),
                     [&](const InterfaceTable* table) { return table->m_Name == interfaceName; });
}

// A request without an operation is answered before the object is touched, and the answer tells
// whether the object knows the interface.
void Plugin::AskForInterfaces() {
  for (const InterfaceTable* const table : InterfaceTable::All()) {
    AMsgReply reply;
    (void)m_Queue.Send(AMsgIn(table->m_Name, "", reply));
    if (reply.IsError() && reply.ErrorCode() == AMsgError::UnknownOperation) {
      m_Interfaces.push_back(table);
    }
  }
}

}  // namespace NoxAgent
