#pragma once

#include <BaseSDK/AString.h>

#include <cstdint>
#include <optional>

namespace NoxAgent {

/// Whether a scheduler runs tasks or holds them back, by what it has been told, for an operator. It
/// reckons as schedulers do: whoever comes or goes holds tasks back until all have come or gone, a
/// refresh does until it is over, and the end of the start-up or of a refresh lets them run
/// whatever else is under way.
///
/// [agent thread]
class TaskGate {
 public:
  /// That tasks may run, or are held back, from now on, and why.
  struct Change {
    bool m_MayRun;
    BaseSDK::AString m_Words;
  };

  /// What the notification changes (`kind` as of NotificationCenter, `text` the plug-in's name
  /// where it is about one); nothing when tasks may run, or are held back, as before.
  std::optional<Change> After(long kind, const BaseSDK::AString& text);

 private:
  std::optional<Change> Open(const BaseSDK::AString& why);
  std::optional<Change> Close(const BaseSDK::AString& why);
  std::optional<Change> Begin(const BaseSDK::AString& why);
  std::optional<Change> End(const BaseSDK::AString& why);

  std::optional<bool> m_MayRun;  ///< nothing before the first notification that says so
  std::uint32_t m_UnderWay = 0;  ///< who comes or goes; wraps below 0 as a scheduler's count does
};

}  // namespace NoxAgent
