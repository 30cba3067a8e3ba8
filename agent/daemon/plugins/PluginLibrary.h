#pragma once

#include <BaseSDK/AString.h>

namespace NoxAgent {

/// A plug-in's shared object in memory and the four functions that every plug-in exports.
class PluginLibrary {
 public:
  /// Loads the shared object. Throws AgentError that says why it is none or no plug-in's.
  explicit PluginLibrary(const BaseSDK::AString& path);
  /// Unloads it. REQUIRES: the plug-in has agreed to be unloaded, or was never initialised.
  ~PluginLibrary();
  PluginLibrary(const PluginLibrary&) = delete;
  PluginLibrary& operator=(const PluginLibrary&) = delete;

  /// Creates the plug-in's object and binds it to the message queue of that number: 1 on success.
  /// This and the others: one at a time, from one thread.
  int Initialize(int queue) const { return m_Initialize(queue); }
  /// At least 1 when the object is gone; below 1 when it refuses.
  int Uninitialize(bool forced) const { return m_Uninitialize(forced); }
  /// -1 when there is no such attribute.
  int GetAttribute(const char* name, BaseSDK::AString& value) const {
    return m_GetAttribute(name, value);
  }

  /// From now on the shared object stays in memory until the process ends: a plug-in that would not
  /// go may still run.
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
