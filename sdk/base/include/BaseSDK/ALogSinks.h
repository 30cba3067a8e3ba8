#pragma once

#include <BaseSDK/ALogSink.h>
#include <BaseSDK/AString.h>

#include <cstddef>
#include <memory>

namespace BaseSDK {

/// The kit's own sinks, for ALogConfig::AddSink.
struct ALogSinks {
  /// Standard error: with the time, and on a terminal with colour. Where it is a service manager's
  /// journal, as the environment variable JOURNAL_STREAM tells, every line begins with the priority
  /// of its message as the journal reads it ("<3>" for errors), and has no time, which the journal
  /// knows.
  static std::shared_ptr<ALogSink> Stderr();

  /// A file that is renamed to name.1.ext, name.2.ext and so on when it would outgrow `maxBytes`;
  /// `maxFiles` of those are kept. Null when the file cannot be opened; `error` then says why.
  static std::shared_ptr<ALogSink> RotatingFile(const AString& path, std::size_t maxBytes,
                                                unsigned maxFiles, AString& error);
};

}  // namespace BaseSDK
