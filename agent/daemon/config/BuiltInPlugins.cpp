#include "agent/daemon/config/BuiltInPlugins.h"

namespace NoxAgent {

std::span<const BuiltInPlugin> BuiltInPlugin::All() {
  static const BuiltInPlugin plugins[] = {
      {"scheduler",
       "NoxTaskScheduler.so",
       "{5E0C8B0E-8A57-4D0B-9A7B-0B6E6F1D2A31}",
       {{"task_storage_path", "%installdir%/var/tasks"}, {"task_file_extension", ".vsk"}}},
      {"command",
       "CommandHandler.so",
       "{7C0A1D52-3B4E-4F6A-9A51-2D8E6C9B4F10}",
       {{"job_path", "%installdir%/var/jobs"}, {"output_path", "%installdir%/var/output"}}},
  };
  return plugins;
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
