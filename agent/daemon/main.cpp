// noxagentd: reads the command line, runs the agent, tells how it went.
#include "agent/daemon/Agent.h"
#include "agent/daemon/AgentError.h"
#include "agent/daemon/process/AgentLog.h"
#include "agent/daemon/process/LogSetup.h"
#include "agent/daemon/process/ServiceGroup.h"

#include <BaseSDK/ADescriptorLimit.h>
#include <BaseSDK/ASystemZone.h>

#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <exception>

namespace {

using BaseSDK::ALogger;
using BaseSDK::AString;
using NoxAgent::AgentError;
using NoxAgent::ServiceGroup;

// Far more than sockets, files and runs can need.
constexpr unsigned long MostDescriptors = 65536;

int Fail(const std::exception& error, int status) {
  NoxAgent::LogSetup::Flush();
  (void)std::fprintf(stderr, "noxagentd: %s\n", error.what());
  return status;
}

void PrepareProcess() {
  // Documents and outputs are nobody's business but the agent's user's and group's.
  (void)::umask(027);
  BaseSDK::ADescriptorLimit::Raise(MostDescriptors);
  // A file that grows beyond the limit is an error where it is written, not the agent's end.
  (void)std::signal(SIGXFSZ, SIG_IGN);
  BaseSDK::ASystemZone::Hold();
}

void Log(const ServiceGroup& group) {
  if (!group.m_Path.IsEmpty()) {
    ALOG(NoxAgent::AgentLog(), ALogger::Information, "Agent",
         AString("Runs can be limited as a whole, below %1").Arg(group.m_Path));
  }
  if (!group.m_Problem.IsEmpty()) {
    ALOG(NoxAgent::AgentLog(), ALogger::Warning, "Agent",
         AString("Runs cannot be limited as a whole, only each of their processes: %1")
             .Arg(group.m_Problem));
  }
}

void RunAgent(const NoxAgent::Options& options) {
  PrepareProcess();
  const ServiceGroup group = ServiceGroup::Take(ServiceGroup::System::OfProcess());
  NoxAgent::Environment environment = NoxAgent::Environment::OfProcess();
  environment.m_RunGroup = group.m_Path;
  NoxAgent::Settings settings = NoxAgent::Settings::Load(options, environment);
  NoxAgent::LogSetup::Open(settings);
  Log(group);
  const auto agent =
      std::make_unique<NoxAgent::Agent>(options, std::move(environment), std::move(settings));
  if (!agent->Run()) {
    NoxAgent::LogSetup::Flush();
    ::_exit(static_cast<int>(AgentError::Kind::Failure));  // a plug-in is still at work
  }
}

}  // namespace

int main(int argc, char** argv) {
  try {
    const NoxAgent::Options options =
        NoxAgent::Options::Parse({argv + (argc > 0 ? 1 : 0), argv + argc});
    if (!options.m_Answered) {
      RunAgent(options);
    }
    NoxAgent::LogSetup::Flush();
    return 0;
  } catch (const AgentError& error) {
    return Fail(error, error.ExitStatus());
  } catch (const std::exception& error) {
    return Fail(error, static_cast<int>(AgentError::Kind::Failure));
  }
}
