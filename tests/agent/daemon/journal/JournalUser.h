#pragma once

#include "agent/daemon/journal/JournaledFiles.h"
#include "tests/agent/daemon/journal/CrashDisk.h"
#include "tests/agent/daemon/journal/Promises.h"
#include "tests/support/FailingFileSystem.h"

#include <memory>
#include <optional>
#include <random>
#include <string>
#include <vector>

namespace NoxAgent {

/// One thread of an agent that changes task files through the journal on a CrashDisk, over several
/// lives of the agent. It compares with what is promised whatever it reads, and after each start
/// all that is on the disk. The first promise that is broken is the Problem.
class JournalUser final : public JournaledFiles::Observer {
 public:
  static constexpr const char* Directory = "/tasks";
  static constexpr const char* JournalPath = "/state/journal";

  JournalUser();
  ~JournalUser() override;

  /// What was broken first, with all that was done before; empty while nothing was.
  const std::string& Problem() const { return m_Problem; }
  /// Adds a line to what was done.
  void Note(std::string words) { m_Done.push_back(std::move(words)); }
  TestSupport::FailingFileSystem& Calls() { return *m_Calls; }
  const Promises& Promised() const { return m_Promises; }
  bool IsDead() const { return m_Calls->IsDead(); }
  unsigned Failures() const { return m_Failures; }
  std::size_t JournalBytes() const { return m_Files->Count().m_JournalBytes; }

  // Lives. A new object has begun none: Prepare, then Begin.

  /// The next life, whose calls may be made to fail before it begins.
  void Prepare();
  /// Begins with the replay. When calls may fail, what is there is compared by the next Calm.
  void Begin();
  /// The process ends at once. With a loss the power fails too.
  void Die(std::optional<CrashDisk::Loss> loss, std::mt19937_64& random);
  /// Calls fail no more; the journal can be used again, and all is compared.
  void Calm();
  /// Puts all in its place and empties the journal.
  void End();

  // What the agent does.

  void Replace(const std::string& name, const std::string& content);
  void Add(const std::string& name, const std::string& content);
  /// Makes a file of a new name, as the scheduler does, and returns the name.
  std::string Invent();
  void Rename(const std::string& from, const std::string& to);
  void Remove(const std::string& name);
  void Read(const std::string& name);
  void List();
  void MakeSafe();
  void Follow();

  // What somebody else does, past the journal. Does nothing where there is no such file.

  void OtherWrites(const std::string& name, const std::string& content, bool flushes);
  void OtherReplaces(const std::string& name, const std::string& content, bool flushes);
  /// Not while a replacement of the file waits.
  void OtherRemoves(const std::string& name);

  void OnReplaced(const std::string& path,
                  const BaseSDK::AFileSystem::Info& info) noexcept override;
  void OnFailure(const std::string& path, int error) noexcept override;
  bool IsFailureAwaited() const noexcept override { return false; }

 private:
  static std::string PathOf(const std::string& name) { return std::string(Directory) + "/" + name; }

  void Fail(const std::string& problem);
  void FlushAsOther(const std::string& path);
  void NoteOther(const std::string& name, const std::string& content, bool isWaiting, bool flushes);
  Promises::Content ReadFromDisk(const std::string& name);
  void RemoveLeftovers();
  void CompareDisk();
  std::vector<std::string> NamesOnDisk();

  CrashDisk m_Disk;
  Promises m_Promises;
  std::unique_ptr<TestSupport::FailingFileSystem> m_Calls;
  std::unique_ptr<JournaledFiles> m_Files;
  unsigned m_Failures = 0;
  std::vector<std::string> m_Done;
  std::string m_Problem;
};

}  // namespace NoxAgent
