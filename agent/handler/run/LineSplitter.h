#pragma once

#include <BaseSDK/AString.h>

#include <string>
#include <string_view>
#include <vector>

namespace NoxHandler {

/// Makes lines for the log of a run's output, which comes in pieces of any size. Tab stops stay;
/// other control characters become "?", so that no output can command a terminal; bytes that are
/// not UTF-8 become U+FFFD.
class LineSplitter {
 public:
  /// A line longer than this many bytes is cut into several.
  static constexpr std::size_t MaxLineBytes = 4096;

  /// The lines that `bytes` completes, without their ends.
  std::vector<BaseSDK::AString> Add(std::string_view bytes);
  /// The rest of the output, which has no line end; nothing when there is no rest.
  std::vector<BaseSDK::AString> Finish();

 private:
  std::string m_Rest;
};

}  // namespace NoxHandler
