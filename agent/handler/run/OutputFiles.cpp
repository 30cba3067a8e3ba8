#include "agent/handler/run/OutputFiles.h"

namespace NoxHandler {

std::shared_ptr<OutputFile> OutputFiles::Of(const BaseSDK::AString& taskId) {
  if (const auto found = m_Open.find(taskId); found != m_Open.end()) {
    return found->second.lock();
  }
  const auto close = [this, taskId](const OutputFile* file) {
    delete file;
    m_Open.erase(taskId);
  };
  const std::shared_ptr<OutputFile> file(new OutputFile(m_Settings.OutputFile(taskId)), close);
  m_Open.emplace(taskId, file);
  return file;
}

}  // namespace NoxHandler
