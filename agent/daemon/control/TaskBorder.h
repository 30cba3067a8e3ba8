#pragma once

#include "agent/daemon/plugins/Plugins.h"
#include "agent/document/TaskDocumentProblem.h"

#include <AgentInterfacesV3/AMsgIn.h>
#include <AgentInterfacesV3/AMsgReply.h>
#include <BaseSDK/AString.h>

#include <string_view>
#include <vector>

namespace NoxAgent {

/// Checks requests before the scheduler gets them, and explains what is wrong. The scheduler takes
/// nearly everything; what it cannot use it drops, cuts off or never runs, without a word.
class TaskBorder {
 public:
  /// `plugins` are the plug-ins whose handlers a task may name; borrowed.
  explicit TaskBorder(const Plugins& plugins);

  /// Checks a request for INoxTaskScheduler of `scheduler`; one for any other interface passes.
  /// Throws RequestError. With `force` a document passes also when its task would never run. The
  /// document of the request becomes ASCII. Gives what is odd about the document but no reason to
  /// refuse it. [any thread]
  std::vector<TaskDocumentProblem> Check(Plugin& scheduler,
                                         Corvane::AgentInterfacesV3::AMsgIn& request,
                                         bool force) const;
  /// When the answered request has added a task whose handler runs jobs: why the task's job could
  /// not be run as things stand, as the handler says it. Else empty. [any thread]
  BaseSDK::AString ProblemOfJob(const Corvane::AgentInterfacesV3::AMsgIn& request,
                                const Corvane::AgentInterfacesV3::AMsgReply& reply) const;

 private:
  std::vector<TaskDocumentProblem> CheckDocument(Corvane::AgentInterfacesV3::AMsgIn& request,
                                                 bool force) const;
  void CheckHandler(const BaseSDK::AString& document) const;

  const Plugins& m_Plugins;
};

}  // namespace NoxAgent
