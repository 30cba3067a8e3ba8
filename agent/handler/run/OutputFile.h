#pragma once

#include "agent/handler/system/FileDescriptor.h"

#include <BaseSDK/AMutex.h>
#include <BaseSDK/AString.h>

#include <cstdint>
#include <string>
#include <string_view>

namespace NoxHandler {

/// The file with the output of a task's runs: of the last run, and of those before it as far as
/// there is room. It grows by appending, so it can be followed while a run goes on. When it has
/// twice KeepBytes, and when it is closed, it is cut back to its last KeepBytes, from the start of
/// a line; its first line then says how much is missing (OutputHeader).
///
/// Output that cannot be written, such as on a full disk, is dropped. That is logged once, and as
/// soon as the file can be written again it gets a note where something is missing.
class OutputFile {
 public:
  static constexpr std::size_t KeepBytes = 64 * 1024;
  /// Held while a file, whichever it is, is cut back: a reader who holds it finds the file as it
  /// was before or as it is then. A leaf. [any thread]
  static BaseSDK::AMutex s_CutLock;

  /// Opens or creates the file, readable by its owner and group.
  explicit OutputFile(const BaseSDK::AString& name);
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;
  ~OutputFile();

  /// Adds output as it came, in pieces of any size. Never fails: see above.
  void Append(std::string_view bytes);
  /// A line of the handler's own among the output: "-- date time text". It starts on a line of its
  /// own.
  void AppendNote(const BaseSDK::AString& text);

 private:
  bool IsReady();
  bool Open();
  bool Put(std::string_view bytes);
  bool CutBack();
  std::string Note(const BaseSDK::AString& text) const;
  bool Fail(const char* action, int error);

  const BaseSDK::AString m_Name;
  FileDescriptor m_File;
  std::string m_Tail;         ///< what the file holds behind its header; at most twice KeepBytes
  std::uint64_t m_Begin = 0;  ///< the position of m_Tail among all output
  bool m_IsTold = false;      ///< the log knows that something failed
  bool m_HasGap = false;      ///< something was dropped since the last write
};

}  // namespace NoxHandler
