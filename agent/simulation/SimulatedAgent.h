#pragma once

#include "agent/daemon/plugins/PluginLibrary.h"
#include "agent/simulation/SimulatedHandler.h"
#include "agent/simulation/SimulatedHost.h"
#include "agent/simulation/SimulationLog.h"
#include "agent/simulation/SimulationRequest.h"

#include <AgentInterfacesV3/AMsgQueue.h>
#include <BaseSDK/AMemoryFileSystem.h>
#include <BaseSDK/AString.h>

#include <map>
#include <optional>
#include <string>

namespace NoxAgent {

/// A whole agent in one process that owns its time. The real scheduler is loaded from its shared
/// object; around it are files in memory, a simulated host and a simulated handler.
///
/// There may be one at a time. It belongs to one thread, which controls the clock from then on.
class SimulatedAgent {
 public:
  using Attributes = std::map<std::string, std::string>;

  /// Starts the scheduler on copies of the documents, its gate closed, and sets the clock to the
  /// beginning. Throws AgentError when the scheduler cannot be loaded.
  explicit SimulatedAgent(const SimulationRequest& request);
  ~SimulatedAgent();
  SimulatedAgent(const SimulatedAgent&) = delete;
  SimulatedAgent& operator=(const SimulatedAgent&) = delete;

  /// The agent has started: the gate opens. The log does not mention it.
  void FinishStart();
  /// The next two do what the end and the beginning of a policy refresh do; the log mentions them.
  void OpenGate();
  void CloseGate();

  /// The scheduler's report on a task; nothing when it holds no such task.
  std::optional<Attributes> AttributesOf(const std::string& task);

  SimulationLog& Log() { return m_Log; }

 private:
  /// Puts the files in memory into force for as long as it lives.
  class FilesInForce {
   public:
    explicit FilesInForce(BaseSDK::AFileSystem& files);
    ~FilesInForce();
    FilesInForce(const FilesInForce&) = delete;
    FilesInForce& operator=(const FilesInForce&) = delete;

   private:
    BaseSDK::AFileSystem* const m_Before;
  };

  void Notify(long kind);
  void Report(const std::string& task, const std::string& state);

  BaseSDK::AMemoryFileSystem m_Files;
  FilesInForce m_InForce;
  SimulationLog m_Log;
  SimulatedHandler m_Handler;
  SimulatedHost m_Host;
  PluginLibrary m_Scheduler;
  Corvane::AgentInterfacesV3::AMsgQueue m_Queue;
};

}  // namespace NoxAgent
