#pragma once

#include <BaseSDK/AString.h>

namespace NoxAgent {

/// A plug-in's shared object in memory, with the functions that every plug-in exports. One thread
/// at a time may call them.
class PluginLibrary {
 public:
  /// Loads the shared object. Throws AgentError when the file is no shared object, or not that of
  /// a plug-in.
  explicit PluginLibrary(const BaseSDK::AString& path);
  /// Unloads it. REQUIRES: the plug-in has agreed to be unloaded, or was never initialised.
  ~PluginLibrary();
  PluginLibrary(const PluginLibrary&) = delete;
  PluginLibrary& operator=(const PluginLibrary&) = delete;

  /// Creates the plug-in's object and binds it to the message queue of that number; below 1 when
  /// that fails.
  int Initialize(int queue) const { return m_Initialize(queue); }
  /// At least 1 when the object is gone; below 1 when it refuses.
  int Uninitialize(bool forced) const { return m_Uninitialize(forced); }
  /// -1 when there is no such attribute.
  int GetAttribute(const char* name, BaseSDK::AString& value) const {
    return m_GetAttribute(name, value);
  }

  /// Keeps the shared object in memory until the process ends, for a plug-in that refused to go and
  /// may still run.
  void Keep() { m_Keep = true; }

 private:
  void* Resolve(const char* function) const;

  const BaseSDK::AString m_Path;
  void* m_Handle = nullptr;
  bool m_Keep = false;
  int (*m_Initialize)(int) = nullptr;
  int (*m_Uninitialize)(bool) = nullptr;
  int (*m_GetAttribute)(const char*, BaseSDK::AString&) = nullptr;
};

}  // namespace NoxAgent
