#pragma once

#include "agent/daemon/control/Caller.h"
#include "agent/daemon/plugins/Plugin.h"
#include "agent/document/TaskDocumentProblem.h"

#include <AgentInterfacesV3/AInterfaceTable.h>
#include <AgentInterfacesV3/AMsgIn.h>
#include <AgentInterfacesV3/AMsgReply.h>
#include <BaseSDK/AString.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace NoxAgent {

/// A request for one operation of a plug-in, and the place for the reply. OperationRoute fills it.
struct OperationCall {
  using Table = Corvane::AgentInterfacesV3::AInterfaceTable;

  OperationCall(std::shared_ptr<Plugin> plugin, const Table& table,
                const Table::AOperation& operation)
      : m_Plugin(std::move(plugin)),
        m_Operation(operation),
        m_Request(table.m_Name, operation.m_Name, m_Reply) {}
  // The request refers to the reply.
  OperationCall(const OperationCall&) = delete;
  OperationCall& operator=(const OperationCall&) = delete;

  const std::shared_ptr<Plugin> m_Plugin;
  const Table::AOperation& m_Operation;
  /// The enumeration that the client names; empty when it names none.
  std::string m_Token;
  Caller m_Caller;
  /// Of AddTask: the task is replaced only as long as its document says this. Then that is an edit
  /// of the task, which goes on as it was otherwise.
  std::optional<BaseSDK::AString> m_Replaces;
  /// What the border found odd.
  std::vector<TaskDocumentProblem> m_Problems;
  Corvane::AgentInterfacesV3::AMsgReply m_Reply;
  Corvane::AgentInterfacesV3::AMsgIn m_Request;
};

}  // namespace NoxAgent
