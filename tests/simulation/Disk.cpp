#include "tests/simulation/Disk.h"

#include <cerrno>

namespace Simulation {

using TestSupport::FailingFileSystem;
using TestSupport::MemoryFileSystem;

std::string TaskIdOf(const std::string& fileName) {
  const std::string name = fileName.substr(fileName.rfind('/') + 1);
  const std::string extension = Disk::Extension;
  const bool isTask = name.size() > extension.size() && name.front() != '.' &&
                      name.substr(name.size() - extension.size()) == extension;
  return isTask ? name.substr(0, name.size() - extension.size()) : std::string();
}

int Disk::Watch::Rename(const char* from, const char* to, bool replace) {
  const int error = ForwardingFileSystem::Rename(from, to, replace);
  const std::string taskId = TaskIdOf(to);
  if (error == 0 && !taskId.empty()) {
    m_Observer.OnReplaced(taskId, m_Memory.ReadFile(to));
  }
  return error;
}

int Disk::Watch::Unlink(const char* path) {
  const int error = ForwardingFileSystem::Unlink(path);
  const std::string taskId = TaskIdOf(path);
  if (error == 0 && !taskId.empty()) {
    m_Observer.OnDeleted(taskId);
  }
  return error;
}

int Disk::Watch::OpenDirectory(const char* path, unsigned long& handle) {
  m_Observer.OnListed();
  return ForwardingFileSystem::OpenDirectory(path, handle);
}

Disk::Disk(Observer& observer)
    : m_Watch(m_Memory, observer), m_Before(BaseSDK::AFileSystem::Replace(&m_Failing)) {
  m_Memory.MakeDirectory(Directory);
}

Disk::~Disk() {
  (void)BaseSDK::AFileSystem::Replace(m_Before);
}

std::string Disk::FallIll(Random& random) {
  m_IsHealthy = false;
  switch (random.Below(4)) {
    case 0:
      m_Memory.SetFreeBytes(random.Below(3000));
      return "disk full";
    case 1:
      m_Memory.SetReadOnly(true);
      return "disk read-only";
    case 2: {
      constexpr long Kinds = FailingFileSystem::CloseDirectoryCall;
      const auto kind = static_cast<FailingFileSystem::Kind>(random.Between(0, Kinds));
      const int error = random.OneOf({EIO, EACCES, ENOMEM, EMFILE});
      m_Failing.FailAll(kind, error);
      return "call kind " + std::to_string(kind) + " fails with " + std::to_string(error);
    }
    default:
      for (int i = 0; i < 50; ++i) {
        m_Failing.FailAt(m_Failing.Count() + static_cast<unsigned>(random.Between(1, 2000)), EIO);
      }
      return "single calls fail";
  }
}

void Disk::Heal() {
  m_Failing.Reset();
  m_Memory.SetFreeBytes(MemoryFileSystem::Unlimited);
  m_Memory.SetReadOnly(false);
  m_IsHealthy = true;
}

void Disk::KillWithin(Random& random, long calls) {
  m_Failing.KillAt(m_Failing.Count() + static_cast<unsigned>(random.Between(1, calls)),
                   random.Below(800));
}

void Disk::KillNow() {
  m_IsKilled = true;
  m_Failing.KillAt(m_Failing.Count() + 1);
}

void Disk::Revive() {
  Heal();
  m_IsKilled = false;
}

void Disk::PutFile(const std::string& name, const std::string& text) {
  m_Memory.WriteFile(std::string(Directory) + '/' + name, text);
}

std::string Disk::Path(const std::string& taskId) {
  return std::string(Directory) + '/' + taskId + Extension;
}

}  // namespace Simulation
