#pragma once

/// Memory that runs out on demand. Comes with operators new and delete of its own, for the whole
/// process and its libraries. What takes memory in another way, such as malloc, is not concerned.
/// Used by one thread, the test's.
class FailingMemory {
 public:
  /// Whose allocations fail: the calling thread's, or those of all others.
  enum Whose { Mine, OfOthers };
  enum HowLong { Once, FromThenOn };

  /// The `number`th of these allocations from now on throws std::bad_alloc.
  static void FailAt(long number, Whose whose, HowLong howLong);
  /// There is memory again. Whether any allocation has failed.
  static bool Recover();

  /// While one lives, the allocations of its thread neither count nor fail: for what stands in for
  /// the system in a test, and has nothing to allocate where it is real.
  class Spared {
   public:
    Spared();
    Spared(const Spared&) = delete;
    Spared& operator=(const Spared&) = delete;
    ~Spared();
  };
};
