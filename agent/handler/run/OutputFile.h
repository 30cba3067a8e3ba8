#pragma once

#include "agent/handler/system/FileDescriptor.h"

#include <BaseSDK/AString.h>

#include <string>
#include <string_view>

namespace NoxHandler {

/// The file that keeps the end of what a task's runs have put out, of the last run and those before
/// it. It grows by appending, so that it can be followed while a run goes on, and is cut back to
/// its last KeepBytes, from the start of a line on, when it has twice that, and when it is closed.
///
/// What cannot be written, on a full disk for instance, is dropped. The log is told once, and the
/// file has a note where something is missing as soon as it can be written again.
class OutputFile {
 public:
  static constexpr std::size_t KeepBytes = 64 * 1024;

  /// Opens or creates the file, readable by its owner and group.
  explicit OutputFile(const BaseSDK::AString& name);
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;
  ~OutputFile();

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
  std::string m_Tail;     ///< what the file holds; at most twice KeepBytes
  bool m_IsTold = false;  ///< the log knows that something failed
  bool m_HasGap = false;  ///< something was dropped since the last write
};

}  // namespace NoxHandler
