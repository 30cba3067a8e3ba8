#pragma once

#include <BaseSDK/AFileSystem.h>

#include <string>
#include <string_view>

namespace BaseSDK {

/// Creates and opens `prefix` and six letters or digits, a name that no file has; `path` is that
/// name. 0 or an errno.
int CreateUnique(AFileSystem& files, const std::string& prefix, std::string& path, int& fd);

/// What the temporary file for the replacement of `path` is called, up to the six characters:
/// "dir/T1.vsk" gives "dir/.T1.".
std::string TemporaryPrefix(std::string_view path);

/// Whether a file of this name, without a path, is the temporary of a replacement.
bool IsTemporary(std::string_view name);

}  // namespace BaseSDK
