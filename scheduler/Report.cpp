// The diagnostic report.
#include "model/Task.h"
#include "scheduler/TaskSchedulerObject.h"

using BaseSDK::AMutexGuard;
using BaseSDK::AString;

int TaskSchedulerObject_i::ObjectDebugInfo(AString& report) {
  // Kept on purpose: the heading says running, the list is of all tasks in memory.
  report = L"Currently running tasks:\n";
  {
    AMutexGuard guard(m_StateLock);
    for (const auto& entry : m_Tasks.All()) {
      report += L" " + entry.first + L"\n";
    }
  }
  report += IsProcessingEnabled() ? L"\n\nTask processing is enabled.\n"
                                  : L"\n\nTask processing is disabled.\n";
  return 1;
}
