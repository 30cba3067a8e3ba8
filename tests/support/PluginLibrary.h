#pragma once

#include <BaseSDK/AString.h>

#include <string>
#include <vector>

class INoxInterfaceFactory;

namespace TestSupport {

/// A plug-in as the agent sees it: a shared object and the functions found in it by name. Loads in
/// the constructor, which throws with the loader's reason, and unloads in the destructor.
class PluginLibrary {
 public:
  explicit PluginLibrary(const std::string& path);
  PluginLibrary(const PluginLibrary&) = delete;
  PluginLibrary& operator=(const PluginLibrary&) = delete;
  ~PluginLibrary();

  int Initialize(int queue) const { return m_Initialize(queue); }
  int Uninitialize(bool forced) const { return m_Uninitialize(forced); }
  int GetAttribute(const char* name, BaseSDK::AString& value) const {
    return m_GetAttribute(name, value);
  }
  /// From the attribute; null when it has none.
  INoxInterfaceFactory* Factory() const;

  /// Every name that a shared object offers to others, sorted.
  static std::vector<std::string> Exports(const std::string& path);
  /// Whether any part of the file is mapped into this process.
  static bool IsMapped(const std::string& path);

 private:
  void* const m_Handle;
  int (*m_Initialize)(int);
  int (*m_Uninitialize)(bool);
  int (*m_GetAttribute)(const char*, BaseSDK::AString&);
};

}  // namespace TestSupport
