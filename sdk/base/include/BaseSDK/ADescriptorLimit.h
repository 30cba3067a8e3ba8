#pragma once

namespace BaseSDK {

/// How many descriptors the process may have open. A host raises the limit when it starts. The
/// processes that it starts get the original limit back: a program that closes every descriptor it
/// might have, or that uses select(2), takes long or fails with a high limit. [any thread]
struct ADescriptorLimit {
  /// Raises the limit to `most`, or to what the system allows if that is less. Never lowers it.
  /// There is no error: ask Current() for what came of it. Call it once, at the start.
  static void Raise(unsigned long most);

  /// The limit in force; 2147483647 when there is none.
  static unsigned long Current();
  /// The limit that the process began with.
  static unsigned long Original();
  /// Puts the original limit in force again. Meant for a process that has just been forked: it
  /// makes system calls alone.
  static void Restore();
};

}  // namespace BaseSDK
