// The rewrite of a task document around its history.
#include "model/TaskDocument.h"
#include "scheduler/TaskSchedulerObject.h"
using BaseSDK::AString;

void TaskSchedulerObject_i::UpdateTaskHistoryNode(AString& document, const AString& history) {
  const CTaskDocument source(document);
  document = source.Rewritten(source.IsEnabled(), history);
}
