// What the store does with whole files, through a file system of the kit.
#pragma once

#include "agent/daemon/store/FileIdentity.h"

#include <BaseSDK/AFileSystem.h>

#include <string>

namespace NoxAgent {

/// All that the open file holds into `bytes`. 0 or an errno, EFBIG for more than
/// AFile::MaxReadBytes.
int ReadWhole(BaseSDK::AFileSystem& files, int fd, std::string& bytes);

/// Opens the file, reads it, and says which file it was. 0 or an errno; ESTALE when somebody wrote
/// to it meanwhile.
int ReadFile(BaseSDK::AFileSystem& files, const std::string& path, std::string& bytes,
             FileIdentity& identity);

/// Renames `from` to `to`, a name that no file has, as long as it is the file `expected`: whoever
/// writes or replaces it meanwhile keeps it. 0; ESTALE when it is another one, which then stays
/// `from`; EEXIST when there is a `to`; or another errno.
int MoveUnchanged(BaseSDK::AFileSystem& files, const std::string& from, const std::string& to,
                  const FileIdentity& expected);

}  // namespace NoxAgent
