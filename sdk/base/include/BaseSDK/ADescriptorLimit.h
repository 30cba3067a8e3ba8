#pragma once

namespace BaseSDK {

/// How many descriptors the process may have open. A host raises it at its start; what it starts
/// itself gets the original one back, for programs that close all they might have, or that use
/// select, take long or fail with a high one. [any thread]
struct ADescriptorLimit {
  /// Up to what the system allows, `most` at the most; never lowers it. Once, at the start.
  static void Raise(unsigned long most);

  /// What is in force now.
  static unsigned long Current();
  /// What the process began with.
  static unsigned long Original();
  /// Puts the original one in force, in a process that has just been forked: makes system calls
  /// alone.
  static void Restore();
};

}  // namespace BaseSDK
