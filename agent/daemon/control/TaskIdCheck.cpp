#include "agent/daemon/control/TaskIdCheck.h"

#include "agent/daemon/control/RequestError.h"
#include "agent/document/TaskId.h"

using BaseSDK::AString;

namespace NoxAgent {

void CheckTaskId(const AString& taskId, const AString& extension) {
  if (const AString fault = FaultOfTaskId(taskId, extension); !fault.IsEmpty()) {
    throw RequestError(HttpStatus::Unprocessable, "bad-task-id",
                       AString("the task ID \"%1\" %2").Arg(taskId.Left(250), fault));
  }
}

}  // namespace NoxAgent
