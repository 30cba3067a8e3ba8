// What the store does with whole files, through a file system of the kit.
#pragma once

#include "agent/daemon/store/FileIdentity.h"

#include <BaseSDK/AFileSystem.h>

#include <string>

namespace NoxAgent {

/// Opens the file, reads it, and says which file it was. 0 or an errno; ESTALE when somebody wrote
/// to it meanwhile, EFBIG for more than AFile::MaxReadBytes. `bytes` is empty on entry.
int ReadFile(BaseSDK::AFileSystem& files, const std::string& path, std::string& bytes,
             FileIdentity& identity);

/// Renames `from` to `to`, a name that no file has, as long as it still is the file `expected`. 0
/// when moved. ESTALE when it is another file; that one is then at `from` again. EEXIST when there
/// is a `to`; or another errno.
int MoveUnchanged(BaseSDK::AFileSystem& files, const std::string& from, const std::string& to,
                  const FileIdentity& expected);

}  // namespace NoxAgent
