#pragma once

#include <BaseSDK/AEncoding.h>
#include <BaseSDK/AString.h>

namespace BaseSDK {

/// Whole files. Every routine returns a code of AResult.h, 0 for success; all may be called from
/// any thread. They reach the system through AFileSystem only. A name that holds a zero character
/// is EINVAL. A routine that throws, because memory ran out, has changed nothing.
struct AFile {
  /// For Rename: the target is replaced when it exists. Without it that is an error (EEXIST).
  static constexpr unsigned long ReplaceExisting = 2;

  /// Creates a new empty file (mode 0644 less the umask) named `nameTemplate` and six letters or
  /// digits; `name` is the full name, and is left alone on failure. The file did not exist before:
  /// no two callers ever get the same.
  static unsigned long MakeTemp(const AString& nameTemplate, AString& name);

  /// What Read takes at most; a larger file is EFBIG.
  static constexpr unsigned long MaxReadBytes = 16 * 1024 * 1024;

  /// The whole file into `text`, which is left alone on failure. Does not wait for the other end of
  /// a pipe.
  static unsigned long Read(const AString& name, AString& text, const AEncoding& encoding);

  /// Creates or replaces the file so that at every moment, also after a power cut, it is the old
  /// one or the new one. The new one is first written and flushed beside it as ".stem.XXXXXX": a
  /// leading dot, the name without its extension (shortened when it would be too long), six letters
  /// or digits. A new file gets mode 0644 less the umask, a replaced one keeps its mode. On failure
  /// the temporary file is removed and the old file stands, unless only the last step failed, the
  /// flush of the directory. A symbolic link is replaced, not followed. Only regular files
  /// and symbolic links can be replaced; anything else is refused.
  static unsigned long Write(const AString& name, const AString& text, const AEncoding& encoding);

  /// Deletes the file and flushes its directory. `flags` is 0; any other value is EINVAL.
  static unsigned long Remove(const AString& name, unsigned long flags);

  /// `flags` is 0 or ReplaceExisting; any other value is EINVAL. Flushes the target's directory.
  static unsigned long Rename(const AString& from, const AString& to, unsigned long flags);

  /// Deletes from `directory` what Write leaves there when the process is killed in the middle of
  /// it: the files named ".stem.XXXXXX", and nothing else. `removed` counts them, also on failure.
  /// Call it while nobody writes there.
  static unsigned long RemoveLeftovers(const AString& directory, unsigned& removed);
};

}  // namespace BaseSDK
