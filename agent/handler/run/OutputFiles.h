#pragma once

#include "agent/handler/HandlerSettings.h"
#include "agent/handler/run/OutputFile.h"

#include <BaseSDK/AString.h>

#include <map>
#include <memory>

namespace NoxHandler {

/// The output files of the tasks. Whoever writes to that of one task at the same time shares it:
/// each would otherwise cut it back to what it knows itself. [supervisor thread]
class OutputFiles {
 public:
  /// `settings` is borrowed.
  explicit OutputFiles(const HandlerSettings& settings) : m_Settings(settings) {}
  OutputFiles(const OutputFiles&) = delete;
  OutputFiles& operator=(const OutputFiles&) = delete;

  /// That of the task; open for as long as somebody has it, which this object outlives.
  std::shared_ptr<OutputFile> Of(const BaseSDK::AString& taskId);

 private:
  const HandlerSettings& m_Settings;
  std::map<BaseSDK::AString, std::weak_ptr<OutputFile>> m_Open;
};

}  // namespace NoxHandler
