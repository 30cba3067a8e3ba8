#pragma once

#include <BaseSDK/AString.h>

#include <map>
#include <string>

namespace NoxHandler {

/// A file of variables for a job: lines "NAME=value", empty lines, and comments from "#" in front
/// on. White space around name and value does not count; nothing in a value is special. Of a name
/// that is there twice the last value counts.
struct EnvironmentFile {
  BaseSDK::AString m_Name;      ///< absolute; empty: none
  bool m_MayBeMissing = false;  ///< a file that is not there is then as an empty one

  using Variables = std::map<std::string, std::string>;

  /// Reads "FILE" or "-FILE" into `file`; with the dash it may be missing. The reason when the text
  /// is no absolute path, else empty; `file` is untouched then.
  static BaseSDK::AString Read(const BaseSDK::AString& text, EnvironmentFile& file);

  /// The variables that the file holds now. Throws JobError, as TrustedFile does and for a line
  /// that cannot be read.
  Variables Load() const;
  /// The variables in `bytes`. Throws JobError that names file and line.
  Variables Parse(std::string_view bytes) const;
};

}  // namespace NoxHandler
