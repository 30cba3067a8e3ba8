#pragma once

#include "agent/daemon/store/FileIdentity.h"
#include "agent/daemon/store/Refusal.h"

#include <BaseSDK/AFileSystem.h>
#include <BaseSDK/AString.h>

#include <optional>
#include <string>
#include <vector>

namespace NoxAgent {

/// The folder of refused documents: task files that no task can be made of are moved here, so that
/// nothing is lost. It is made when the first one comes. docs/files.md describes it.
///
/// [any thread]
class RefusedFolder {
 public:
  /// `files` is borrowed.
  RefusedFolder(BaseSDK::AFileSystem& files, std::string path);

  struct Taken {
    enum class Outcome {
      Moved,
      Changed,  ///< somebody has replaced or changed it meanwhile; it is where it was
      Failed    ///< it is where it was
    };
    Outcome m_Outcome;
    std::string m_Path;          ///< where it is now, when it was moved
    BaseSDK::AString m_Problem;  ///< why not, when that failed
  };
  /// Moves the file `from`, called `name`, here as long as it is the file `identity`. When there is
  /// one of that name already, it gets a number behind it.
  Taken Take(const std::string& from, const std::string& name, const FileIdentity& identity);

  struct Entry {
    std::string m_Name;
    /// Why it is refused; nothing when a task could be made of it by now.
    std::optional<Refusal> m_Refusal;
    long m_Time = 0;  ///< since when it is here, or as it is: seconds since the epoch
  };
  /// All that is here, by name. Each one is judged anew: somebody may have mended it in its place.
  std::vector<Entry> List() const;

  std::size_t Count() const;

  /// What it holds, and which file it was. 0 or an errno.
  int Read(const std::string& name, std::string& bytes, FileIdentity& identity) const;
  /// 0 or an errno.
  int Remove(const std::string& name);
  /// The same as long as it is the file `identity`; ESTALE when it is another one.
  int RemoveUnchanged(const std::string& name, const FileIdentity& identity);

 private:
  std::string PathOf(const std::string& name) const { return m_Path + "/" + name; }
  std::vector<std::string> Names() const;
  Entry Describe(const std::string& name) const;

  BaseSDK::AFileSystem& m_Files;
  const std::string m_Path;
};

}  // namespace NoxAgent
