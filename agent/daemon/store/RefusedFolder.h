#pragma once

#include "agent/daemon/store/FileIdentity.h"
#include "agent/daemon/store/Refusal.h"

#include <BaseSDK/AFileSystem.h>
#include <BaseSDK/AString.h>

#include <optional>
#include <string>
#include <vector>

namespace NoxAgent {

/// The folder of refused documents. Task files that the scheduler could make no task of are moved
/// here, so that it does not delete them. The folder is made when the first file comes.
/// docs/files.md describes it. Names are those of files in the folder, without a path.
///
/// [any thread]
class RefusedFolder {
 public:
  /// `files` is borrowed and outlives this object.
  RefusedFolder(BaseSDK::AFileSystem& files, std::string path);

  /// What became of a file that Take was to move.
  struct Taken {
    enum class Outcome {
      Moved,
      Changed,  ///< it was replaced, changed or removed meanwhile; the folder has nothing of it
      Failed    ///< it is where it was
    };
    Outcome m_Outcome;
    std::string m_Path;          ///< where it is now, when it was moved
    BaseSDK::AString m_Problem;  ///< why not, when that failed
  };
  /// Moves the file at the path `from` here, as long as it still is the file `identity`. It is
  /// called `name` here, with a number behind it when that name is taken.
  Taken Take(const std::string& from, const std::string& name, const FileIdentity& identity);

  struct Entry {
    std::string m_Name;
    /// Why it is refused; nothing when somebody has mended it and a task can be made of it.
    std::optional<Refusal> m_Refusal;
    long m_Time = 0;  ///< when it came or was changed last, in seconds since the epoch
  };
  /// All files in the folder, by name. Each one is judged anew: somebody may have mended it.
  std::vector<Entry> List() const;

  /// How many files there are.
  std::size_t Count() const;

  /// Reads the file, and says which one it was. 0 or an errno; ESTALE when it was changed
  /// meanwhile.
  int Read(const std::string& name, std::string& bytes, FileIdentity& identity) const;
  /// Removes the file. 0 or an errno.
  int Remove(const std::string& name);
  /// Removes the file as long as it is the file `identity`; ESTALE when it is another one.
  int RemoveUnchanged(const std::string& name, const FileIdentity& identity);

 private:
  std::string PathOf(const std::string& name) const { return m_Path + "/" + name; }
  std::vector<std::string> Names() const;
  Entry Describe(const std::string& name) const;

  BaseSDK::AFileSystem& m_Files;
  const std::string m_Path;
};

}  // namespace NoxAgent
