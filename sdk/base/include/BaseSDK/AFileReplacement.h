#pragma once

#include <BaseSDK/AFileSystem.h>

#include <string>

namespace BaseSDK {

/// The replacement of one file by a new one, step by step: Look, Prepare, Rename, FlushDirectory.
/// The old file stands until the new one is whole. Each step returns 0 or an errno, and starts
/// again after a signal. One that is not renamed leaves no file behind when the object goes.
///
/// Not for use by several threads at once.
class AFileReplacement {
 public:
  /// Whether the new file is on the disk when Prepare returns, or only in the system's memory.
  enum class Flushed { No, Yes };

  /// Of the file `path`. `files` is borrowed and outlives this object.
  AFileReplacement(AFileSystem& files, std::string path);
  AFileReplacement(const AFileReplacement&) = delete;
  AFileReplacement& operator=(const AFileReplacement&) = delete;
  ~AFileReplacement();

  /// Learns which file there is before, and whether it may be replaced.
  int Look();
  /// Looks, and writes the new file beside the old one, as AFile::Write describes.
  int Prepare(const std::string& bytes, Flushed flushed);
  /// Flushes a new file that was prepared without it.
  int Flush();
  /// Puts the new file in the place of the old one.
  int Rename();
  /// Makes the rename last.
  int FlushDirectory();

  const std::string& Path() const { return m_Path; }
  /// Where the new file is, once it is prepared and until it is renamed; empty otherwise.
  const std::string& Temporary() const { return m_Temporary; }
  /// Whether there was a file before, as was found last.
  bool Replaces() const { return m_Replaces; }
  /// The file before, when there was one.
  const AFileSystem::Info& Previous() const { return m_Previous; }

 private:
  int Fill(int fd, const std::string& bytes, Flushed flushed);

  AFileSystem& m_Files;
  const std::string m_Path;
  const std::string m_Directory;
  std::string m_Temporary;  ///< empty while there is none
  AFileSystem::Info m_Previous;
  bool m_Replaces = false;
};

}  // namespace BaseSDK
