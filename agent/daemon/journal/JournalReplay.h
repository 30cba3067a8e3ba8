#pragma once

#include "agent/daemon/journal/JournalRecord.h"

#include <BaseSDK/AFileReplacement.h>
#include <BaseSDK/AFileSystem.h>

#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace NoxAgent {

/// Brings task files up to date with a journal: each then has its newest content that was safe,
/// where a power cut has left an older one or a part of it.
///
/// It changes only files of which the journal knows that they are out of date. A file that was
/// deleted since does not come back; one that somebody else has changed or put there stays. So a
/// journal that does not fit the directory does no harm.
class JournalReplay {
 public:
  /// `files` is borrowed and outlives this object. The records are those of the journal, in order.
  JournalReplay(BaseSDK::AFileSystem& files, std::string directory,
                const std::vector<JournalRecord>& records);

  /// 0 or an errno. When it returns 0, the files are up to date in the system's memory; flush the
  /// disk before the records go. After an error it may have done a part; done again, it goes on
  /// from there.
  int Perform();

  /// How many files were out of date.
  std::size_t Renewed() const { return m_Renewed; }
  /// The names of the files that stay as somebody else has left them.
  const std::vector<std::string>& Left() const { return m_Left; }

 private:
  /// What the journal tells of one file.
  struct Versions {
    std::vector<const JournalRecord*> m_Records;  ///< the newest last
    const std::string* m_Newest = nullptr;        ///< content
  };
  enum class State { UpToDate, OutOfDate, Foreign };

  int FindState(const std::string& name, const Versions& versions, State& state) const;
  /// Of a file that is there. `content` is null when it cannot be read.
  static State Compare(const FileVersion& present, const std::string* content,
                       const Versions& versions);
  static bool IsTorn(const FileVersion& present, std::string_view content, const Versions& versions,
                     const FileVersion& version);
  int Prepare(const std::string& name, const Versions& versions);
  int RenameAll();

  BaseSDK::AFileSystem& m_Files;
  const std::string m_Directory;
  std::map<std::string, Versions> m_Versions;
  std::vector<std::unique_ptr<BaseSDK::AFileReplacement>> m_Prepared;
  std::size_t m_Renewed = 0;
  std::vector<std::string> m_Left;
};

}  // namespace NoxAgent
