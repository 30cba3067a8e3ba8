#include "agent/daemon/config/BuiltInPlugins.h"

#include "agent/Protocol.h"

namespace NoxAgent {

std::span<const BuiltInPlugin> BuiltInPlugin::All() {
  static const BuiltInPlugin Plugins[] = {
      {"scheduler",
       "NoxTaskScheduler.so",
       SchedulerClassId,
       {{"task_storage_path", "%installdir%/var/tasks"}, {"task_file_extension", ".vsk"}}},
      {"command",
       "CommandHandler.so",
       CommandHandlerClassId,
       {{"job_path", "%installdir%/var/jobs"}, {"output_path", "%installdir%/var/output"}}},
  };
  return Plugins;
}

const BuiltInPlugin* BuiltInPlugin::Find(const BaseSDK::AString& name) {
  for (const BuiltInPlugin& plugin : All()) {
    if (plugin.m_Name == name) {
      return &plugin;
    }
  }
  return nullptr;
}

}  // namespace NoxAgent
