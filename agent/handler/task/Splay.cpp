#include "agent/handler/task/Splay.h"

#include <cstdint>
#include <string_view>

namespace NoxHandler {

namespace {

// FNV-1a, and a last step that brings each byte into every bit: what follows takes the upper ones.
// Not std::hash, which may be another one in the next version of the library.
std::uint64_t HashOf(std::string_view bytes) {
  std::uint64_t hash = 0xcbf29ce484222325U;
  for (const char byte : bytes) {
    hash = (hash ^ static_cast<unsigned char>(byte)) * 0x100000001b3U;
  }
  hash = (hash ^ (hash >> 33U)) * 0xff51afd7ed558ccdU;
  return hash ^ (hash >> 33U);
}

}  // namespace

std::chrono::milliseconds Splay::ShareOf(long seconds, const std::string& machineId,
                                         const BaseSDK::AString& taskId) {
  const std::uint64_t part = HashOf(machineId + '\n' + taskId.ToUtf8()) >> 32U;
  const std::uint64_t whole = static_cast<std::uint64_t>(seconds) * 1000;
  return std::chrono::milliseconds((part * whole) >> 32U);
}

}  // namespace NoxHandler
