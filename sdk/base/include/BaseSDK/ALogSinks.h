#pragma once

#include <BaseSDK/ALogSink.h>
#include <BaseSDK/AString.h>

#include <cstddef>
#include <memory>

namespace BaseSDK {

/// The kit's own sinks, for ALogConfig::AddSink.
struct ALogSinks {
  /// Standard error: on a terminal with time and colour; otherwise one line per message that begins
  /// with its priority as a service manager's journal reads it ("<3>" for errors), and no time,
  /// which the journal knows. Lines after the first of a message carry the priority too.
  static std::shared_ptr<ALogSink> Stderr();

  /// A file that is renamed to name.1.ext, name.2.ext and so on when it would outgrow `maxBytes`;
  /// `maxFiles` of those are kept. Null when the file cannot be opened; `error` then says why.
  static std::shared_ptr<ALogSink> RotatingFile(const AString& path, std::size_t maxBytes,
                                                unsigned maxFiles, AString& error);
};

}  // namespace BaseSDK
