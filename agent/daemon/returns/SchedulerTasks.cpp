#include "agent/daemon/returns/SchedulerTasks.h"

#include "agent/daemon/control/ReplyError.h"
#include "agent/daemon/control/ReplyValue.h"
#include "agent/daemon/control/WrittenCheck.h"
#include "agent/document/TaskGlance.h"

#include <AgentInterfacesV3/AMsgIn.h>
#include <AgentInterfacesV3/AMsgReply.h>

using BaseSDK::AString;
using Corvane::AgentInterfacesV3::AMsgIn;
using Corvane::AgentInterfacesV3::AMsgReply;

namespace NoxAgent {
namespace {

constexpr const char* SchedulerInterface = "INoxTaskScheduler";

// Whether there is such a task.
bool AskAbout(Plugin& scheduler, const char* operation, const AString& taskId, AMsgReply& reply) {
  AMsgIn request(SchedulerInterface, operation, reply);
  scheduler.Send(request.Set("taskId", taskId));
  ThrowIfError(reply);
  return reply.Result() > 0;
}

}  // namespace

bool HoldsTask(Plugin& scheduler, const AString& taskId) {
  AMsgReply reply;
  return AskAbout(scheduler, "GetTaskAttributes", taskId, reply);
}

std::optional<AString> DocumentOnDisk(Plugin& scheduler, const AString& taskId) {
  AMsgReply reply;
  return AskAbout(scheduler, "GetTaskXML", taskId, reply)
             ? std::optional(Out<AString>(reply, "taskXml"))
             : std::nullopt;
}

std::optional<bool> IsEnabledOnDisk(Plugin& scheduler, const AString& taskId) {
  const std::optional<AString> document = DocumentOnDisk(scheduler, taskId);
  return document.has_value() ? std::optional(GlanceAt(*document).m_Enabled) : std::nullopt;
}

void SwitchTask(Plugin& scheduler, const StoreFileSystem& files, const AString& taskId,
                bool enable) {
  AMsgReply reply;
  AMsgIn request(SchedulerInterface, "EnableTask", reply);
  request.Set("taskIds", taskId).Set("enable", enable);
  const WriteFailures failures;
  scheduler.Send(request);
  ThrowIfError(reply);
  ThrowIfNotWritten(request, reply.Result(), failures, files);
}

}  // namespace NoxAgent
