#pragma once

#include <BaseSDK/AString.h>

namespace BaseSDK {

/// The time zone of the machine, as /etc/localtime says it, for a process that runs for months.
///
/// The C library has only two ways with it: without TZ in the environment it examines the file at
/// every conversion of a local time, and with TZ it reads the file once and never again. Hold takes
/// the second, and Refresh looks whether the file has become another one. A wait of
/// AEvent that watches the wall clock calls Refresh, so a thread sees a changed zone after the
/// wait.
class ASystemZone {
 public:
  /// Unless the environment has a TZ, puts one there that stands for the machine's zone. Once, and
  /// before there are other threads: it changes the environment. `file` is absolute.
  static void Hold(const char* file = "/etc/localtime");
  /// Whether Hold put TZ into the environment, and not the administrator. Take it away from child
  /// processes then: not every program understands this value. [any thread]
  static bool IsHeld();
  /// Has the C library read the file again if it has changed since it was read last. Does nothing
  /// unless the zone is held. [any thread]
  static void Refresh();

  /// The zone in force as TZ writes it: the administrator's, or the file, as ":/etc/localtime".
  /// [any thread]
  static AString Value();
  /// The same for people, such as "Europe/Berlin": what TZ or the target of the file's link says,
  /// else the file's path. [any thread]
  static AString Name();
};

}  // namespace BaseSDK
