// A task directory in memory behind the journal, and what its observer was told.
#pragma once

#include "agent/daemon/journal/JournaledFiles.h"
#include "tests/support/FailingFileSystem.h"
#include "tests/support/LogCapture.h"
#include "tests/support/MemoryFileSystem.h"

#include <gtest/gtest.h>

#include <fcntl.h>

#include <atomic>
#include <cerrno>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

namespace NoxAgent {

/// Writes down what becomes of the files: "T1.vsk", and "T1.vsk failed: 5" for an error. It keeps
/// nothing else, so it may be asked from any thread.
class RecordingObserver final : public JournaledFiles::Observer {
 public:
  using Lines = std::vector<std::string>;

  void OnReplaced(const std::string& path, const BaseSDK::AFileSystem::Info&) noexcept override {
    Add(NameIn(path));
  }
  void OnFailure(const std::string& path, int error) noexcept override {
    Add(NameIn(path) + " failed: " + std::to_string(error));
  }
  bool IsFailureAwaited() const noexcept override { return m_IsFailureAwaited; }

  Lines Told() const {
    const std::lock_guard guard(m_Lock);
    return m_Told;
  }
  /// Returns when so many lines have been told.
  void Await(std::size_t count) {
    std::unique_lock lock(m_Lock);
    m_Changed.wait(lock, [&] { return m_Told.size() >= count; });
  }

  std::atomic<bool> m_IsFailureAwaited{false};

 private:
  static std::string NameIn(const std::string& path) { return path.substr(path.rfind('/') + 1); }
  void Add(const std::string& line) {
    const std::lock_guard guard(m_Lock);
    m_Told.push_back(line);
    m_Changed.notify_all();
  }

  mutable std::mutex m_Lock;
  std::condition_variable m_Changed;
  Lines m_Told;
};

/// The disk. Of all files, only the journal has its data flushed alone, so it can fail alone.
class JournalDisk final : public TestSupport::FailingFileSystem {
 public:
  using FailingFileSystem::FailingFileSystem;

  int SyncData(int fd) override {
    const int error = FailingFileSystem::SyncData(fd);
    return m_JournalError != 0 ? m_JournalError : error;
  }
  int Open(const char* path, int flags, unsigned mode, int& fd) override {
    if ((flags & O_CREAT) != 0 && m_IsFileAwaited.exchange(false)) {
      m_BeforeFile();
    }
    return FailingFileSystem::Open(path, flags, mode, fd);
  }

  int m_JournalError = 0;
  std::function<void()> m_BeforeFile;  ///< called when the next file is to be made, if awaited
  std::atomic<bool> m_IsFileAwaited{false};
};

class JournalFixture : public testing::Test {
 protected:
  JournalFixture() {
    m_Memory.MakeDirectory("/state/tasks");
    m_Memory.MakeDirectory("/state");
    m_Files.SetObserver(&m_Observer);
  }

  static std::string PathOf(const std::string& name) { return "/state/tasks/" + name; }
  static std::string NameOf(int number) { return "T" + std::to_string(number) + ".vsk"; }

  /// Lays out a file, as if it had always been there.
  void Put(const std::string& name, const std::string& text) {
    m_Memory.WriteFile(PathOf(name), text);
  }
  /// Has so many files, T0.vsk and on, which say "old", and replaces each by "new".
  void ReplaceMany(int count) {
    for (int i = 0; i < count; ++i) {
      Put(NameOf(i), "old");
      ASSERT_EQ(Write(NameOf(i), "new"), 0);
    }
  }
  int Write(const std::string& name, const std::string& text) {
    return m_Files.ReplaceFile(PathOf(name).c_str(), text);
  }
  /// What a reader gets.
  std::string Read(const std::string& path) {
    int fd = -1;
    const int error = m_Files.Open(path.c_str(), O_RDONLY, 0, fd);
    EXPECT_EQ(error, 0) << path;
    char text[64];
    std::size_t got = 0;
    EXPECT_EQ(m_Files.Read(fd, text, sizeof text, got), 0);
    EXPECT_EQ(m_Files.Close(fd), 0);
    return {text, got};
  }
  /// What is on the disk.
  std::string OnDisk(const std::string& name) const { return m_Memory.ReadFile(PathOf(name)); }
  /// How many of ReplaceMany's files are in their place.
  int CountNew(int count) const {
    int found = 0;
    for (int i = 0; i < count; ++i) {
      found += OnDisk(NameOf(i)) == "new" ? 1 : 0;
    }
    return found;
  }

  /// How many flushes `work` takes.
  unsigned FlushesOf(const std::function<void()>& work) {
    const unsigned before = m_Disk.Count(TestSupport::FailingFileSystem::SyncCall);
    const std::uint64_t counted = m_Files.Count().m_Flushes;
    work();
    const unsigned flushes = m_Disk.Count(TestSupport::FailingFileSystem::SyncCall) - before;
    EXPECT_EQ(m_Files.Count().m_Flushes - counted, flushes) << "it counts them itself";
    return flushes;
  }

  TestSupport::LogCapture m_Log{BaseSDK::ALogger::Notice};
  TestSupport::MemoryFileSystem m_Memory;
  JournalDisk m_Disk{m_Memory};
  const TaskDirectory m_Tasks{"/state/tasks", ".vsk"};
  RecordingObserver m_Observer;
  JournaledFiles m_Files{m_Disk, m_Tasks, "/state/journal"};
};

}  // namespace NoxAgent
