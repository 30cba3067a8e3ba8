#include "agent/simulation/SimulatedAgent.h"

#include "agent/daemon/AgentError.h"
#include "agent/daemon/config/DefaultPaths.h"
#include "agent/daemon/process/Environment.h"

#include <AgentInterfacesV3/AMsgIn.h>
#include <AgentInterfacesV3/AMsgReply.h>
#include <VirtualTime/VirtualClock.h>

#include <variant>

namespace NoxAgent {

using BaseSDK::AString;
using Corvane::AgentInterfacesV3::AMsgIn;
using Corvane::AgentInterfacesV3::AMsgReply;
using Corvane::AgentInterfacesV3::AStringMap;
using VirtualTime::VirtualClock;
using Kind = SimulationEvent::Kind;

namespace {

constexpr const char* SchedulerFile = "NoxTaskScheduler.so";
constexpr int QueueNumber = 1;

// Kinds of notifications. A policy refresh is what closes the gate of a running agent.
constexpr long AgentStarted = 0;
constexpr long PolicyRefreshStarted = 1;
constexpr long PolicyRefreshFinished = 2;

AString Wide(const std::string& text) {
  return AString::FromUtf8(text);
}

}  // namespace

SimulatedAgent::FilesInForce::FilesInForce(BaseSDK::AFileSystem& files)
    : m_Before(BaseSDK::AFileSystem::Replace(&files)) {}

SimulatedAgent::FilesInForce::~FilesInForce() {
  (void)BaseSDK::AFileSystem::Replace(m_Before);
}

SimulatedAgent::SimulatedAgent(const SimulationRequest& request)
    : m_InForce(m_Files),
      m_Handler(m_Log, request.m_RunSeconds, request.m_FailAt,
                [this](const std::string& task, const std::string& state) { Report(task, state); }),
      m_Host(m_Log, m_Handler),
      m_Scheduler(DefaultPaths::Plugin(Environment::OfProcess(), SchedulerFile)),
      m_Queue(QueueNumber) {
  const std::string directory = std::string(SimulatedHost::TaskDirectory) + "/";
  m_Files.MakeDirectory(directory);
  for (const auto& document : request.m_Documents) {
    m_Files.WriteFile(directory + document.m_Id + SimulatedHost::Extension, document.m_Xml);
  }
  VirtualClock::Instance().Start(request.m_From);
  if (m_Scheduler.Initialize(QueueNumber) != 1) {
    throw AgentError(AgentError::Kind::Failure, "the scheduler does not start");
  }
  VirtualClock::Instance().Settle();
}

SimulatedAgent::~SimulatedAgent() {
  m_Queue.Close();
  if (m_Scheduler.Uninitialize(true) < 1) {
    m_Scheduler.Keep();
  }
}

void SimulatedAgent::FinishStart() {
  Notify(AgentStarted);
}

void SimulatedAgent::OpenGate() {
  m_Log.Add(Kind::GateOpened);
  Notify(PolicyRefreshFinished);
}

void SimulatedAgent::CloseGate() {
  m_Log.Add(Kind::GateClosed);
  Notify(PolicyRefreshStarted);
}

void SimulatedAgent::Notify(long kind) {
  AMsgReply reply;
  AMsgIn request("INoxObject", "NotifyObject", reply);
  request.Set("kind", kind).Set("code", 0L).Set("text", AString());
  (void)m_Queue.Send(request);
}

// A task that is deleted by now has no state to record, and the scheduler says so.
void SimulatedAgent::Report(const std::string& task, const std::string& state) {
  AMsgReply reply;
  AMsgIn request("INoxTaskScheduler", "SetRunState", reply);
  request.Set("taskId", Wide(task)).Set("runState", Wide(state));
  (void)m_Queue.Send(request);
}

std::optional<SimulatedAgent::Attributes> SimulatedAgent::AttributesOf(const std::string& task) {
  AMsgReply reply;
  AMsgIn request("INoxTaskScheduler", "GetTaskAttributes", reply);
  request.Set("taskId", Wide(task)).Set("attributes", AStringMap());
  if (m_Queue.Send(request) < 1 || reply.Result() < 1) {
    return std::nullopt;
  }
  Attributes attributes;
  for (const auto& [key, value] : std::get<AStringMap>(reply.Out().at("attributes"))) {
    attributes[key.ToUtf8()] = value.ToUtf8();
  }
  return attributes;
}

}  // namespace NoxAgent
