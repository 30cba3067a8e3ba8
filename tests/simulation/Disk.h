#pragma once

#include "tests/simulation/Random.h"
#include "tests/support/FailingFileSystem.h"
#include "tests/support/MemoryFileSystem.h"

#include <functional>
#include <string>
#include <vector>

namespace Simulation {

/// The task directory of a simulated machine: files in memory, in force as the process's file
/// system while this lives, with every fault that a disk can have and the death of the process at
/// any of its calls.
class Disk {
 public:
  static constexpr const char* Directory = "/tasks";
  static constexpr const char* Extension = ".vsk";

  /// Told of what has happened to a task file, on the thread that did it.
  class Observer {
   public:
    virtual ~Observer() = default;
    virtual void OnReplaced(const std::string& taskId, const std::string& text) = 0;
    virtual void OnDeleted(const std::string& taskId) = 0;
    virtual void OnListed() = 0;
  };

  explicit Disk(Observer& observer);
  Disk(const Disk&) = delete;
  Disk& operator=(const Disk&) = delete;
  ~Disk();

  /// A way to be ill, in words; healthy again after Heal.
  std::string FallIll(Random& random);
  void Heal();
  bool IsHealthy() const { return m_IsHealthy; }

  /// The process dies within the next `calls` calls (at least 1).
  void KillWithin(Random& random, long calls);
  void KillNow();
  bool IsDead() const { return m_IsKilled || m_Failing.IsDead(); }
  /// A new process on the same disk, healthy.
  void Revive();

  bool Has(const std::string& taskId) const { return m_Memory.Has(Path(taskId)); }
  std::string Text(const std::string& taskId) const { return m_Memory.ReadFile(Path(taskId)); }
  /// All names in the directory.
  std::vector<std::string> Names() const { return m_Memory.Names(Directory); }
  std::size_t OpenHandles() const { return m_Memory.OpenHandles(); }
  void PutFile(const std::string& name, const std::string& text);

 private:
  /// Between the files and the faults: sees only what really happens.
  class Watch : public TestSupport::ForwardingFileSystem {
   public:
    Watch(TestSupport::MemoryFileSystem& memory, Observer& observer)
        : ForwardingFileSystem(memory), m_Memory(memory), m_Observer(observer) {}
    int Rename(const char* from, const char* to, bool replace) override;
    int Unlink(const char* path) override;
    int OpenDirectory(const char* path, unsigned long& handle) override;

   private:
    TestSupport::MemoryFileSystem& m_Memory;
    Observer& m_Observer;
  };

  static std::string Path(const std::string& taskId);

  TestSupport::MemoryFileSystem m_Memory;
  Watch m_Watch;
  TestSupport::FailingFileSystem m_Failing{m_Watch};
  BaseSDK::AFileSystem* const m_Before;
  bool m_IsHealthy = true;
  bool m_IsKilled = false;
};

/// The task ID that a file name stands for; empty for names without the extension.
std::string TaskIdOf(const std::string& fileName);

}  // namespace Simulation
