#include "agent/simulation/SimulatedAgent.h"

#include "agent/daemon/AgentError.h"
#include "agent/daemon/config/DefaultPaths.h"
#include "agent/daemon/process/Environment.h"

#include <AgentInterfacesV3/AMsgIn.h>
#include <AgentInterfacesV3/AMsgReply.h>
#include <BaseSDK/ADateTime.h>
#include <BaseSDK/ALong32.h>
#include <BaseSDK/AXmlDoc.h>
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

// When the scheduler's present cycle began.
long CycleBegin(const SimulationRequest& request) {
  return request.m_Reading ? BaseSDK::Sub32(*request.m_Reading, SimulationRequest::CycleSeconds)
                           : request.m_From;
}

std::string PathOf(const SimulationRequest::Document& document) {
  return std::string(SimulatedHost::TaskDirectory) + "/" + document.m_Id + SimulatedHost::Extension;
}

// A document that, loaded, gives a task as the scheduler has it in memory.
std::string DocumentOf(const SimulationRequest::Document& document) {
  if (!document.m_Memory) {
    return document.m_Xml;
  }
  const BaseSDK::AXmlDoc source(Wide(document.m_Xml));
  AString text(document.m_Memory->m_Enabled ? "<Task Enabled=\"1\">" : "<Task Enabled=\"0\">");
  text += source.SelectSingleNode("//HandlerCLSID") + source.SelectSingleNode("//Schedule");
  if (document.m_Memory->m_LastRun != -1) {
    text += BaseSDK::ADateTime(document.m_Memory->m_LastRun)
                .ToString("<TaskHistory><RunTime>%Y-%m-%d %H:%M:%S Ok</RunTime></TaskHistory>");
  }
  return (text + "</Task>").ToUtf8();
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
  m_Files.MakeDirectory(std::string(SimulatedHost::TaskDirectory) + "/");
  for (const auto& document : request.m_Documents) {
    m_Files.WriteFile(PathOf(document), DocumentOf(document));
  }
  VirtualClock::Instance().Start(CycleBegin(request));
  if (m_Scheduler.Initialize(QueueNumber) != 1) {
    throw AgentError(AgentError::Kind::Failure, "the scheduler does not start");
  }
  VirtualClock::Instance().Settle();
  // The tasks are in memory: from now on the files are what they are. After a run that ends well
  // there is no difference.
  for (const auto& document : request.m_Documents) {
    if (!document.m_Memory || !document.m_Memory->m_RunEndsOk) {
      m_Files.WriteFile(PathOf(document), document.m_Xml);
    }
  }
  VirtualClock::Instance().RunUntil(request.m_From);
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
