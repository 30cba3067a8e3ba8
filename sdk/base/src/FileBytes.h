#pragma once

#include <BaseSDK/AFileSystem.h>

#include <cstddef>
#include <string>
#include <string_view>

namespace BaseSDK {

/// The steps that AFile and Wrappers::Sys share. Each returns 0 or an errno, starts again after a
/// signal, and goes through the file system `files`.

int OpenFile(AFileSystem& files, const char* path, int flags, unsigned mode, int& fd);
/// Goes on after short writes; `written` counts also after a failure.
int WriteAll(AFileSystem& files, int fd, const void* data, std::size_t size, std::size_t& written);
/// EFBIG past `most` bytes.
int ReadAll(AFileSystem& files, int fd, std::size_t most, std::string& bytes);
/// Flushes; what has no disk behind it, such as a pipe, counts as flushed.
int FlushFile(AFileSystem& files, int fd);
/// Flushes a directory, so that a new, renamed or deleted name in it stays so.
int FlushDirectory(AFileSystem& files, const std::string& directory);
/// The directory that holds `path`, for FlushDirectory. Ask before you change what is to be
/// flushed: this takes memory, and a change must not end in an exception.
std::string DirectoryOf(std::string_view path);

/// `path` up to and with its last "/"; empty when it has none.
std::string_view DirectoryPart(std::string_view path);

}  // namespace BaseSDK
